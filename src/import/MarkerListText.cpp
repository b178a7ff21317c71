#include "MarkerListText.h"

namespace MarkerListText {

std::optional<QStringConverter::Encoding> detectEncoding(const QByteArray &bytes)
{
    if (const auto fromBom = QStringConverter::encodingForData(bytes))
        return fromBom;
    // Stateless, so that a sequence cut off at the end counts as an error.
    QStringDecoder utf8(QStringConverter::Utf8, QStringConverter::Flag::Stateless);
    const QString text = utf8.decode(bytes);
    if (utf8.hasError())
        return std::nullopt;
    return QStringConverter::Utf8;
}

QString decode(const QByteArray &bytes, QStringConverter::Encoding encoding)
{
    QStringDecoder decoder(encoding, QStringConverter::Flag::Stateless);
    return decoder.decode(bytes);
}

} // namespace MarkerListText
