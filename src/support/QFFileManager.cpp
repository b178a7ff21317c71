#include "QFFileManager.h"

#include "QFAuthorization.h"
#include "QFLocalPaths.h"
#include "QFTaskEx.h"
#include "support/QFLog.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QThread>
#include <QTimer>

#include <cstdio>
#include <filesystem>
#include <thread>

#ifdef Q_OS_LINUX
#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <unistd.h>
#else
#include <sys/stat.h>

#endif

namespace {

namespace fs = std::filesystem;

fs::path toPath(const QString &path)
{
    return fs::path(QFile::encodeName(path).toStdString());
}

QString describe(const std::error_code &error)
{
    return QString::fromLocal8Bit(error.message().c_str());
}

bool isMainThread()
{
    const QCoreApplication *app = QCoreApplication::instance();
    return app && QThread::currentThread() == app->thread();
}

/// Clears the immutable flag; false with a reason when that fails.
bool clearImmutable(const QString &path, QString *error)
{
    const QByteArray native = QFile::encodeName(path);
#ifdef Q_OS_LINUX
    const int fd = ::open(native.constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0) {
        *error = QString::fromLocal8Bit(std::strerror(errno));
        return false;
    }
    int flags = 0;
    bool ok = true;
    if (::ioctl(fd, FS_IOC_GETFLAGS, &flags) == 0 && (flags & FS_IMMUTABLE_FL)) {
        flags &= ~FS_IMMUTABLE_FL;
        ok = ::ioctl(fd, FS_IOC_SETFLAGS, &flags) == 0;
        if (!ok)
            *error = QString::fromLocal8Bit(std::strerror(errno));
    }
    ::close(fd);
    return ok;
#else
    struct stat info;
    if (::stat(native.constData(), &info) != 0 ||
        ((info.st_flags & UF_IMMUTABLE) &&
         ::chflags(native.constData(), info.st_flags & ~UF_IMMUTABLE) != 0)) {
        *error = QString::fromLocal8Bit(std::strerror(errno));
        return false;
    }
    return true;
#endif
}

} // namespace

bool QFFileManager::fileExistsAtPath(const QString &path)
{
    return !path.isEmpty() && QFileInfo::exists(path);
}

bool QFFileManager::isDirectoryAtPath(const QString &path)
{
    return !path.isEmpty() && QFileInfo(path).isDir();
}

bool QFFileManager::isPackageAtPath(const QString &path)
{
    static const QStringList packageExtensions = {
        QStringLiteral("app"),    QStringLiteral("fcpxmld"),   QStringLiteral("fcpbundle"),
        QStringLiteral("bundle"), QStringLiteral("framework"), QStringLiteral("plugin"),
        QStringLiteral("kext"),   QStringLiteral("pkg"),       QStringLiteral("rtfd")};
    const QFileInfo info(QFLocalPaths::stripTrailingSlash(path));
    return !path.isEmpty() && info.isDir() &&
           packageExtensions.contains(info.suffix(), Qt::CaseInsensitive);
}

bool QFFileManager::isDriveMountedForPath(const QString &path)
{
    if (!path.startsWith(QLatin1StringView("/Volumes/")))
        return true;
    const QStringList components = path.split(u'/', Qt::SkipEmptyParts);
    // "/", "Volumes", the volume: a path naming no volume is fine.
    if (components.size() + 1 < 3)
        return true;
    return QFileInfo::exists(QStringLiteral("/Volumes/") + components.at(1));
}

void QFFileManager::unlockFile(const QString &path)
{
    QString error;
    if (!clearImmutable(path, &error))
        QFLog::fastAppendLog(u"Unable to unlock file %@: %@", path, error);
}

bool QFFileManager::createDirectory(const QString &path, bool shouldAuth)
{
    if (!isDriveMountedForPath(path)) {
        std::fprintf(stderr, "Unable to create directory. Drive is not mounted.\n");
        return false;
    }
    std::error_code error;
    if (path.isEmpty())
        error = std::make_error_code(std::errc::invalid_argument);
    else if (fs::create_directories(toPath(path), error) || (!error && isDirectoryAtPath(path)))
        return true;
    if (!error)
        error = std::make_error_code(std::errc::not_a_directory);
    QFLog::appendLog(u"Error creating folder: %@. Authorizing...", describe(error));
    return shouldAuth && QFAuthorization::sharedController().authCreateDir(path);
}

bool QFFileManager::createDirectory(const QString &path, int timeout)
{
    if (!createDirectory(path))
        return false;
    return waitForPath(path, true, timeout);
}

bool QFFileManager::copyFile(const QString &source, const QString &destination, bool shouldAuth)
{
    if (source.isNull()) {
        QFLog::appendLogAndPrint(u"Error copying file: source path is nil");
        return false;
    }
    if (destination.isNull()) {
        QFLog::appendLogAndPrint(u"Error copying file %@: destination path is nil", source);
        return false;
    }
    unlockFile(QFileInfo(destination).path());
    std::error_code error;
    if (fileExistsAtPath(destination))
        error = std::make_error_code(std::errc::file_exists);
    else
        fs::copy(toPath(source), toPath(destination), fs::copy_options::recursive, error);
    if (!error)
        return true;
    QFLog::appendLog(u"Error copying file: %@. Authorizing...", describe(error));
    return shouldAuth && QFAuthorization::sharedController().authCopyFile(source, destination);
}

bool QFFileManager::copyFile(const QString &source, const QString &destination, int timeout)
{
    if (!copyFile(source, destination))
        return false;
    return waitForPath(destination, true, timeout);
}

bool QFFileManager::trashFile(const QString &path, bool shouldAuth)
{
    unlockFile(path);
    if (!fileExistsAtPath(path))
        return true;
    // The desktop's trash needs the user's data folder to exist before it can make itself.
    QDir().mkpath(QFileInfo(QFLocalPaths::trashDirectory()).path());
    if (QFile::moveToTrash(path))
        return true;
    return shouldAuth && QFAuthorization::sharedController().authTrashFile(path);
}

QString QFFileManager::archiverPath()
{
#ifdef Q_OS_MACOS
    return QStringLiteral("/usr/bin/ditto");
#else
    return QStringLiteral("/usr/bin/zip");
#endif
}

bool QFFileManager::compressFile(const QString &source, const QString &destination,
                                 bool includeParent)
{
    if (source.isEmpty() || destination.isEmpty())
        return false;
    const QString target = QFileInfo(destination).absoluteFilePath();
    if (fileExistsAtPath(target))
        trashFile(target);
#ifdef Q_OS_MACOS
    QStringList arguments = {QStringLiteral("-ck")};
    if (includeParent)
        arguments << QStringLiteral("--keepParent");
    arguments << source << target;
    QFTaskEx::runTask(archiverPath(), arguments);
#else
    // zip stores paths as given, so run it beside the source (the folder itself goes
    // in) or inside it (only its contents), as ditto's --keepParent decides.
    const QFileInfo info(QFLocalPaths::stripTrailingSlash(source));
    if (includeParent || !info.isDir())
        QFTaskEx::runTaskInDirectory(archiverPath(),
                                     {QStringLiteral("-r"), QStringLiteral("-q"),
                                      QStringLiteral("-y"), target, info.fileName()},
                                     info.absolutePath());
    else
        QFTaskEx::runTaskInDirectory(archiverPath(),
                                     {QStringLiteral("-r"), QStringLiteral("-q"),
                                      QStringLiteral("-y"), target, QStringLiteral(".")},
                                     info.absoluteFilePath());
#endif
    return fileExistsAtPath(target);
}

bool QFFileManager::waitForPath(const QString &path, bool toExist, int timeout)
{
    QElapsedTimer elapsed;
    elapsed.start();
    while (fileExistsAtPath(path) != toExist && elapsed.elapsed() < qint64(timeout) * 1000) {
        // The administrator tools run on their own; keep the password dialogue alive
        // with one pass of the event loop that sleeps until an event, or 10 ms.
        if (isMainThread() && QCoreApplication::instance()) {
            QTimer wakeUp;
            wakeUp.setSingleShot(true);
            wakeUp.start(10);
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        } else {
            std::this_thread::sleep_for(std::chrono::milliseconds(isMainThread() ? 10 : 300));
        }
    }
    return fileExistsAtPath(path) == toExist;
}
