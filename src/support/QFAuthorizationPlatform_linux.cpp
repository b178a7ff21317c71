#include "QFAuthorizationPlatform.h"

#include "QFTaskEx.h"

#include <cstdio>
#include <mutex>

namespace {

std::mutex runnerMutex;
QString privilegedRunner = QStringLiteral("/usr/bin/pkexec");

// pkexec's own exit statuses: the dialogue dismissed; not authorised, or no agent.
constexpr int dismissedByUser = 126;
constexpr int refusedByPolkit = 127;

QString runner()
{
    std::lock_guard lock(runnerMutex);
    return privilegedRunner;
}

} // namespace

namespace QFAuthorizationPlatform {

void setRunner(const QString &path)
{
    std::lock_guard lock(runnerMutex);
    privilegedRunner = path;
}

bool obtainRights(void **handle)
{
    // polkit's agent asks for the password at each privileged run; what can be
    // checked beforehand is that the runner is there.
    *handle = nullptr;
    if (QFTaskEx::isExecutable(runner()))
        return true;
    std::fprintf(stderr, "Unable to authorize: %s is missing\n", qUtf8Printable(runner()));
    return false;
}

void releaseRights(void *) {}

int runWithRights(void *, const QString &tool, const QStringList &arguments, bool)
{
    // pkexec asks through the polkit agent as it starts the tool; only its exit says
    // whether the user agreed and the tool succeeded. Not starting counts as refused.
    const int status = QFTaskEx::terminationCodeFromTask(runner(), QStringList{tool} + arguments);
    return status < 0 ? refusedByPolkit : status;
}

bool isRefusal(int status)
{
    return status == dismissedByUser || status == refusedByPolkit;
}

} // namespace QFAuthorizationPlatform
