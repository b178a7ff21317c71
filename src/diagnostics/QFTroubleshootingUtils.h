#pragma once

#include <QString>
#include <QStringList>

/// The support workflow: gathers the logs, crash reports and preference files of the
/// maker's applications, from the user's and the computer-wide folders, into one zip
/// archive on the desktop that the user can send to support; opens an application's
/// current log. Runs on the calling thread, the main one: it shows alerts.
class QFTroubleshootingUtils
{
public:
    QFTroubleshootingUtils() = delete;

    /// False without a name; otherwise gathers for that one application.
    static bool gatherLogsForAppWithName(const QString &name);
    /// Names as used in the log file names (the executable's). True when an archive was
    /// made; unless silent, an alert says how it went.
    static bool gatherLogsForAppsWithNames(const QStringList &names, bool silent = false,
                                           const QStringList &additionalFiles = {});

    /// Opens <name>.1.log of the maker's log folder with its default application.
    static bool viewLogForApp(const QString &name);
    /// The same for the log of a run as a task, <name>.1.task.log.
    static bool viewTaskLogForApp(const QString &name);
};
