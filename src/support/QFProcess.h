#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <memory>
#include <mutex>
#include <optional>

#include <sys/types.h>

/// One external program: configured, then launched once. Thread-safe: a time-out
/// on another thread may terminate it while its runner waits.
class QFProcess
{
public:
    /// Where a standard stream of the child goes.
    enum class Stream
    {
        Null,
        Pipe,
        Inherit
    };
    /// The piped outputs of the child.
    enum class Channel
    {
        Output,
        Error
    };

    QFProcess(const QString &launchPath, const QStringList &arguments);
    ~QFProcess();
    QFProcess(const QFProcess &) = delete;
    QFProcess &operator=(const QFProcess &) = delete;

    QString launchPath() const { return m_launchPath; }
    void setEnvironment(const QStringList &environment) { m_environment = environment; }
    void setWorkingDirectory(const QString &directory) { m_workingDirectory = directory; }
    void setStandardOutput(Stream stream) { m_stdout = stream; }
    void setStandardError(Stream stream) { m_stderr = stream; }
    /// A fresh pipe that nothing writes to, instead of the null device.
    void setStandardInputPipe(bool pipe) { m_stdinPipe = pipe; }

    /// Starts the program; false with a reason when it cannot be started.
    bool launch(QString *error = nullptr);
    bool isRunning();
    /// Asks the program to quit (SIGTERM) when it is running.
    void terminate();
    /// Waits for the exit; returns the termination status (exit code, or the signal).
    int waitUntilExit();
    int terminationStatus();

    /// Reads the next chunk of a piped stream, blocking; empty at its end.
    QByteArray readChunk(Channel channel);
    /// Everything left on a piped stream, up to its end.
    QByteArray readToEnd(Channel channel);
    /// Closes the reading ends of the pipes.
    void closePipes();

private:
    bool reap(bool block);
    void closePipesLocked();

    QString m_launchPath;
    QStringList m_arguments;
    std::optional<QStringList> m_environment;
    QString m_workingDirectory;
    Stream m_stdout = Stream::Null;
    Stream m_stderr = Stream::Null;
    bool m_stdinPipe = false;

    std::mutex m_mutex;
    pid_t m_pid = -1;
    bool m_reaped = false;
    int m_status = 0;
    int m_outFd = -1;
    int m_errFd = -1;
    /// Reads in progress, and whether the pipes are to be closed when they end.
    int m_readers = 0;
    bool m_closeRequested = false;
};

using QFProcessPtr = std::shared_ptr<QFProcess>;
