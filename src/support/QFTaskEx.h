#pragma once

#include "support/QFProcess.h"

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <functional>
#include <memory>
#include <mutex>
#include <optional>

/// Runs external programs for the support services: wait for them (success, exit
/// status or what they printed), or stream their output to a delegate. Failures are
/// logged and answered with an empty result, never thrown.
///
/// Synchronous members block the caller. Time-outs act through the main thread when
/// an application object exists, so a run made on the main thread cannot time out.
class QFTaskEx : public std::enable_shared_from_this<QFTaskEx>
{
public:
    /// Receives each chunk of streamed output, the runner and the optional object; an
    /// empty chunk marks the end.
    using Delegate =
        std::function<void(const QByteArray &chunk, QFTaskEx *runner, const QVariant &object)>;
    enum class Encoding
    {
        ASCII,
        UTF8,
        Latin1
    };

    static std::shared_ptr<QFTaskEx> create();
    ~QFTaskEx();

    // ---- run and wait, output discarded ----
    static bool runTask(const QString &path, const QStringList &arguments,
                        QFProcessPtr *task = nullptr);
    /// Launches and returns the process at once; null when it cannot be started.
    static QFProcessPtr runTaskAndReturn(const QString &path, const QStringList &arguments);
    /// The time-out never finds the process (it is not this runner's): the call
    /// returns when the program exits, as the maker's runner always did.
    static bool runTask(const QString &path, const QStringList &arguments, double timeout);
    bool runTaskWithTimeout(const QString &path, const QStringList &arguments, double timeout);
    /// A variant that runs the program in a working directory (the archiver needs one).
    static bool runTaskInDirectory(const QString &path, const QStringList &arguments,
                                   const QString &workingDirectory);

    // ---- run and wait, exit status (-1 when it cannot run) ----
    static int terminationCodeFromTask(const QString &path, const QStringList &arguments,
                                       QFProcessPtr *task = nullptr);
    static int terminationCodeFromTask(const QString &path, const QStringList &arguments,
                                       double timeout);
    int terminationCodeWithTimeout(const QString &path, const QStringList &arguments,
                                   double timeout);

    // ---- run and capture (nothing when it cannot run) ----
    static std::optional<QByteArray>
    dataFromTask(const QString &path, const QStringList &arguments, QFProcessPtr *task = nullptr,
                 const std::optional<QStringList> &environment = std::nullopt,
                 bool logOutput = true, bool logError = true);
    static std::optional<QByteArray> dataFromTask(const QString &path, const QStringList &arguments,
                                                  double timeout, bool logOutput = true,
                                                  bool logError = true);
    std::optional<QByteArray> dataWithTimeout(const QString &path, const QStringList &arguments,
                                              double timeout, bool logOutput = true,
                                              bool logError = true);

    /// What the program printed, decoded (7-bit ASCII unless told); empty when it
    /// cannot run.
    static QString stringFromTask(const QString &path, const QStringList &arguments,
                                  Encoding encoding = Encoding::ASCII,
                                  QFProcessPtr *task = nullptr);
    static QString stringFromTask(const QString &path, const QStringList &arguments, double timeout,
                                  Encoding encoding = Encoding::ASCII, bool logOutput = true,
                                  bool logError = true);

    // ---- streaming ----
    /// Starts the program and returns at once; its standard output reaches the
    /// delegate chunk by chunk on a reader thread, then one empty chunk.
    void asyncDataFromTask(const QString &path, const QStringList &arguments, Delegate delegate,
                           const QVariant &object = QVariant(),
                           const std::optional<QStringList> &environment = std::nullopt);
    void terminateTask() { terminateAsyncTask(); }
    void terminateAsyncTask();

    /// The process being run (null when none).
    QFProcessPtr theTask() const;

    /// Whether the path names an executable file that is not a package.
    static bool isExecutable(const QString &path);
    static QString decode(const QByteArray &data, Encoding encoding);

private:
    QFTaskEx() = default;

    static int exitCode(const QString &path, const QStringList &arguments,
                        const std::function<void(const QFProcessPtr &)> &handOver);
    static std::optional<QByteArray>
    captureData(const QString &path, const QStringList &arguments,
                const std::optional<QStringList> &environment, bool logOutput, bool logError,
                const std::function<void(const QFProcessPtr &)> &handOver);
    void setTheTask(QFProcessPtr task);
    void setupTimeout(double seconds);
    void timeout();
    void launchAsyncTask();
    void asyncTaskReturnData(const QByteArray &chunk);

    mutable std::mutex m_mutex;
    QFProcessPtr m_task;
    Delegate m_delegate;
    QVariant m_object;
};
