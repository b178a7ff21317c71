// The Apple Event Manager carries the events to Final Cut Pro 7; file references are
// the file system's FSRef.

#include "fcp7link/AETransport.h"

#include <QFile>

#include <CoreServices/CoreServices.h>

#include <climits>
#include <cstring>

// FSRef and its URL conversions are deprecated but are what the editor's suite takes.
#pragma clang diagnostic ignored "-Wdeprecated-declarations"

namespace {

struct OwnedDesc
{
    AEDesc desc{typeNull, nullptr};
    ~OwnedDesc() { AEDisposeDesc(&desc); }
};

OSStatus makeDesc(const AEDescriptor &descriptor, AEDesc *out)
{
    const bool isRecord = descriptor.type() == AEType::record;
    if (descriptor.type() != AEType::list && !isRecord)
        return AECreateDesc(descriptor.type(), descriptor.data().constData(), descriptor.size(),
                            out);
    OSStatus status = AECreateList(nullptr, 0, isRecord, out);
    for (const AEDescriptor &item : descriptor.items()) {
        OwnedDesc element;
        if (status == noErr)
            status = makeDesc(item, &element.desc);
        if (status == noErr)
            status = AEPutDesc(out, 0, &element.desc);
    }
    for (const auto &[keyword, value] : descriptor.fields()) {
        OwnedDesc element;
        if (status == noErr)
            status = makeDesc(value, &element.desc);
        if (status == noErr)
            status = AEPutKeyDesc(out, keyword, &element.desc);
    }
    return status;
}

AEDescriptor readDesc(const AEDesc &desc)
{
    const bool isRecord = desc.descriptorType == typeAERecord;
    if (desc.descriptorType != typeAEList && !isRecord) {
        QByteArray bytes(qsizetype(AEGetDescDataSize(&desc)), '\0');
        if (AEGetDescData(&desc, bytes.data(), bytes.size()) != noErr)
            bytes.clear();
        return AEDescriptor(desc.descriptorType, bytes);
    }
    long count = 0;
    AECountItems(&desc, &count);
    QList<AEDescriptor> items;
    QList<std::pair<FourCharCode, AEDescriptor>> fields;
    for (long index = 1; index <= count; ++index) {
        AEKeyword keyword = 0;
        OwnedDesc element;
        if (AEGetNthDesc(&desc, index, typeWildCard, &keyword, &element.desc) != noErr)
            break;
        if (isRecord)
            fields.append({keyword, readDesc(element.desc)});
        else
            items.append(readDesc(element.desc));
    }
    return isRecord ? AEDescriptor::record(fields) : AEDescriptor::list(items);
}

class AppleEventManagerTransport : public AETransport
{
public:
    AESendResult send(const AppleEvent &event) override
    {
        AESendResult result;
        OwnedDesc target;
        OwnedDesc appleEvent;
        OwnedDesc reply;
        result.status = AECreateDesc(typeApplSignature, event.target.data().constData(),
                                     event.target.size(), &target.desc);
        if (result.status != noErr) {
            result.stage = AESendStage::CreateTarget;
            return result;
        }
        result.status = AECreateAppleEvent(event.eventClass, event.eventID, &target.desc,
                                           AEReturnID(event.returnID),
                                           AETransactionID(event.transactionID), &appleEvent.desc);
        if (result.status != noErr) {
            result.stage = AESendStage::CreateEvent;
            return result;
        }
        for (const auto &[keyword, value] : event.parameters) {
            OwnedDesc parameter;
            result.status = makeDesc(value, &parameter.desc);
            if (result.status == noErr)
                result.status = AEPutParamDesc(&appleEvent.desc, keyword, &parameter.desc);
            if (result.status != noErr) {
                result.stage = AESendStage::PutParameter;
                result.failedParameter = keyword;
                return result;
            }
        }
        result.status = AESendMessage(&appleEvent.desc, &reply.desc, AESendMode(event.sendMode),
                                      event.timeoutTicks);
        if (result.status != noErr) {
            result.stage = AESendStage::Send;
            return result;
        }
        // The replies the link reads: XML text (coerced to UTF-8) and the project list.
        QList<std::pair<FourCharCode, AEDescriptor>> fields;
        const std::pair<FourCharCode, DescType> wanted[] = {{'xmlD', typeUTF8Text},
                                                            {'fcOP', typeAEList}};
        for (const auto &[keyword, type] : wanted) {
            OwnedDesc parameter;
            if (AEGetParamDesc(&reply.desc, keyword, type, &parameter.desc) == noErr)
                fields.append({keyword, readDesc(parameter.desc)});
        }
        result.reply = AEDescriptor::record(fields);
        return result;
    }
};

} // namespace

std::unique_ptr<AETransport> makePlatformTransport()
{
    return std::make_unique<AppleEventManagerTransport>();
}

std::optional<QByteArray> AEFileReference::fromPath(const QString &path)
{
    const QByteArray name = QFile::encodeName(path);
    CFURLRef url = CFURLCreateFromFileSystemRepresentation(
        nullptr, reinterpret_cast<const UInt8 *>(name.constData()), name.size(), false);
    FSRef reference;
    const bool made = url && CFURLGetFSRef(url, &reference);
    if (url)
        CFRelease(url);
    if (!made)
        return std::nullopt;
    return QByteArray(reinterpret_cast<const char *>(&reference), sizeof reference);
}

std::optional<QString> AEFileReference::toPath(const QByteArray &bytes)
{
    FSRef reference;
    if (bytes.size() != sizeof reference)
        return std::nullopt;
    std::memcpy(&reference, bytes.constData(), sizeof reference);
    CFURLRef url = CFURLCreateFromFSRef(nullptr, &reference);
    if (!url)
        return std::nullopt;
    UInt8 path[PATH_MAX * 4];
    const bool converted = CFURLGetFileSystemRepresentation(url, true, path, sizeof path);
    CFRelease(url);
    if (!converted)
        return std::nullopt;
    return QFile::decodeName(reinterpret_cast<const char *>(path));
}
