#pragma once

#include <QFlags>
#include <QString>

/// The desktop's application services: which applications run, where one is
/// installed, and opening a file with a given application.
class QFWorkspace
{
public:
    enum LaunchOption
    {
        Asynchronous = 0x1,     ///< return at once, without waiting for the application
        WithoutActivation = 0x2 ///< leave the application in the background where possible
    };
    Q_DECLARE_FLAGS(LaunchOptions, LaunchOption)

    virtual ~QFWorkspace() = default;

    /// Whether an application with that bundle identifier runs. On Linux: a process
    /// started from the desktop entry of that id (its program) runs.
    virtual bool isApplicationRunning(const QString &bundleIdentifier) = 0;
    /// The installed application bundle of that identifier; empty when none (always on
    /// Linux, which has no application bundles).
    virtual QString pathForApplication(const QString &bundleIdentifier) = 0;
    /// Opens the file with the application of that identifier; on Linux with the desktop
    /// entry of that id when installed, else with the file's default application.
    /// Answers whether the request could be made.
    virtual bool openFile(const QString &path, const QString &bundleIdentifier,
                          LaunchOptions options) = 0;

    /// The platform's workspace, or the one installed for testing.
    static QFWorkspace &shared();
    static void setSharedForTesting(QFWorkspace *workspace);
};

Q_DECLARE_OPERATORS_FOR_FLAGS(QFWorkspace::LaunchOptions)
