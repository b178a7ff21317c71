#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QtGlobal>

#include <optional>
#include <utility>

/// A four-character code ('KeyG', 'xmlD') as the Apple Event Manager holds it: the
/// four characters big-endian in a 32-bit value.
using FourCharCode = quint32;

constexpr FourCharCode fourCharCode(const char (&code)[5])
{
    return FourCharCode(quint8(code[0])) << 24 | FourCharCode(quint8(code[1])) << 16 |
           FourCharCode(quint8(code[2])) << 8 | FourCharCode(quint8(code[3]));
}

/// "KeyG" for 'KeyG', for messages and test output.
QString fourCharCodeString(FourCharCode code);

/// The Apple Event Manager's status codes that this link reads or reports.
namespace AEStatus {
constexpr qint32 noErr = 0;
constexpr qint32 errAECoercionFail = -1700;
constexpr qint32 errAEDescNotFound = -1701;
constexpr qint32 errAEWrongDataType = -1703;
constexpr qint32 errAETimeout = -1712;
constexpr qint32 procNotFound = -600;
constexpr qint32 fnfErr = -43;
} // namespace AEStatus

namespace AEType {
constexpr FourCharCode null = fourCharCode("null");
constexpr FourCharCode applicationSignature = fourCharCode("sign");
constexpr FourCharCode fileSystemReference = fourCharCode("fsrf");
constexpr FourCharCode utf8Text = fourCharCode("utf8");
constexpr FourCharCode plainText = fourCharCode("TEXT");
constexpr FourCharCode fileURL = fourCharCode("furl");
constexpr FourCharCode boolean = fourCharCode("bool");
constexpr FourCharCode longInteger = fourCharCode("long");
constexpr FourCharCode list = fourCharCode("list");
constexpr FourCharCode record = fourCharCode("reco");
} // namespace AEType

/// A descriptor: a type code with its bytes, or a list of descriptors, or a record
/// of descriptors by keyword.
class AEDescriptor
{
public:
    AEDescriptor() = default;
    AEDescriptor(FourCharCode type, QByteArray data) : m_type(type), m_data(std::move(data)) {}

    static AEDescriptor utf8Text(const QString &text);
    static AEDescriptor boolean(bool value);
    static AEDescriptor longInteger(qint32 value);
    /// A path with percent escapes added (no scheme), as UTF-8 bytes, typed as a file URL.
    static AEDescriptor fileURL(const QString &path);
    static AEDescriptor list(QList<AEDescriptor> items);
    static AEDescriptor record(QList<std::pair<FourCharCode, AEDescriptor>> fields);

    FourCharCode type() const { return m_type; }
    const QByteArray &data() const { return m_data; }
    qsizetype size() const { return m_data.size(); }
    const QList<AEDescriptor> &items() const { return m_items; }
    const QList<std::pair<FourCharCode, AEDescriptor>> &fields() const { return m_fields; }

    /// The field with that keyword, coerced to the type asked for (null: any type), or
    /// nothing with the Apple Event Manager's status in status.
    std::optional<AEDescriptor> field(FourCharCode keyword, FourCharCode desiredType,
                                      qint32 *status = nullptr) const;
    /// The text of a 'utf8' or 'TEXT' descriptor.
    std::optional<QString> text() const;

private:
    FourCharCode m_type = AEType::null;
    QByteArray m_data;
    QList<AEDescriptor> m_items;
    QList<std::pair<FourCharCode, AEDescriptor>> m_fields;
};

/// One event of the editor's suite: class and ID, addressed to an application
/// signature, with its parameters in the order they were put.
struct AppleEvent
{
    static constexpr qint32 autoGenerateReturnID = -1;
    static constexpr qint32 anyTransactionID = 0;
    static constexpr qint32 highPriority = 1;
    static constexpr qint32 defaultTimeout = -1; ///< the Apple Event Manager's own
    static constexpr qint32 waitReply = 0x00000003;

    FourCharCode eventClass = 0;
    FourCharCode eventID = 0;
    /// The target: type 'sign', the signature's four bytes as a native 32-bit value.
    AEDescriptor target;
    qint32 returnID = autoGenerateReturnID;
    qint32 transactionID = anyTransactionID;
    QList<std::pair<FourCharCode, AEDescriptor>> parameters;
    qint32 sendMode = waitReply;
    qint32 sendPriority = highPriority;
    qint32 timeoutTicks = defaultTimeout;

    static AEDescriptor applicationTarget(FourCharCode signature);
    std::optional<AEDescriptor> parameter(FourCharCode keyword) const;
};
