#include "QFLocalPaths.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <QUuid>

#include <atomic>
#include <cstdlib>
#include <ctime>

#include <pwd.h>
#include <unistd.h>

namespace {

// -1: no override.
std::atomic<qint64> userIdOverride{-1};
QString computerWideRoot;
QString executableFolderOverride;

QString firstOf(const QStringList &paths)
{
    return paths.isEmpty() ? QString() : paths.first();
}

bool isInside(const QString &path, const QString &folder)
{
    if (folder.isEmpty())
        return false;
    return path == folder || path.startsWith(folder.endsWith(u'/') ? folder : folder + u'/');
}

/// The superuser's own home, from the password database.
QString superuserHome()
{
    if (const passwd *entry = ::getpwuid(0))
        return QFile::decodeName(entry->pw_dir);
    return QStringLiteral("/root");
}

} // namespace

uint QFLocalPaths::realUserId()
{
    const qint64 override = userIdOverride.load();
    return override >= 0 ? uint(override) : uint(::getuid());
}

void QFLocalPaths::setRealUserIdForTesting(std::optional<uint> uid)
{
    userIdOverride.store(uid ? qint64(*uid) : -1);
}

QString QFLocalPaths::executablePath()
{
    if (QCoreApplication::instance())
        return QCoreApplication::applicationFilePath();
#ifdef Q_OS_LINUX
    return QFileInfo(QStringLiteral("/proc/self/exe")).canonicalFilePath();
#else
    return QString();
#endif
}

QString QFLocalPaths::executableFolder()
{
    if (!executableFolderOverride.isNull())
        return executableFolderOverride;
    return QFileInfo(executablePath()).path();
}

void QFLocalPaths::setExecutableFolderForTesting(const QString &folder)
{
    executableFolderOverride = folder;
}

void QFLocalPaths::setComputerWideRootForTesting(const QString &root)
{
    computerWideRoot = root;
}

QString QFLocalPaths::pathForDirectory(Directory directory, bool forUserDomain)
{
    const QStringList paths =
        platformDirectories(directory, forUserDomain ? Domain::User : Domain::Local);
    if (forUserDomain && isSuperuser() && !paths.isEmpty()) {
        // A tool run with sudo must still use the folders of the user who ran it: a
        // folder in the superuser's own home moves to the user's, and one already in
        // the user's home (sudo -E keeps HOME and the XDG folders) stays where it is.
        const QString user = userDirectory();
        QString rest = paths.first();
        if (isInside(rest, user))
            return rest;
        for (const QString &home :
             {QStringLiteral("/var/root"), QStringLiteral("/private/var/root"), superuserHome()}) {
            if (isInside(rest, home)) {
                rest.remove(0, home.size());
                break;
            }
        }
        return user + rest;
    }
    if (!forUserDomain && !computerWideRoot.isNull() && !paths.isEmpty())
        return computerWideRoot + paths.first();
    return firstOf(paths);
}

QString QFLocalPaths::applicationDirectory(bool userDomain)
{
    return pathForDirectory(Directory::Applications, userDomain);
}

QString QFLocalPaths::adminApplicationDirectory(bool userDomain)
{
    return pathForDirectory(Directory::AdminApplications, userDomain);
}

QString QFLocalPaths::documentDirectory(bool userDomain)
{
    return pathForDirectory(Directory::Documents, userDomain);
}

QString QFLocalPaths::libraryDirectory(bool userDomain)
{
    return pathForDirectory(Directory::Library, userDomain);
}

QString QFLocalPaths::prefsDirectory(bool userDomain)
{
    return pathForDirectory(Directory::Preferences, userDomain);
}

QString QFLocalPaths::cacheDirectory(bool userDomain)
{
    return pathForDirectory(Directory::Caches, userDomain);
}

QString QFLocalPaths::appSupportDirectory(bool userDomain)
{
    return pathForDirectory(Directory::ApplicationSupport, userDomain);
}

QString QFLocalPaths::logDirectory(bool userDomain)
{
    return pathForDirectory(Directory::Logs, userDomain);
}

QString QFLocalPaths::movieDirectory()
{
    return pathForDirectory(Directory::Movies, true);
}

QString QFLocalPaths::desktopDirectory()
{
    return pathForDirectory(Directory::Desktop, true);
}

QString QFLocalPaths::systemLibraryDirectory()
{
    return firstOf(platformDirectories(Directory::Library, Domain::System));
}

QString QFLocalPaths::localDocumentationDirectory()
{
    return firstOf(platformDirectories(Directory::Documentation, Domain::Local));
}

QString QFLocalPaths::userDirectory()
{
    return QDir::homePath();
}

QString QFLocalPaths::username()
{
    if (const passwd *entry = ::getpwuid(::getuid()))
        return QString::fromLocal8Bit(entry->pw_name);
    return qEnvironmentVariable("USER");
}

QString QFLocalPaths::trashDirectory()
{
    return firstOf(platformDirectories(Directory::Trash, Domain::User));
}

QString QFLocalPaths::tempDirectory()
{
    return ensureTrailingSlash(QDir::tempPath());
}

QString QFLocalPaths::privateRuntimeFolder()
{
    // The runtime folder is the user's own (Qt checks its owner and mode); the shared
    // temporary folder is not, and a fixed name there can be taken by another user.
    QString base = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    if (base.isEmpty() || !QFileInfo(base).isWritable())
        base = QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation);
    QDir().mkpath(base);
    return base;
}

std::unique_ptr<QTemporaryDir> QFLocalPaths::privateTemporaryFolder()
{
    // mkdtemp: a new name, made with mode 700.
    return std::make_unique<QTemporaryDir>(privateRuntimeFolder() +
                                           QStringLiteral("/quillfen-XXXXXX"));
}

QString QFLocalPaths::tempFile()
{
    return tempDirectory() + uuid() + randomString(8);
}

QString QFLocalPaths::uuid()
{
    return QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper();
}

QString QFLocalPaths::randomString(int length)
{
    static const char alphabet[] = "abcdefghijklmnopqrstuvwxyz0123456789";
    // Seeded anew at every call from time and processor clock, as the maker's
    // other applications do; not for anything that must be unpredictable.
    std::srand(unsigned(std::time(nullptr)) * unsigned(std::clock()));
    QString result;
    result.reserve(qMax(length, 0));
    for (int i = 0; i < length; ++i)
        result += QLatin1Char(alphabet[std::rand() % 36]);
    return result;
}

QString QFLocalPaths::ensureTrailingSlash(const QString &path)
{
    if (path.isNull() || path.isEmpty() || path.endsWith(u'/'))
        return path;
    return path + u'/';
}

QString QFLocalPaths::stripTrailingSlash(const QString &path)
{
    if (path.isNull() || path.size() < 2 || !path.endsWith(u'/'))
        return path;
    return path.chopped(1);
}

bool QFLocalPaths::isPathSystemDirectory(const QString &path, bool exactMatch)
{
    if (path == QLatin1StringView("/"))
        return true;
    if (path.size() < 3)
        return false;
    QString p = path;
    if (p.endsWith(u'/'))
        p.truncate(p.size() - 2);

    QStringList systemFolders;
    for (const bool user : {true, false}) {
        systemFolders << applicationDirectory(user) << adminApplicationDirectory(user)
                      << documentDirectory(user) << libraryDirectory(user) << prefsDirectory(user)
                      << cacheDirectory(user) << appSupportDirectory(user);
    }
    systemFolders << desktopDirectory() << userDirectory() << systemLibraryDirectory()
                  << localDocumentationDirectory();
    systemFolders << QStringLiteral("/Users/Shared") << QStringLiteral("/usr")
                  << QStringLiteral("/var") << QStringLiteral("/bin") << QStringLiteral("/sbin")
                  << QStringLiteral("/System");
#ifdef Q_OS_LINUX
    systemFolders << QStringLiteral("/home") << QStringLiteral("/etc") << QStringLiteral("/lib")
                  << QStringLiteral("/opt") << QStringLiteral("/boot") << QStringLiteral("/root");
#endif
    for (const QString &folder : std::as_const(systemFolders)) {
        if (!folder.isEmpty() && p == folder)
            return true;
    }
    if (exactMatch)
        return false;
    auto startsWith = [&p](const char *prefix) { return p.startsWith(QLatin1StringView(prefix)); };
    return (startsWith("/usr/") && !startsWith("/usr/local/")) || startsWith("/var/") ||
           startsWith("/bin/") || startsWith("/sbin/") || startsWith("/private/var/") ||
           startsWith("/System/");
}

bool QFLocalPaths::isPathOnTimeMachineVolume(const QString &path)
{
    return path.startsWith(QLatin1StringView("/Volumes/")) &&
           path.split(u'/').contains(QLatin1StringView("Backups.backupdb"));
}
