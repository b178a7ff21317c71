#pragma once

// The platform's way of running a tool with administrator rights, behind
// QFAuthorization: pkexec (polkit) on Linux, the Security framework on macOS.

#include <QString>
#include <QStringList>

namespace QFAuthorizationPlatform {

/// Obtains the administrator right interactively; *handle keeps it (may stay null
/// where each run asks by itself). False when refused or impossible.
bool obtainRights(void **handle);
void releaseRights(void *handle);
/// Runs the tool with rights; when wait, until it has finished. The service's
/// status: 0 when the tool was started (and, when waited for, succeeded). On Linux the
/// user is asked as the tool starts, so the run is always waited for and the status is
/// the tool's exit status.
int runWithRights(void *handle, const QString &tool, const QStringList &arguments, bool wait);
/// Whether a status of runWithRights means the user refused or could not be asked.
bool isRefusal(int status);
/// Linux only: the program that runs a tool with rights (tests use one without a password).
void setRunner(const QString &runner);

} // namespace QFAuthorizationPlatform
