#pragma once

#include <QString>

/// Starts the maker's separate updater: when the user asks for an update check, and
/// at start-up in its checking mode for this application unless the user switched
/// automatic checks off. The updater is installed once for all the maker's products or
/// carried beside the application; a carried one is started from a copy.
class QFSoftwareUpdate
{
public:
    /// The automatic check, on a thread of its own, unless switched off.
    void startup();
    /// The menu command.
    void manualUpdateCheck();

    /// The updater to start, or null (logged) when there is none.
    static QString updaterPath();
    /// Starts the updater as an ordinary application.
    static void launchSoftwareUpdate();
    /// Starts the updater in its checking mode for this application.
    static void automaticallyCheckForUpdates();
    /// Off only when "SUCheckAtStartup" of the shared preference file is false.
    static bool checksAtStartup();
    /// What the updater is called.
    static QString updaterName();
};
