#include "fcp7link/AETransport.h"

#include <atomic>

namespace {
std::atomic<AETransport *> testingTransport{nullptr};
}

AETransport &AETransport::current()
{
    if (AETransport *transport = testingTransport.load())
        return *transport;
    static const std::unique_ptr<AETransport> platform = makePlatformTransport();
    return *platform;
}

void AETransport::setTransportForTesting(AETransport *transport)
{
    testingTransport = transport;
}
