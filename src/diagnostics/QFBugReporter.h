#pragma once

#include <QObject>
#include <QString>
#include <QStringList>

/// Notices at start-up that the previous run crashed (a crash report of the
/// application newer than its last launch), logs it and hands the report to the
/// maker's bug reporter; records each launch for the next check.
///
/// On Linux nothing writes crash reports for the application, so it installs its own
/// writer for fatal signals (installCrashReportWriter).
class QFBugReporter
{
public:
    QFBugReporter() = delete;

    /// The crash check, the delegate told, the launch recorded. Without a name, the
    /// application's; without a path, the launch record lives in the user defaults,
    /// else in that property-list file. A delegate's applicationDidCrashWithLog(QString)
    /// (an invokable method) gets the crash report on the main thread, not waited for.
    static void startBugReporter(const QString &name = QString(),
                                 const QString &plistPath = QString(), QObject *delegate = nullptr);
    static void startBugReporterWithDelegate(QObject *delegate);
    /// Records the exit time (this application never does: see the crash check).
    static void stopBugReporter(const QString &plistPath = QString());

    /// The crash report that proves the last run crashed, or null; a crash found is
    /// logged and handed to the bug reporter unless the shared switch
    /// "disable-crash-reporter" is on.
    static QString checkForCrashes(const QString &name = QString(),
                                   const QString &plistPath = QString());

    /// Gives a property list under a user's home folder back to that user (for runs
    /// as the superuser).
    static void chownPlist(const QString &path);

    /// Where the bug reporter may be, in the order looked at.
    static QStringList bugReporterCandidates();
    static constexpr const char *bugReporterIdentifier = "com.quillfen.BugReporter";

    /// Installs the writer of <name>_<yyyy-MM-dd-HHmmss>_<host>.crash into the user's
    /// DiagnosticReports folder for fatal signals; the signal then ends the process as
    /// it would have. Nothing on macOS, whose crash reporter writes the reports.
    static void installCrashReportWriter(const QString &name = QString());
};
