#include "support/QFWorkspace.h"

#include <atomic>
#include <memory>

std::unique_ptr<QFWorkspace> makePlatformWorkspace();

namespace {
std::atomic<QFWorkspace *> testingWorkspace{nullptr};
}

QFWorkspace &QFWorkspace::shared()
{
    if (QFWorkspace *workspace = testingWorkspace.load())
        return *workspace;
    static const std::unique_ptr<QFWorkspace> platform = makePlatformWorkspace();
    return *platform;
}

void QFWorkspace::setSharedForTesting(QFWorkspace *workspace)
{
    testingWorkspace = workspace;
}
