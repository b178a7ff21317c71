#include "diagnostics/QFTroubleshootingUtils.h"

#include "support/QFAlert.h"
#include "support/QFFileManager.h"
#include "support/QFFormat.h"
#include "support/QFLocalPaths.h"
#include "support/QFWorkspace.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>

namespace {

Q_LOGGING_CATEGORY(console, "com.quillfen.troubleshooting", QtInfoMsg)

/// Failures of the file system go to the system console, not to the user.
void consoleMessage(const QString &message)
{
    qCWarning(console).noquote() << message;
}

/// The collected files, counted; a failed copy ends the gathering.
class Collector
{
public:
    explicit Collector(QString root) : m_root(std::move(root)) {}

    int count() const { return m_count; }

    /// Copies the file to the same folder under the temporary folder (a link: the file
    /// it points to, when that exists), once. False when the copy fails.
    bool collect(const QString &folder, const QString &name)
    {
        const QFileInfo entry(folder + u'/' + name);
        QString source = entry.absoluteFilePath();
        if (entry.isSymLink() && QFileInfo::exists(entry.symLinkTarget()))
            source = QDir::cleanPath(entry.symLinkTarget());
        const QString destinationFolder = QDir::cleanPath(m_root + u'/' + folder);
        const QString destination = destinationFolder + u'/' + name;
        if (QFileInfo::exists(destination))
            return true;
        QFile file(source);
        if (!QDir().mkpath(destinationFolder) || !file.copy(destination)) {
            consoleMessage(QFFormat::format(u"Unable to copy log: %@", file.errorString()));
            return false;
        }
        ++m_count;
        return true;
    }

    /// Every file of the folder whose name passes the test.
    bool collectMatching(const QString &folder, const std::function<bool(const QString &)> &test)
    {
        const QStringList names =
            QDir(folder).entryList(QDir::Files | QDir::Hidden | QDir::System, QDir::Unsorted);
        for (const QString &name : names)
            if (test(name) && !collect(folder, name))
                return false;
        return true;
    }

private:
    QString m_root;
    int m_count = 0;
};

bool beginsWithAny(const QString &text, const QStringList &prefixes, const QString &suffix = {})
{
    return std::any_of(prefixes.begin(), prefixes.end(),
                       [&](const QString &prefix) { return text.startsWith(prefix + suffix); });
}

/// One domain's logs, crash reports and preference files.
bool collectDomain(Collector &collector, bool userDomain, const QStringList &names)
{
    const QString logs = QFLocalPaths::logDirectory(userDomain);
    if (!logs.isEmpty()) {
        if (!collector.collectMatching(logs + QStringLiteral("/Quillfen"), [&](const QString &f) {
                return beginsWithAny(f, names) && f.endsWith(u".log");
            }))
            return false;
        for (const char *reports : {"/CrashReporter", "/DiagnosticReports"})
            if (!collector.collectMatching(
                    logs + QLatin1StringView(reports), [&](const QString &f) {
                        return beginsWithAny(f, names, QStringLiteral("_")) &&
                               (f.endsWith(u".crash") || f.endsWith(u".ips"));
                    }))
                return false;
    }

    const QString prefs = QFLocalPaths::prefsDirectory(userDomain);
    if (prefs.isEmpty())
        return true;
    for (const QString &name : names) {
        const QString squeezed = QString(name).remove(u' ');
        for (const QString &candidate : {squeezed, squeezed.toLower()}) {
            const QString file = QFFormat::format(u"com.quillfen.%@.plist", candidate);
            if (QFileInfo::exists(prefs + u'/' + file)) {
                if (!collector.collect(prefs, file))
                    return false;
                break;
            }
        }
#ifndef Q_OS_MACOS
        // Here an application's own preferences are the settings file of the maker's
        // folder, not a property list.
        const QString settings = squeezed + QStringLiteral(".conf");
        if (QFileInfo::exists(prefs + QStringLiteral("/Quillfen/") + settings) &&
            !collector.collect(prefs + QStringLiteral("/Quillfen"), settings))
            return false;
#endif
    }
    return true;
}

QString archivePath(const QString &firstName)
{
    QString path = QFLocalPaths::desktopDirectory() + QFFormat::format(u"/%@ Logs.zip", firstName);
    if (QFileInfo::exists(path))
        path =
            path.chopped(4) + QFFormat::format(u"_%@.zip", QDateTime::currentDateTime().toString(
                                                               QStringLiteral("yyyyMMddHHmmss")));
    return path;
}

void alert(const QString &message, const QString &informative)
{
    QFAlert::alertSheetWithMessageText(message, informative, nullptr);
}

void couldNotGather()
{
    alert(QStringLiteral("Logs could not be gathered"),
          QStringLiteral("Please check your file permissions."));
}

bool viewLog(const QString &path, const QString &informative)
{
    if (!QFileInfo::exists(path)) {
        alert(QStringLiteral("No log found"), informative);
        return false;
    }
    return QFWorkspace::shared().openFile(path, QString(), {});
}

} // namespace

bool QFTroubleshootingUtils::gatherLogsForAppWithName(const QString &name)
{
    if (name.isEmpty())
        return false;
    return gatherLogsForAppsWithNames({name});
}

bool QFTroubleshootingUtils::gatherLogsForAppsWithNames(const QStringList &names, bool silent,
                                                        const QStringList &additionalFiles)
{
    if (names.isEmpty())
        return false;
    // A folder of this user and this gathering: a shared folder at a fixed name could be
    // another user's, who could then read the files or add to the archive.
    const std::unique_ptr<QTemporaryDir> privateFolder = QFLocalPaths::privateTemporaryFolder();
    const QString temporary = privateFolder->filePath(QStringLiteral("QF_App_Logs"));
    if (!privateFolder->isValid() || !QDir().mkdir(temporary)) {
        consoleMessage(QFFormat::format(
            u"Error creating temp folder: %@",
            privateFolder->isValid() ? QStringLiteral("the folder %1 cannot be made").arg(temporary)
                                     : privateFolder->errorString()));
        if (!silent)
            couldNotGather();
        return false;
    }

    Collector collector(temporary);
    for (const bool userDomain : {true, false})
        if (!collectDomain(collector, userDomain, names))
            return false;

    for (const QString &extra : additionalFiles) {
        const QFileInfo info(extra);
        const QString destination = QDir::cleanPath(temporary + u'/' + info.absolutePath());
        QFile file(extra);
        if ((!QFileInfo::exists(destination) && !QFFileManager::createDirectory(destination)) ||
            !file.copy(destination + u'/' + info.fileName())) {
            consoleMessage(QFFormat::format(u"Unable to copy file: %@", file.errorString()));
            return false;
        }
    }

    if (collector.count() + additionalFiles.size() == 0) {
        if (!silent)
            alert(QStringLiteral("No logs found"),
                  QStringLiteral("There were no logs available to gather."));
        return false;
    }

    const QString archive = archivePath(names.first());
    // The desktop folder is not a given on every Linux system.
    QDir().mkpath(QFileInfo(archive).path());
    const bool made = QFFileManager::compressFile(temporary, archive, true);
    if (!silent) {
        if (made)
            alert(QStringLiteral("Logs gathered successfully"),
                  QStringLiteral("The gathered logs were placed on your desktop."));
        else
            couldNotGather();
    }
    return made;
}

bool QFTroubleshootingUtils::viewLogForApp(const QString &name)
{
    return viewLog(QFLocalPaths::logDirectory(true) + QStringLiteral("/Quillfen") +
                       QFFormat::format(u"/%@.1.log", name),
                   QStringLiteral("You must perform a task before viewing the log."));
}

bool QFTroubleshootingUtils::viewTaskLogForApp(const QString &name)
{
    return viewLog(QFLocalPaths::logDirectory(true) + QStringLiteral("/Quillfen") +
                       QFFormat::format(u"/%@.1.task.log", name),
                   QStringLiteral("You must run the application as a task (e.g. through "
                                  "Runwick) before viewing a log."));
}
