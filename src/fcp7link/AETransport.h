#pragma once

#include "fcp7link/AppleEventModel.h"

#include <memory>

/// Where sending one event failed, so that the caller can word its message.
enum class AESendStage
{
    Sent,         ///< the event went out and the reply came back
    CreateTarget, ///< the target descriptor could not be made
    CreateEvent,  ///< the event could not be made
    PutParameter, ///< a parameter could not be put (failedParameter says which)
    Send          ///< sending failed or timed out
};

struct AESendResult
{
    qint32 status = AEStatus::noErr;
    AESendStage stage = AESendStage::Sent;
    FourCharCode failedParameter = 0;
    /// The reply's parameters, as a record.
    AEDescriptor reply = AEDescriptor::record({});

    bool ok() const { return stage == AESendStage::Sent && status == AEStatus::noErr; }
};

/// Sends one event and waits for its reply or its time-out. On macOS the events go
/// through the Apple Event Manager; elsewhere there is no editor to receive them.
class AETransport
{
public:
    virtual ~AETransport() = default;
    virtual AESendResult send(const AppleEvent &event) = 0;

    /// The transport of the platform, or the one installed for testing.
    static AETransport &current();
    /// Installs a transport (a simulated editor) until called again with nullptr.
    static void setTransportForTesting(AETransport *transport);
};

/// File references ('fsrf', 80 bytes) made from paths and read back, as the
/// platform's file system keeps them.
namespace AEFileReference {
constexpr qsizetype size = 80;
/// Nothing when the path names no existing file.
std::optional<QByteArray> fromPath(const QString &path);
/// Nothing when the reference resolves to no file any more.
std::optional<QString> toPath(const QByteArray &reference);
} // namespace AEFileReference

/// The platform's transport (defined in the _mac and _linux files).
std::unique_ptr<AETransport> makePlatformTransport();
