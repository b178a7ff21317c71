#include "QFLog.h"

#include "support/QFGlobalPreferences.h"
#include "support/QFLocalPaths.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QSysInfo>
#include <QThread>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>

#include <fcntl.h>
#include <unistd.h>

namespace {

// Static initialisation runs on the main thread, before any QCoreApplication exists.
const std::thread::id mainThreadId = std::this_thread::get_id();

bool isMainThread()
{
    if (const QCoreApplication *app = QCoreApplication::instance())
        return QThread::currentThread() == app->thread();
    return std::this_thread::get_id() == mainThreadId;
}

/// The date as each line and "Log started" show it: UTC, sortable, with its offset.
/// Rendered once a second at most: the writer formats a date for every line.
QString dateDescription()
{
    thread_local qint64 cachedSecond = -1;
    thread_local QString cached;
    const QDateTime now = QDateTime::currentDateTimeUtc();
    const qint64 second = now.toSecsSinceEpoch();
    if (second != cachedSecond) {
        cachedSecond = second;
        cached = now.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")) + QStringLiteral(" +0000");
    }
    return cached;
}

std::mutex finishMutex; // serialises flushes, as a lock on the class would

} // namespace

QFLog &QFLog::sharedController()
{
    static QFLog instance;
    return instance;
}

QFLog::QFLog()
{
    m_writer = std::thread([this] { writerLoop(); });
    m_writerId = m_writer.get_id();
    installTerminateHandler();
    if (QCoreApplication *app = QCoreApplication::instance())
        QObject::connect(app, &QCoreApplication::aboutToQuit, app, [] { QFLog::willTerminate(); });
}

QFLog::~QFLog()
{
    shutdown();
    {
        std::lock_guard lock(m_queueMutex);
        m_stop = true;
    }
    m_queueChanged.notify_all();
    if (m_writer.joinable())
        m_writer.join();
}

// ---- names and paths ---------------------------------------------------------------

QString QFLog::appName() const
{
    std::lock_guard lock(m_nameMutex);
    if (!m_appName.isNull())
        return m_appName;
    return QFileInfo(QFLocalPaths::executablePath()).completeBaseName();
}

void QFLog::setAppName(const QString &name)
{
    std::lock_guard lock(m_nameMutex);
    m_appName = name;
}

QString QFLog::logFolder() const
{
    return QFLocalPaths::logDirectory(true) + QStringLiteral("/Quillfen");
}

QString QFLog::currentLogPath() const
{
    // The superuser writes into the computer-wide folder, while the folder that is
    // created and rotated stays the user's; other applications of the maker do the same.
    if (QFLocalPaths::isSuperuser())
        return QFLocalPaths::logDirectory(false) +
               QFFormat::format(u"/Quillfen/%@.1.log", appName());
    return logFolder() + QFFormat::format(u"/%@.1.log", appName());
}

QString QFLog::generationPath(int generation) const
{
    return logFolder() + QFFormat::format(u"/%@.%li.log", appName(), generation);
}

QStringList QFLog::availableLogs()
{
    const QFLog &log = sharedController();
    QStringList paths;
    for (int i = 1; i <= 5; ++i) {
        const QString path = QFFormat::format(u"%@/%@.%li.log", log.logFolder(), log.appName(), i);
        if (QFile::exists(path))
            paths << path;
    }
    return paths;
}

// ---- creating a log ----------------------------------------------------------------

void QFLog::createNewLog(const QString &name, bool noPrinting)
{
    sharedController().createNewLogImpl(name, noPrinting);
}

void QFLog::print(const QString &text) const
{
    if (m_noPrinting.load())
        return;
    std::fputs(text.toUtf8().constData(), stdout);
    std::fflush(stdout);
}

bool QFLog::createNewLogImpl(const QString &name, bool noPrinting, bool queueHeader)
{
    m_noPrinting = noPrinting;
    if (m_loggingDisabled.load())
        return false;
    closeFile();

    if (QFGlobalPreferences::switchIsOn(QStringLiteral("disable-logging"))) {
        print(QStringLiteral("Logging is disabled\n"));
        m_loggingDisabled = true;
        return false;
    }

    if (!name.isEmpty() && appName().isEmpty())
        setAppName(name);
    m_bytesWritten = 0;
    if (appName().isEmpty())
        setAppName(QStringLiteral("Unknown"));

    const QString folder = logFolder();
    const QString path = currentLogPath();
    if (!QDir().mkpath(folder)) {
        print(QFFormat::format(u"Unable to create folder %s.\n", folder));
        return false;
    }
    if (QFile::exists(path) && !rotate())
        return false;

    QSaveFile empty(path);
    if (!empty.open(QIODevice::WriteOnly) || !empty.commit()) {
        print(QFFormat::format(u"Unable to create log file %s - %s\n", path, empty.errorString()));
        return false;
    }
    if (!ensureOpen())
        return false;
    if (queueHeader) {
        for (const QString &entry : headerEntries())
            appendTextToLog(entry);
    }
    return true;
}

bool QFLog::rotate()
{
    if (QFile::exists(generationPath(5)))
        QFile::remove(generationPath(5));
    for (int i = 4; i >= 1; --i) {
        const QString from = generationPath(i);
        if (!QFile::exists(from))
            continue;
        const QString to = generationPath(i + 1);
        if (!QFile::rename(from, to)) {
            print(QFFormat::format(u"Unable to move file %s to %s.\n", from, to));
            return false;
        }
    }
    return true;
}

QStringList QFLog::headerEntries()
{
    QStringList entries{formatEntry(u"Log started: %@", {dateDescription()})};
    if (QCoreApplication::instance() && !QCoreApplication::applicationVersion().isEmpty())
        entries << formatEntry(u"Version: %@", {QCoreApplication::applicationVersion()});
    if (const QString path = QFLocalPaths::executablePath(); !path.isEmpty())
        entries << formatEntry(u"Path: %@", {path});
    const double gigabytes =
        double(::sysconf(_SC_PHYS_PAGES)) * double(::sysconf(_SC_PAGESIZE)) / 1024 / 1024 / 1024;
    const qint64 cpus = ::sysconf(_SC_NPROCESSORS_ONLN);
#ifdef Q_OS_MACOS
    entries << formatEntry(u"System: macOS %@, %li CPU(s), %0.2f GB RAM",
                           {QSysInfo::productVersion(), cpus, gigabytes});
#else
    entries << formatEntry(u"System: Linux %@, %li CPU(s), %0.2f GB RAM",
                           {QString(QSysInfo::prettyProductName() + QStringLiteral(" (kernel ") +
                                    QSysInfo::kernelVersion() + u')'),
                            cpus, gigabytes});
#endif
    entries << formatEntry(u"Running in 64-bit mode", {});
    return entries;
}

// ---- the file --------------------------------------------------------------------

bool QFLog::ensureOpen()
{
    std::lock_guard lock(m_fileMutex);
    if (m_fd >= 0)
        return true;
    const QByteArray path = QFile::encodeName(currentLogPath());
    m_fd = ::open(path.constData(), O_WRONLY | O_APPEND | O_CLOEXEC);
    return m_fd >= 0;
}

void QFLog::closeFile()
{
    std::lock_guard lock(m_fileMutex);
    if (m_fd >= 0)
        ::close(m_fd);
    m_fd = -1;
}

// ---- queuing -----------------------------------------------------------------------

QString QFLog::escapeTextForLogging(const QString &text)
{
    // Every format passes through here, so one pass instead of a replace per pattern:
    // "% ", "%.", "%!", "%,", "%-", "%;", "%:" and "%+" get their percent sign doubled.
    const qsizetype n = text.size();
    const auto strayAt = [&text, n](qsizetype i) {
        return text[i] == u'%' && i + 1 < n && QStringView(u" .!,-;:+").contains(text[i + 1]);
    };
    qsizetype first = 0;
    while (first < n && !strayAt(first))
        ++first;
    QString result = text.left(first);
    if (first < n) {
        result.reserve(n + 8);
        for (qsizetype i = first; i < n; ++i) {
            result += text[i];
            if (strayAt(i))
                result += u'%';
        }
    }
    if (!result.contains(QStringLiteral("%%%")))
        return result;
    result.replace(QStringLiteral("%%%"), QStringLiteral("%%"));
    return result;
}

QString QFLog::formatEntry(QStringView format, std::initializer_list<QFFormat::Arg> args)
{
    return QFFormat::formatList(escapeTextForLogging(format.toString()), args);
}

void QFLog::appendTextToLog(const QString &text)
{
    const QString trimmed = text.trimmed();
    if (trimmed.isEmpty())
        return;
    bool wake = false;
    {
        std::lock_guard lock(m_queueMutex);
        if (!m_queueOpen)
            return;
        m_bytesInQueue += quint64(trimmed.size());
        m_queue.push_back(trimmed);
        ++m_queued;
        wake = m_writerSleeping;
    }
    // A busy writer finds the entry by itself; only a sleeping one costs a wake-up.
    if (wake)
        m_queueChanged.notify_one();
}

namespace {
thread_local bool silenced = false;
} // namespace

QFLog::Silence::Silence() : m_before(std::exchange(silenced, true)) {}

QFLog::Silence::~Silence()
{
    silenced = m_before;
}

void QFLog::appendLogList(QStringView format, std::initializer_list<QFFormat::Arg> args)
{
    QFLog &log = sharedController();
    if (format.isNull() || log.m_loggingDisabled.load() || silenced)
        return;
    const QString text = formatEntry(format, args);
    // A short entry from a worker is on disk before the call returns, so the last lines
    // before a crash survive; long entries and a busy queue never hold the caller up.
    // With the writer idle the worker writes it itself, which saves the hand-over.
    const bool waits = !isMainThread() && text.size() >= 1 && text.size() <= 99;
    if (waits && log.m_bytesInQueue.load() == 0 && log.writeNowIfIdle(text))
        return;
    log.appendTextToLog(text);
    if (waits && log.m_bytesInQueue.load() <= 99)
        finishWriting();
}

void QFLog::fastAppendLogList(QStringView format, std::initializer_list<QFFormat::Arg> args)
{
    QFLog &log = sharedController();
    if (format.isNull() || log.m_loggingDisabled.load() || silenced)
        return;
    log.appendTextToLog(formatEntry(format, args));
}

void QFLog::appendLogAndPrintList(QStringView format, std::initializer_list<QFFormat::Arg> args)
{
    QFLog &log = sharedController();
    if (format.isNull() || log.m_loggingDisabled.load())
        return;
    const QString text = formatEntry(format, args).trimmed();
    // The formatted text is itself the format of the logged entry (escaped and
    // formatted once more); the printed copy shows its percent signs doubled.
    appendLogList(text, {});
    QString printed = text;
    printed.remove(QStringLiteral("%@"));
    printed.replace(u'%', QStringLiteral("%%"));
    printed.remove(QChar(u'\0'));
    log.print(printed + u'\n');
}

void QFLog::appendLogAndDebugPrintList(QStringView format,
                                       std::initializer_list<QFFormat::Arg> args)
{
    if (format.isNull())
        return;
    appendLogList(formatEntry(format, args).trimmed(), {});
}

void QFLog::finishWriting()
{
    QFLog &log = sharedController();
    if (std::this_thread::get_id() == log.m_writerId)
        return;
    std::lock_guard serial(finishMutex);
    const std::uint64_t target = log.m_queued.load();
    // Most waits are a few microseconds: spin briefly before sleeping on the condition.
    for (int i = 0; i < 2000 && log.m_written.load() < target; ++i)
        std::this_thread::yield();
    if (log.m_written.load() >= target)
        return;
    std::unique_lock lock(log.m_queueMutex);
    log.m_queueDrained.wait(lock, [&] { return log.m_written.load() >= target; });
}

// ---- the writer thread -------------------------------------------------------------

void QFLog::writerLoop()
{
    for (;;) {
        std::deque<QString> batch;
        {
            std::unique_lock lock(m_queueMutex);
            if (m_queue.empty() || m_hold) {
                lock.unlock();
                // New work usually follows at once: look again briefly before sleeping.
                for (int i = 0; i < 2000; ++i) {
                    if (m_queued.load() != m_written.load() && !m_hold)
                        break;
                    std::this_thread::yield();
                }
                lock.lock();
            }
            m_writerSleeping = true;
            m_queueChanged.wait(
                lock, [this] { return m_stop || (!m_hold && !m_directWrite && !m_queue.empty()); });
            m_writerSleeping = false;
            if (m_queue.empty() && m_stop)
                return;
            batch.swap(m_queue);
            m_writerBusy = true;
        }
        const std::uint64_t rest = writeEntries(batch);
        // Idle again in the same step as the last count, so that a worker woken by it
        // finds the writer idle and can write its next entry itself.
        markFinished(rest, true);
    }
}

void QFLog::markFinished(std::uint64_t count, bool batchDone)
{
    {
        std::lock_guard lock(m_queueMutex);
        m_written += count;
        if (batchDone)
            m_writerBusy = false;
    }
    m_queueDrained.notify_all();
}

void QFLog::writeBytes(const QByteArray &bytes)
{
    if (bytes.isEmpty())
        return;
    std::lock_guard lock(m_fileMutex);
    const char *data = bytes.constData();
    qsizetype left = bytes.size();
    while (left > 0 && m_fd >= 0) {
        const ssize_t n = ::write(m_fd, data, size_t(left));
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0) {
            if (!m_loggingDisabled.load())
                print(QFFormat::format(u"Exception writing to log: %s\n",
                                       QString::fromLocal8Bit(std::strerror(errno))));
            break;
        }
        data += n;
        left -= n;
    }
}

bool QFLog::writeNowIfIdle(const QString &text)
{
    const QString trimmed = text.trimmed();
    if (trimmed.isEmpty())
        return false;
    const QByteArray line = (dateDescription() + QStringLiteral(" - ") + trimmed + u'\n').toUtf8();
    {
        // Only with nothing queued or being written, so the order stays. The claim makes
        // the writer wait for this entry; the queue's lock is not held during the write,
        // so the main thread can always queue behind it without waiting.
        std::lock_guard lock(m_queueMutex);
        if (!m_queueOpen || m_hold || m_writerBusy || m_directWrite || !m_queue.empty() ||
            m_written.load() != m_queued.load())
            return false;
        // A roll-over logs on its own; leave that to the writer thread.
        if (m_bytesWritten.load() + quint64(line.size()) >= m_rolloverLimit.load())
            return false;
        m_directWrite = true;
        ++m_queued;
    }
    const bool open = ensureOpen();
    if (open) {
        writeBytes(line);
        m_bytesWritten += quint64(line.size());
    }
    bool wake = false;
    {
        std::lock_guard lock(m_queueMutex);
        m_directWrite = false;
        ++m_written;
        wake = m_writerSleeping && !m_queue.empty();
    }
    if (wake)
        m_queueChanged.notify_one();
    m_queueDrained.notify_all();
    // Without a file the writer reports the entry as unloggable.
    return open;
}

std::uint64_t QFLog::writeEntries(std::deque<QString> &entries)
{
    // Written in pieces, so that a shutdown can give up on the rest of a large batch.
    constexpr qsizetype pieceBytes = 64 * 1024;
    QByteArray pending;
    std::uint64_t pendingEntries = 0;
    auto write = [this, &pending] {
        if (!m_cancelBatch.load())
            writeBytes(pending);
        pending.clear();
    };
    // Counted as done only once written: a roll-over finishes before its entry counts.
    auto finish = [this, &pendingEntries] {
        markFinished(pendingEntries);
        pendingEntries = 0;
    };

    for (const QString &text : entries) {
        ++pendingEntries;
        if (!m_loggingDisabled.load() && !m_cancelBatch.load()) {
            if (!ensureOpen()) {
                write();
                print(QFFormat::format(u"Unable to log the following information: %s\n", text));
                print(QStringLiteral("Unable to open log for output\n"));
            } else {
                const QByteArray line =
                    (dateDescription() + QStringLiteral(" - ") + text + u'\n').toUtf8();
                pending += line;
                m_bytesWritten += quint64(line.size());
                if (m_bytesWritten.load() >= m_rolloverLimit.load()) {
                    write();
                    // The new file starts with its header and the note, then the rest of
                    // this batch and the entries queued behind it.
                    if (createNewLogImpl(appName(), m_noPrinting.load(), false)) {
                        QStringList notes = headerEntries();
                        notes << QStringLiteral("Log truncated at 500KB");
                        for (const QString &note : std::as_const(notes)) {
                            const QByteArray noteLine =
                                (dateDescription() + QStringLiteral(" - ") + note + u'\n').toUtf8();
                            pending += noteLine;
                            m_bytesWritten += quint64(noteLine.size());
                        }
                    }
                } else if (pending.size() >= pieceBytes) {
                    write();
                    finish();
                }
            }
        }
        m_bytesInQueue -= quint64(text.size());
    }
    write();
    return pendingEntries;
}

// ---- shutdown ----------------------------------------------------------------------

void QFLog::willTerminate()
{
    sharedController().shutdown();
}

void QFLog::shutdown()
{
    {
        std::lock_guard lock(m_queueMutex);
        if (!m_queueOpen)
            return;
        // Entries the writer has taken but not yet written are waiting too. Quitting is
        // not held up by a backlog: those entries are lost, apart from a write under way.
        if (m_queued.load() - m_written.load() >= 11) {
            for (const QString &text : m_queue)
                m_bytesInQueue -= quint64(text.size());
            m_written += m_queue.size();
            m_queue.clear();
            m_cancelBatch = true;
        }
        m_hold = false;
    }
    m_queueChanged.notify_all();
    m_queueDrained.notify_all();
    finishWriting();
    {
        std::lock_guard lock(m_queueMutex);
        m_queueOpen = false;
        m_cancelBatch = false;
    }
    setAppName(QString());
    closeFile();
}

void QFLog::installTerminateHandler()
{
    static std::once_flag once;
    std::call_once(once, [] {
        std::set_terminate([] {
            QString reason = QStringLiteral("terminate called without an active exception");
            if (const std::exception_ptr current = std::current_exception()) {
                try {
                    std::rethrow_exception(current);
                } catch (const std::exception &e) {
                    reason = QString::fromUtf8(e.what());
                } catch (...) {
                    reason = QStringLiteral("unknown exception");
                }
            }
            QFLog::appendLogAndPrint(u"%@", reason);
            QFLog::finishWriting();
            std::abort();
        });
    });
}

// ---- test seams --------------------------------------------------------------------

void QFLog::setRolloverLimitForTesting(quint64 bytes)
{
    sharedController().m_rolloverLimit = bytes;
}

void QFLog::holdWriterForTesting(bool hold)
{
    QFLog &log = sharedController();
    {
        std::lock_guard lock(log.m_queueMutex);
        log.m_hold = hold;
    }
    log.m_queueChanged.notify_all();
}

qsizetype QFLog::waitingEntryCountForTesting()
{
    QFLog &log = sharedController();
    std::lock_guard lock(log.m_queueMutex);
    return qsizetype(log.m_queue.size());
}

void QFLog::resetForTesting()
{
    QFLog &log = sharedController();
    log.shutdown();
    std::lock_guard lock(log.m_queueMutex);
    log.m_queueOpen = true;
    log.m_hold = false;
    log.m_loggingDisabled = false;
    log.m_noPrinting = false;
    log.m_bytesWritten = 0;
    log.m_rolloverLimit = 5000000;
    log.setAppName(QString());
}
