#pragma once

#include "support/QFFormat.h"

#include <QString>
#include <QStringList>

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <thread>

/// The application's rotating log file: <log folder>/Quillfen/<appName>.1.log, with
/// four older generations. Any thread may log; one writer thread does every write,
/// in order, so callers never touch the disk, except that a short entry from a
/// background thread waits until it is written (so that it survives a crash).
///
/// Formats are printf-style in the system's own forms ("%@", "%li", "%0.2f"); a
/// stray percent sign in a format is escaped first (escapeTextForLogging).
class QFLog
{
public:
    /// The single instance, created on first use and never freed before exit.
    static QFLog &sharedController();

    QFLog(const QFLog &) = delete;
    QFLog &operator=(const QFLog &) = delete;

    /// Rotates the generations and starts a new current file with its header.
    /// name is used only when no executable name is available.
    static void createNewLog(const QString &name = QString(), bool noPrinting = false);

    /// Formats and queues one entry; a short entry from a background thread waits
    /// until it is on disk.
    template<typename... Args> static void appendLog(QStringView format, const Args &...args)
    {
        appendLogList(format, {QFFormat::Arg(args)...});
    }
    /// Formats and queues one entry; never waits.
    template<typename... Args> static void fastAppendLog(QStringView format, const Args &...args)
    {
        fastAppendLogList(format, {QFFormat::Arg(args)...});
    }
    /// As appendLog, and prints the text to standard output (with "%" doubled).
    template<typename... Args>
    static void appendLogAndPrint(QStringView format, const Args &...args)
    {
        appendLogAndPrintList(format, {QFFormat::Arg(args)...});
    }
    /// As appendLog; prints nothing.
    template<typename... Args>
    static void appendLogAndDebugPrint(QStringView format, const Args &...args)
    {
        appendLogAndDebugPrintList(format, {QFFormat::Arg(args)...});
    }
    static void debugPrint(const QString &) {}

    /// While one lives, the entries of its thread go nowhere: work that only shows what
    /// an import would do, again at every change of an option, leaves the log to the
    /// imports themselves.
    class Silence
    {
    public:
        Silence();
        ~Silence();
        Silence(const Silence &) = delete;
        Silence &operator=(const Silence &) = delete;

    private:
        bool m_before;
    };

    /// Blocks until every queued entry is written. Returns at once on the writer
    /// thread itself (a roll-over logs from there and must not wait for itself).
    static void finishWriting();

    /// The existing generations, 1 to 5 in that order, as full paths.
    static QStringList availableLogs();

    /// Doubles percent signs that would otherwise start a directive by accident.
    static QString escapeTextForLogging(const QString &text);

    /// Shutdown: flushes a backlog of up to 10 entries, drops a larger one so that
    /// quitting is not held up, then closes the file.
    static void willTerminate();

    /// Logs an uncaught exception or std::terminate and flushes before the process ends.
    static void installTerminateHandler();

    /// Queues one finished text (trimmed; dropped when empty).
    void appendTextToLog(const QString &text);

    QString appName() const;
    void setAppName(const QString &name);
    bool loggingDisabled() const { return m_loggingDisabled.load(); }
    bool noPrinting() const { return m_noPrinting.load(); }
    quint64 bytesWritten() const { return m_bytesWritten.load(); }
    quint64 bytesInQueue() const { return m_bytesInQueue.load(); }

    /// The folder of the generations and the path of the current file.
    QString logFolder() const;
    QString currentLogPath() const;

    /// The text of an entry as appendLog formats it, for an entry made ahead of its
    /// logging (appendLog(u"%@", text) then logs that very text).
    static QString formatEntry(QStringView format, std::initializer_list<QFFormat::Arg> args);

    // Seams for tests: the roll-over size, a writer that holds its queue, the
    // number of entries waiting, and a fresh start after willTerminate.
    static void setRolloverLimitForTesting(quint64 bytes);
    static void holdWriterForTesting(bool hold);
    static qsizetype waitingEntryCountForTesting();
    static void resetForTesting();

private:
    QFLog();
    ~QFLog();

    static void appendLogList(QStringView format, std::initializer_list<QFFormat::Arg> args);
    static void fastAppendLogList(QStringView format, std::initializer_list<QFFormat::Arg> args);
    static void appendLogAndPrintList(QStringView format,
                                      std::initializer_list<QFFormat::Arg> args);
    static void appendLogAndDebugPrintList(QStringView format,
                                           std::initializer_list<QFFormat::Arg> args);

    /// Whether the new file is open; its header is queued unless the caller writes it.
    bool createNewLogImpl(const QString &name, bool noPrinting, bool queueHeader = true);
    static QStringList headerEntries();
    bool rotate();
    void print(const QString &text) const;
    void writerLoop();
    /// Writes a batch; returns how many of its entries are not yet counted as finished.
    std::uint64_t writeEntries(std::deque<QString> &entries);
    void writeBytes(const QByteArray &bytes);
    /// Counts entries as written or dropped and wakes those waiting for them.
    void markFinished(std::uint64_t count, bool batchDone = false);
    /// Writes one entry on the calling (worker) thread when the writer has nothing to do.
    bool writeNowIfIdle(const QString &text);
    bool ensureOpen();
    void closeFile();
    void shutdown();
    QString generationPath(int generation) const;

    mutable std::mutex m_nameMutex;
    QString m_appName;

    std::mutex m_fileMutex; // guards m_fd between the writer and createNewLog
    int m_fd = -1;

    std::atomic<quint64> m_bytesWritten{0};
    std::atomic<quint64> m_bytesInQueue{0};
    std::atomic<bool> m_loggingDisabled{false};
    std::atomic<bool> m_noPrinting{false};
    std::atomic<quint64> m_rolloverLimit{5000000};

    // The write queue: entries in order, served by one thread.
    std::mutex m_queueMutex;
    std::condition_variable m_queueChanged;
    std::condition_variable m_queueDrained;
    std::deque<QString> m_queue;
    bool m_queueOpen = true;
    bool m_hold = false;
    bool m_stop = false;
    bool m_writerSleeping = false;
    bool m_writerBusy = false;               // the writer holds a batch
    bool m_directWrite = false;              // a worker writes its own entry (writeNowIfIdle)
    std::atomic<bool> m_cancelBatch{false};  // shutdown gave up on the writer's batch
    std::atomic<std::uint64_t> m_queued{0};  // entries ever queued
    std::atomic<std::uint64_t> m_written{0}; // entries ever finished (written or dropped)
    std::thread m_writer;
    std::thread::id m_writerId;
};
