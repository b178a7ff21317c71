#include "diagnostics/QFBugReporter.h"

#include "support/QFGlobalPreferences.h"
#include "support/QFLocalPaths.h"
#include "support/QFLog.h"
#include "support/QFPropertyList.h"
#include "support/QFTaskEx.h"
#include "support/QFUserDefaults.h"
#include "support/QFWorkspace.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QProcess>

namespace {

Q_LOGGING_CATEGORY(console, "com.quillfen.bugreporter", QtInfoMsg)

QString applicationName(const QString &name)
{
    return name.isEmpty() ? QCoreApplication::applicationName() : name;
}

QVariantMap readRecord(const QString &plistPath)
{
    if (!plistPath.isEmpty())
        return QFPropertyList::readDictionary(plistPath);
    QVariantMap record;
    QFUserDefaults &defaults = QFUserDefaults::standardUserDefaults();
    for (const QString &key : {QStringLiteral("launch"), QStringLiteral("exit")})
        if (const QVariant value = defaults.objectForKey(key); value.isValid())
            record.insert(key, value);
    return record;
}

void record(const QString &key, const QString &plistPath)
{
    const QDateTime now = QDateTime::currentDateTime();
    if (plistPath.isEmpty()) {
        QFUserDefaults::standardUserDefaults().setObject(now, key);
        QFUserDefaults::standardUserDefaults().synchronize();
        return;
    }
    QVariantMap dictionary = QFPropertyList::readDictionary(plistPath);
    dictionary.insert(key, now);
    QFPropertyList::writeDictionary(dictionary, plistPath);
    QFBugReporter::chownPlist(plistPath);
}

/// The newest report of the first folder that has one for the application, when it is
/// newer than the launch; "newest" is the last in listing order, as it always was.
QString crashReportSince(const QString &name, const QDateTime &launch)
{
    QStringList folders;
    for (const bool userDomain : {true, false})
        for (const char *sub : {"/CrashReporter", "/DiagnosticReports"})
            folders << QFLocalPaths::logDirectory(userDomain) + QLatin1StringView(sub);
    for (const QString &folder : folders) {
        QStringList names = QDir(folder).entryList(
            QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System, QDir::Unsorted);
        names.removeIf([&name](const QString &entry) {
            return !entry.startsWith(name + u'_', Qt::CaseInsensitive);
        });
        if (names.isEmpty())
            continue;
        const QFileInfo report(folder + u'/' + names.last());
        if (report.lastModified() > launch)
            return report.absoluteFilePath();
    }
    return QString();
}

void startBugReporterWith(const QString &report)
{
    for (const QString &candidate : QFBugReporter::bugReporterCandidates()) {
        if (!QFileInfo::exists(candidate))
            continue;
#ifdef Q_OS_MACOS
        QProcess::startDetached(QStringLiteral("/usr/bin/open"),
                                {QStringLiteral("-a"), candidate, report});
#else
        QProcess::startDetached(candidate, {report});
#endif
        return;
    }
    QFWorkspace::shared().openFile(report,
                                   QString::fromLatin1(QFBugReporter::bugReporterIdentifier),
                                   QFWorkspace::Asynchronous);
}

} // namespace

void QFBugReporter::startBugReporter(const QString &name, const QString &plistPath,
                                     QObject *delegate)
{
    const QString report = checkForCrashes(name, plistPath);
    if (delegate && !report.isEmpty() &&
        delegate->metaObject()->indexOfMethod("applicationDidCrashWithLog(QString)") >= 0)
        QMetaObject::invokeMethod(delegate, "applicationDidCrashWithLog", Qt::QueuedConnection,
                                  Q_ARG(QString, report));
    record(QStringLiteral("launch"), plistPath);
}

void QFBugReporter::startBugReporterWithDelegate(QObject *delegate)
{
    startBugReporter(QString(), QString(), delegate);
}

void QFBugReporter::stopBugReporter(const QString &plistPath)
{
    record(QStringLiteral("exit"), plistPath);
}

QString QFBugReporter::checkForCrashes(const QString &name, const QString &plistPath)
{
    const QVariantMap launchRecord = readRecord(plistPath);
    const QDateTime launch = launchRecord.value(QStringLiteral("launch")).toDateTime();
    if (!launch.isValid())
        return QString(); // the first run
    const QDateTime exit = launchRecord.value(QStringLiteral("exit")).toDateTime();
    if (exit.isValid() && exit >= launch)
        return QString(); // the last run ended normally

    const QString report = crashReportSince(applicationName(name), launch);
    if (report.isEmpty())
        return QString();
    QFLog::appendLog(u"Application crashed on last launch");
    if (QFGlobalPreferences::switchIsOn(QStringLiteral("disable-crash-reporter"))) {
        qCWarning(console) << "Crash reporter disabled";
        QFLog::appendLog(u"Crash reporter disabled");
        return report;
    }
    startBugReporterWith(report);
    return report;
}

void QFBugReporter::chownPlist(const QString &path)
{
#ifdef Q_OS_MACOS
    const QString homes = QStringLiteral("Users");
    const QString chown = QStringLiteral("/usr/sbin/chown");
#else
    const QString homes = QStringLiteral("home");
    const QString chown = QStringLiteral("/bin/chown");
#endif
    const QStringList components = path.split(u'/');
    const qsizetype at = components.indexOf(homes);
    if (at < 0 || at + 1 >= components.size())
        return;
    QFTaskEx::runTask(chown, {components.at(at + 1), path}, 5.0);
}

QStringList QFBugReporter::bugReporterCandidates()
{
    const QString beside = QFLocalPaths::executableFolder();
#ifdef Q_OS_MACOS
    // Contents/MacOS/<executable>: the bundle is two folders up.
    const QString bundle = QDir::cleanPath(beside + QStringLiteral("/../.."));
    return {bundle + QStringLiteral("/Contents/Resources/Bug Reporter.app"),
            beside + QStringLiteral("/Bug Reporter.app"),
            bundle + QStringLiteral("/Contents/MacOS/Bug Reporter.app")};
#else
    return {beside + QStringLiteral("/Bug Reporter")};
#endif
}
