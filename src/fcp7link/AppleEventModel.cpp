#include "fcp7link/AppleEventModel.h"

#include <QUrl>

#include <cstring>

QString fourCharCodeString(FourCharCode code)
{
    QString text;
    for (int shift = 24; shift >= 0; shift -= 8)
        text += QChar(char16_t((code >> shift) & 0xFF));
    return text;
}

AEDescriptor AEDescriptor::utf8Text(const QString &text)
{
    return AEDescriptor(AEType::utf8Text, text.toUtf8()); // no terminator
}

AEDescriptor AEDescriptor::boolean(bool value)
{
    return AEDescriptor(AEType::boolean, QByteArray(1, value ? '\1' : '\0'));
}

AEDescriptor AEDescriptor::longInteger(qint32 value)
{
    QByteArray bytes(sizeof value, '\0');
    std::memcpy(bytes.data(), &value, sizeof value); // native byte order, as the manager keeps it
    return AEDescriptor(AEType::longInteger, bytes);
}

AEDescriptor AEDescriptor::fileURL(const QString &path)
{
    // The path itself with percent escapes, as the editor reads it: no scheme. What a
    // URL may hold as it is stays; spaces, "%", "#" and everything beyond ASCII are escaped.
    return AEDescriptor(AEType::fileURL, QUrl::toPercentEncoding(path, "!$&'()*+,/:;=?@~"));
}

AEDescriptor AEDescriptor::list(QList<AEDescriptor> items)
{
    AEDescriptor descriptor(AEType::list, QByteArray());
    descriptor.m_items = std::move(items);
    return descriptor;
}

AEDescriptor AEDescriptor::record(QList<std::pair<FourCharCode, AEDescriptor>> fields)
{
    AEDescriptor descriptor(AEType::record, QByteArray());
    descriptor.m_fields = std::move(fields);
    return descriptor;
}

std::optional<AEDescriptor> AEDescriptor::field(FourCharCode keyword, FourCharCode desiredType,
                                                qint32 *status) const
{
    auto fail = [status](qint32 code) -> std::optional<AEDescriptor> {
        if (status)
            *status = code;
        return std::nullopt;
    };
    for (const auto &[fieldKeyword, value] : m_fields) {
        if (fieldKeyword != keyword)
            continue;
        if (desiredType == AEType::null || desiredType == value.type()) {
            if (status)
                *status = AEStatus::noErr;
            return value;
        }
        // The one coercion the replies need: plain text read as UTF-8.
        if (desiredType == AEType::utf8Text && value.type() == AEType::plainText)
            return AEDescriptor(AEType::utf8Text, value.data());
        return fail(AEStatus::errAECoercionFail);
    }
    return fail(AEStatus::errAEDescNotFound);
}

std::optional<QString> AEDescriptor::text() const
{
    if (m_type != AEType::utf8Text && m_type != AEType::plainText)
        return std::nullopt;
    return QString::fromUtf8(m_data);
}

AEDescriptor AppleEvent::applicationTarget(FourCharCode signature)
{
    QByteArray bytes(sizeof signature, '\0');
    std::memcpy(bytes.data(), &signature, sizeof signature);
    return AEDescriptor(AEType::applicationSignature, bytes);
}

std::optional<AEDescriptor> AppleEvent::parameter(FourCharCode keyword) const
{
    for (const auto &[parameterKeyword, value] : parameters)
        if (parameterKeyword == keyword)
            return value;
    return std::nullopt;
}
