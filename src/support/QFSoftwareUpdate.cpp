#include "support/QFSoftwareUpdate.h"

#include "support/QFFileManager.h"
#include "support/QFFormat.h"
#include "support/QFGlobalPreferences.h"
#include "support/QFLocalPaths.h"
#include "support/QFLog.h"
#include "support/QFPropertyList.h"
#include "support/QFTaskEx.h"

#include <QDir>
#include <QFileInfo>
#include <QProcess>

#include <mutex>
#include <thread>

namespace {

#ifdef Q_OS_MACOS
/// Contents/MacOS/<executable>: the bundle is two folders up.
QString applicationBundle()
{
    return QDir::cleanPath(QFLocalPaths::executableFolder() + QStringLiteral("/../.."));
}
#endif

/// Where a carried updater may be, in the order looked at.
QStringList carriedUpdaters()
{
#ifdef Q_OS_MACOS
    return {applicationBundle() + QStringLiteral("/Contents/Resources/") +
                QFSoftwareUpdate::updaterName(),
            applicationBundle() + QStringLiteral("/Contents/MacOS/") +
                QFSoftwareUpdate::updaterName()};
#else
    return {QFLocalPaths::executableFolder() + u'/' + QFSoftwareUpdate::updaterName()};
#endif
}

/// The updater, or null with the line both checks log when there is none.
QString updaterOrLog()
{
    const QString path = QFSoftwareUpdate::updaterPath();
    if (path.isEmpty())
        QFLog::appendLogAndPrint(u"Unable to launch Software Update - path doesn't exist");
    return path;
}

} // namespace

QString QFSoftwareUpdate::updaterName()
{
#ifdef Q_OS_MACOS
    return QStringLiteral("Quillfen Software Update.app");
#else
    return QStringLiteral("Quillfen Software Update");
#endif
}

void QFSoftwareUpdate::startup()
{
    if (checksAtStartup())
        std::thread(&QFSoftwareUpdate::automaticallyCheckForUpdates).detach();
}

void QFSoftwareUpdate::manualUpdateCheck()
{
    launchSoftwareUpdate();
}

bool QFSoftwareUpdate::checksAtStartup()
{
    return QFGlobalPreferences::number(QStringLiteral("SUCheckAtStartup")) != 0.0;
}

QString QFSoftwareUpdate::updaterPath()
{
    const QString installed =
        QFLocalPaths::applicationDirectory(false) + QStringLiteral("/Quillfen/") + updaterName();
    if (QFileInfo::exists(installed))
        return installed;
    for (const QString &carried : carriedUpdaters()) {
        if (!QFileInfo::exists(carried))
            continue;
        // A carried updater replaces the application it updates: it runs from a copy,
        // made by this run in a folder only this user can enter, and kept after the run
        // because the updater outlives it.
        static std::mutex copying;
        static std::unique_ptr<QTemporaryDir> folder;
        const std::lock_guard lock(copying);
        if (!folder || !QFileInfo::exists(folder->path())) {
            folder = QFLocalPaths::privateTemporaryFolder();
            folder->setAutoRemove(false);
        }
        if (!folder->isValid()) {
            QFLog::appendLogAndPrint(
                QFFormat::format(u"Error copying file: %@", folder->errorString()));
            return QString();
        }
        const QString copy = folder->filePath(updaterName());
        if (QFileInfo(copy).isDir())
            QDir(copy).removeRecursively();
        else
            QFile::remove(copy);
        // What is not this run's own copy is never started.
        if (!QFFileManager::copyFile(carried, copy, false))
            return QString();
        return copy;
    }
    QFLog::appendLogAndPrint(u"Error: unable to find software updater");
    return QString();
}

void QFSoftwareUpdate::launchSoftwareUpdate()
{
    const QString path = updaterOrLog();
    if (path.isEmpty())
        return;
#ifdef Q_OS_MACOS
    QProcess::startDetached(QStringLiteral("/usr/bin/open"), {path});
#else
    QProcess::startDetached(path, {});
#endif
}

void QFSoftwareUpdate::automaticallyCheckForUpdates()
{
    const QString path = updaterOrLog();
    if (path.isEmpty())
        return;
#ifdef Q_OS_MACOS
    const QVariantMap info =
        QFPropertyList::readDictionary(path + QStringLiteral("/Contents/Info.plist"));
    if (!QFileInfo(path).isDir() || info.isEmpty()) {
        QFLog::appendLogAndPrint(u"Unable to launch Software Update - updater bundle not found.");
        return;
    }
    const QString executable = path + QStringLiteral("/Contents/MacOS/") +
                               info.value(QStringLiteral("CFBundleExecutable")).toString();
    const QString application = applicationBundle();
#else
    // Here the updater is a program of its own, not a bundle.
    if (!QFileInfo(path).isFile()) {
        QFLog::appendLogAndPrint(u"Unable to launch Software Update - updater bundle not found.");
        return;
    }
    const QString executable = path;
    const QString application = QFLocalPaths::executablePath();
#endif
    if (!QFileInfo(executable).isExecutable() || QFileInfo(executable).isDir()) {
        QFLog::appendLogAndPrint(
            u"Unable to launch Software Update - executable path doesn't exist");
        return;
    }
    QFTaskEx::runTaskAndReturn(executable, {QStringLiteral("-checkpath"), application});
}
