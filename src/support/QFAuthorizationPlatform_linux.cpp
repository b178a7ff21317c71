#include "QFAuthorizationPlatform.h"

#include "QFTaskEx.h"

#include <cstdio>
#include <mutex>

namespace {

std::mutex runnerMutex;
QString privilegedRunner = QStringLiteral("/usr/bin/pkexec");

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

int runWithRights(void *, const QString &tool, const QStringList &arguments, bool wait)
{
    const QStringList runnerArguments = QStringList{tool} + arguments;
    if (!wait)
        return QFTaskEx::runTaskAndReturn(runner(), runnerArguments) ? 0 : -1;
    return QFTaskEx::terminationCodeFromTask(runner(), runnerArguments);
}

} // namespace QFAuthorizationPlatform
