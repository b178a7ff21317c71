#pragma once

#include <QString>
#include <QStringList>

#include <atomic>

/// Runs the system's copy and make-folder tools with administrator rights, asking
/// the user once (on Linux polkit's agent asks, through pkexec; on macOS the
/// Security framework). Process-wide; created on first use.
class QFAuthorization
{
public:
    static QFAuthorization &sharedController(bool withGUI = true);
    QFAuthorization(const QFAuthorization &) = delete;
    QFAuthorization &operator=(const QFAuthorization &) = delete;

    bool isAuthorized() const;
    bool canAuthorize() const;
    bool authStart();
    void authEnd();

    /// Runs a tool with administrator rights; 0 on success, -2 when the tool is
    /// missing, -1 when no rights were granted, else the service's status.
    int authExecTask(const QString &toolPath, const QStringList &arguments, bool async = true);
    bool authCopyFile(const QString &source, const QString &destination);
    bool authCreateDir(const QString &path);
    bool authTrashFile(const QString &path);

    /// The program that runs a tool with rights: pkexec on Linux. Tests point it at a
    /// runner that needs no password; a new runner forgets an earlier refusal.
    static void setPrivilegedRunnerForTesting(const QString &runner);

private:
    explicit QFAuthorization(bool withGUI);

    bool m_hasGUI;
    std::atomic<bool> m_authorized{false};
    /// The user refused (or could not be asked): not asked again in this run.
    std::atomic<bool> m_refused{false};
    std::atomic<void *> m_authRef{nullptr};
    QString m_userDirectory;
};
