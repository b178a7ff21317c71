#include "TextEncoding.h"

#include <QStringDecoder>

#include <uchardet.h>

#include <iconv.h>

#include <array>
#include <cerrno>
#include <memory>

namespace TextEncoding {

namespace {

/// What the charset detector makes of the bytes; null when it has no answer.
QByteArray detectorAnswer(const QByteArray &bytes)
{
    const std::unique_ptr<std::remove_pointer_t<uchardet_t>, decltype(&uchardet_delete)> detector(
        uchardet_new(), &uchardet_delete);
    if (uchardet_handle_data(detector.get(), bytes.constData(), size_t(bytes.size())) != 0)
        return QByteArray();
    uchardet_data_end(detector.get());
    const QByteArray answer(uchardet_get_charset(detector.get()));
    return answer.isEmpty() ? QByteArray() : answer.toUpper();
}

/// How much a decoded text looks like Western prose: letters past ASCII in lower case
/// or at the start of a word, and typographic punctuation, count for it; capitals in
/// the middle of a word and control characters against it.
int plausibility(const QString &text)
{
    int score = 0;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text.at(i);
        if (c.unicode() < 0x80)
            continue;
        const bool afterLetter = i > 0 && text.at(i - 1).isLetter();
        if (c.category() == QChar::Other_Control || c == QChar::ReplacementCharacter)
            score -= 2;
        else if (c.isLower() || (c.isUpper() && !afterLetter) || c.isPunct() || c.isSymbol())
            ++score;
        else
            --score;
    }
    return score;
}

/// The text in an encoding Qt does not carry, through iconv.
std::optional<QString> decodeWithIconv(const QByteArray &bytes, const QByteArray &encoding,
                                       bool *valid)
{
    const iconv_t converter = iconv_open("UTF-8", encoding.constData());
    if (converter == iconv_t(-1))
        return std::nullopt;
    QByteArray out;
    std::array<char, 4096> buffer;
    char *in = const_cast<char *>(bytes.constData());
    size_t inLeft = size_t(bytes.size());
    bool clean = true;
    while (inLeft > 0) {
        char *next = buffer.data();
        size_t outLeft = buffer.size();
        const size_t result = iconv(converter, &in, &inLeft, &next, &outLeft);
        out.append(buffer.data(), qsizetype(buffer.size() - outLeft));
        if (result == size_t(-1) && errno != E2BIG) {
            // An invalid or cut-off sequence: a replacement character, and on.
            out.append("\xef\xbf\xbd");
            clean = false;
            ++in;
            --inLeft;
        }
    }
    iconv_close(converter);
    if (valid)
        *valid = clean;
    return QString::fromUtf8(out);
}

} // namespace

std::optional<QByteArray> detect(const QByteArray &bytes)
{
    if (const auto fromBom = QStringConverter::encodingForData(bytes))
        return QByteArray(QStringConverter::nameForEncoding(*fromBom)).toUpper();
    // Stateless, so that a sequence cut off at the end counts as an error.
    QStringDecoder strictUtf8(QStringConverter::Utf8, QStringConverter::Flag::Stateless);
    const QString text = strictUtf8.decode(bytes);
    if (!strictUtf8.hasError())
        return utf8;
    if (bytes.contains('\0'))
        return std::nullopt;
    const QByteArray answer = detectorAnswer(bytes);
    if (answer.isEmpty() || decode(QByteArray(), answer).isNull()) // unknown here
        return std::nullopt;
    if (answer == "WINDOWS-1252" || answer.startsWith("ISO-8859-")) {
        const QByteArray macRoman = QByteArrayLiteral("MACINTOSH");
        if (plausibility(decode(bytes, macRoman)) > plausibility(decode(bytes, answer)))
            return macRoman;
    }
    return answer;
}

QString decode(const QByteArray &bytes, const QByteArray &encoding, bool *valid)
{
    if (const auto known = QStringConverter::encodingForName(encoding.constData())) {
        QStringDecoder decoder(*known, QStringConverter::Flag::Stateless);
        QString text = decoder.decode(bytes);
        if (valid)
            *valid = !decoder.hasError();
        return text.isNull() ? QStringLiteral("") : text;
    }
    if (const auto text = decodeWithIconv(bytes, encoding, valid))
        return text->isNull() ? QStringLiteral("") : *text;
    if (valid)
        *valid = false;
    return QString();
}

} // namespace TextEncoding
