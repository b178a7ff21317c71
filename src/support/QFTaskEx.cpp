#include "QFTaskEx.h"

#include "QFFileManager.h"
#include "support/QFLog.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QThread>

#include <chrono>
#include <cmath>
#include <exception>
#include <thread>

#include <unistd.h>

namespace {

using Stream = QFProcess::Stream;

/// Starts a configured process; logs the failure as the runner's exception.
bool start(const QFProcessPtr &process, const QString &path, bool print)
{
    QString reason;
    if (process->launch(&reason))
        return true;
    if (print)
        QFLog::appendLogAndPrint(u"Exception running task %@: %@", path, reason);
    else
        QFLog::appendLog(u"Exception running task %@: %@", path, reason);
    return false;
}

QFProcessPtr makeProcess(const QString &path, const QStringList &arguments)
{
    return std::make_shared<QFProcess>(path, arguments);
}

/// The executable check of the synchronous members, with its log line.
bool checkExecutable(const QString &path)
{
    if (QFTaskEx::isExecutable(path))
        return true;
    QFLog::appendLogAndPrint(u"Error: %@ is not executable", path);
    return false;
}

} // namespace

std::shared_ptr<QFTaskEx> QFTaskEx::create()
{
    return std::shared_ptr<QFTaskEx>(new QFTaskEx());
}

QFTaskEx::~QFTaskEx()
{
    if (m_task && m_task->isRunning())
        m_task->terminate();
}

bool QFTaskEx::isExecutable(const QString &path)
{
    if (path.isEmpty())
        return false;
    const QFileInfo info(path);
    return info.exists() && info.isFile() &&
           ::access(QFile::encodeName(path).constData(), X_OK) == 0 &&
           !QFFileManager::isPackageAtPath(path);
}

QString QFTaskEx::decode(const QByteArray &data, Encoding encoding)
{
    switch (encoding) {
    case Encoding::UTF8:
        return QString::fromUtf8(data);
    case Encoding::Latin1:
        return QString::fromLatin1(data);
    case Encoding::ASCII:
        break;
    }
    // 7-bit ASCII: anything above it is not a character of the encoding.
    QString text;
    text.reserve(data.size());
    for (const char c : data)
        text += (uchar(c) < 0x80) ? QChar(char16_t(uchar(c))) : QChar(QChar::ReplacementCharacter);
    return text;
}

QFProcessPtr QFTaskEx::theTask() const
{
    std::lock_guard lock(m_mutex);
    return m_task;
}

void QFTaskEx::setTheTask(QFProcessPtr task)
{
    std::lock_guard lock(m_mutex);
    m_task = std::move(task);
}

// ---- run and wait ------------------------------------------------------------------

bool QFTaskEx::runTask(const QString &path, const QStringList &arguments, QFProcessPtr *task)
{
    if (!path.isEmpty() && path.startsWith(u'/') && !checkExecutable(path))
        return false;
    const QFProcessPtr process = makeProcess(path, arguments);
    if (task)
        *task = process;
    if (!start(process, path, false))
        return false;
    process->waitUntilExit();
    return true;
}

bool QFTaskEx::runTaskInDirectory(const QString &path, const QStringList &arguments,
                                  const QString &workingDirectory)
{
    if (!checkExecutable(path))
        return false;
    const QFProcessPtr process = makeProcess(path, arguments);
    process->setWorkingDirectory(workingDirectory);
    if (!start(process, path, false))
        return false;
    process->waitUntilExit();
    return true;
}

QFProcessPtr QFTaskEx::runTaskAndReturn(const QString &path, const QStringList &arguments)
{
    if (!checkExecutable(path))
        return nullptr;
    const QFProcessPtr process = makeProcess(path, arguments);
    return start(process, path, false) ? process : nullptr;
}

bool QFTaskEx::runTask(const QString &path, const QStringList &arguments, double timeout)
{
    return create()->runTaskWithTimeout(path, arguments, timeout);
}

bool QFTaskEx::runTaskWithTimeout(const QString &path, const QStringList &arguments, double seconds)
{
    setupTimeout(seconds);
    QFProcessPtr local; // not theTask: the time-out never sees this process
    const bool result = runTask(path, arguments, &local);
    setTheTask(nullptr);
    return result;
}

// ---- exit status -------------------------------------------------------------------

int QFTaskEx::exitCode(const QString &path, const QStringList &arguments,
                       const std::function<void(const QFProcessPtr &)> &handOver)
{
    if (!checkExecutable(path))
        return -1;
    const QFProcessPtr process = makeProcess(path, arguments);
    handOver(process); // before the launch, so that a time-out can find it
    if (!start(process, path, false))
        return -1;
    return process->waitUntilExit();
}

int QFTaskEx::terminationCodeFromTask(const QString &path, const QStringList &arguments,
                                      QFProcessPtr *task)
{
    return exitCode(path, arguments, [task](const QFProcessPtr &process) {
        if (task)
            *task = process;
    });
}

int QFTaskEx::terminationCodeFromTask(const QString &path, const QStringList &arguments,
                                      double timeout)
{
    return create()->terminationCodeWithTimeout(path, arguments, timeout);
}

int QFTaskEx::terminationCodeWithTimeout(const QString &path, const QStringList &arguments,
                                         double seconds)
{
    setupTimeout(seconds);
    setTheTask(nullptr);
    const int code =
        exitCode(path, arguments, [this](const QFProcessPtr &process) { setTheTask(process); });
    setTheTask(nullptr);
    return code;
}

// ---- capture -----------------------------------------------------------------------

namespace {

QFProcessPtr makeCaptureProcess(const QString &path, const QStringList &arguments,
                                const std::optional<QStringList> &environment, bool logOutput,
                                bool logError)
{
    const QFProcessPtr process = makeProcess(path, arguments);
    if (environment)
        process->setEnvironment(*environment);
    // Output not captured goes to the program's own output; errors not captured go nowhere.
    process->setStandardOutput(logOutput ? Stream::Pipe : Stream::Inherit);
    process->setStandardError(logError ? Stream::Pipe : Stream::Null);
    process->setStandardInputPipe(true);
    return process;
}

/// Launches and reads what the program prints: its output, or else its errors.
std::optional<QByteArray> capture(const QFProcessPtr &process, const QString &path, bool logOutput,
                                  bool logError)
{
    if (!start(process, path, true))
        return std::nullopt;
    // Output first, then errors: a program that fills its error pipe before closing
    // its output would block, which the tools run here never do.
    QByteArray output, errors;
    if (logOutput)
        output = process->readToEnd(QFProcess::Channel::Output);
    if (logError)
        errors = process->readToEnd(QFProcess::Channel::Error);
    process->closePipes();
    if (output.isEmpty() && !errors.isEmpty())
        return errors;
    return output;
}

} // namespace

std::optional<QByteArray>
QFTaskEx::captureData(const QString &path, const QStringList &arguments,
                      const std::optional<QStringList> &environment, bool logOutput, bool logError,
                      const std::function<void(const QFProcessPtr &)> &handOver)
{
    if (!checkExecutable(path))
        return std::nullopt;
    const QFProcessPtr process =
        makeCaptureProcess(path, arguments, environment, logOutput, logError);
    handOver(process);
    return capture(process, path, logOutput, logError);
}

std::optional<QByteArray> QFTaskEx::dataFromTask(const QString &path, const QStringList &arguments,
                                                 QFProcessPtr *task,
                                                 const std::optional<QStringList> &environment,
                                                 bool logOutput, bool logError)
{
    return captureData(path, arguments, environment, logOutput, logError,
                       [task](const QFProcessPtr &process) {
                           if (task)
                               *task = process;
                       });
}

std::optional<QByteArray> QFTaskEx::dataFromTask(const QString &path, const QStringList &arguments,
                                                 double timeout, bool logOutput, bool logError)
{
    return create()->dataWithTimeout(path, arguments, timeout, logOutput, logError);
}

std::optional<QByteArray> QFTaskEx::dataWithTimeout(const QString &path,
                                                    const QStringList &arguments, double seconds,
                                                    bool logOutput, bool logError)
{
    setupTimeout(seconds);
    setTheTask(nullptr);
    const std::optional<QByteArray> data =
        captureData(path, arguments, std::nullopt, logOutput, logError,
                    [this](const QFProcessPtr &process) { setTheTask(process); });
    setTheTask(nullptr);
    return data;
}

QString QFTaskEx::stringFromTask(const QString &path, const QStringList &arguments,
                                 Encoding encoding, QFProcessPtr *task)
{
    const std::optional<QByteArray> data = dataFromTask(path, arguments, task);
    return data ? decode(*data, encoding) : QStringLiteral("");
}

QString QFTaskEx::stringFromTask(const QString &path, const QStringList &arguments, double timeout,
                                 Encoding encoding, bool logOutput, bool logError)
{
    const std::optional<QByteArray> data =
        dataFromTask(path, arguments, timeout, logOutput, logError);
    return data ? decode(*data, encoding) : QStringLiteral("");
}

// ---- time-outs ---------------------------------------------------------------------

void QFTaskEx::setupTimeout(double seconds)
{
    const qint64 whole = qint64(std::trunc(seconds)); // 2.9 s waits 2 s
    std::weak_ptr<QFTaskEx> weak = weak_from_this();
    std::thread([weak, whole] {
        std::this_thread::sleep_for(std::chrono::seconds(qMax<qint64>(whole, 0)));
        const std::shared_ptr<QFTaskEx> runner = weak.lock();
        if (!runner)
            return;
        QCoreApplication *app = QCoreApplication::instance();
        if (app && QThread::currentThread() != app->thread())
            QMetaObject::invokeMethod(
                app, [runner] { runner->timeout(); }, Qt::BlockingQueuedConnection);
        else
            runner->timeout();
    }).detach();
}

void QFTaskEx::timeout()
{
    const QFProcessPtr task = theTask();
    if (task && task->isRunning()) {
        QFLog::appendLogAndPrint(u"Task %@ timed out. Terminating...", task->launchPath());
        task->terminate();
    }
}

// ---- streaming ---------------------------------------------------------------------

void QFTaskEx::asyncDataFromTask(const QString &path, const QStringList &arguments,
                                 Delegate delegate, const QVariant &object,
                                 const std::optional<QStringList> &environment)
{
    {
        std::lock_guard lock(m_mutex);
        m_delegate = std::move(delegate);
        m_object = object;
        m_task = makeProcess(path, arguments);
        m_task->setStandardOutput(Stream::Pipe);
        m_task->setStandardError(Stream::Null);
        if (environment)
            m_task->setEnvironment(*environment);
    }
    // The reader thread keeps the runner alive until the end of the output.
    std::thread([self = shared_from_this()] { self->launchAsyncTask(); }).detach();
}

void QFTaskEx::launchAsyncTask()
{
    try {
        const QFProcessPtr task = theTask();
        if (!task) {
            QFLog::appendLogAndPrint(u"Unable to launch async task - no task set");
            return;
        }
        if (!isExecutable(task->launchPath()) || !task->launch()) {
            QFLog::appendLog(
                u"Unable to launch async task - task does not exist or is not executable");
            return;
        }
        for (QByteArray chunk = task->readChunk(QFProcess::Channel::Output); !chunk.isEmpty();
             chunk = task->readChunk(QFProcess::Channel::Output))
            asyncTaskReturnData(chunk);
        asyncTaskReturnData(QByteArray());
    } catch (const std::exception &e) {
        QFLog::appendLogAndPrint(u"Exception: %@", e.what());
    }
}

void QFTaskEx::asyncTaskReturnData(const QByteArray &chunk)
{
    Delegate delegate;
    QVariant object;
    {
        std::lock_guard lock(m_mutex);
        delegate = m_delegate;
        object = m_object;
    }
    if (delegate)
        delegate(chunk, this, object);
    if (chunk.isEmpty())
        terminateAsyncTask();
}

void QFTaskEx::terminateAsyncTask()
{
    QFProcessPtr task;
    {
        std::lock_guard lock(m_mutex);
        task = std::move(m_task);
        m_task = nullptr;
        m_delegate = nullptr;
        m_object = QVariant();
    }
    if (task) {
        if (task->isRunning())
            task->terminate();
        task->closePipes();
    }
}
