#include "TextEncoding.h"

#include <QStringDecoder>

#include <uchardet.h>

#include <iconv.h>

#include <QList>

#include <array>
#include <cerrno>
#include <limits>
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

/// The single-byte encodings that editors' tools write, in the order a tie is settled
/// in: the platform's own legacy encoding first.
const QList<QByteArray> &singleByteCandidates()
{
#ifdef Q_OS_MACOS
    static const QList<QByteArray> candidates{"MACINTOSH",   "WINDOWS-1252", "ISO-8859-15",
                                              "ISO-8859-1",  "WINDOWS-1250", "MAC-CENTRALEUROPE",
                                              "WINDOWS-1251"};
#else
    static const QList<QByteArray> candidates{"WINDOWS-1252", "MACINTOSH",    "ISO-8859-15",
                                              "ISO-8859-1",   "WINDOWS-1250", "MAC-CENTRALEUROPE",
                                              "WINDOWS-1251"};
#endif
    return candidates;
}

bool isWordLetter(QChar c)
{
    return c.isLetter() || c.isMark();
}

/// How much a decoded text reads like words: each character past ASCII is judged by its
/// neighbours. A letter that continues its word in the same script and case counts for
/// the reading; a capital after a small letter, a letter of another script inside a
/// word, punctuation or a sign between letters, a control character or one the
/// encoding lacks count against it. A short list has a few such characters, and each
/// wrong reading of them turns some into one of these.
int plausibility(const QString &text)
{
    int score = 0;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text.at(i);
        if (c.unicode() < 0x80)
            continue;
        const QChar before = i > 0 ? text.at(i - 1) : QChar(u' ');
        const QChar after = i + 1 < text.size() ? text.at(i + 1) : QChar(u' ');
        const bool letterBefore = isWordLetter(before);
        const bool letterAfter = isWordLetter(after);
        if (c.category() == QChar::Other_Control || c == QChar::ReplacementCharacter ||
            c.category() == QChar::Other_NotAssigned) {
            score -= 5;
        } else if (isWordLetter(c)) {
            const auto script = [](QChar l) {
                return l.unicode() < 0x80 ? QChar::Script_Latin : l.script();
            };
            if ((letterBefore && script(before) != script(c)) ||
                (letterAfter && script(after) != script(c)))
                score -= 3; // Latin and Cyrillic mixed inside a word
            else if (c.isUpper() && letterBefore && before.isLower())
                score -= 3;
            else // a word all of Cyrillic letters is Cyrillic; all of accents, rarely Latin
                score += c.script() == QChar::Script_Cyrillic ? 3 : 2;
        } else if (letterBefore && letterAfter) {
            score -= 3; // "Monta–a"
        } else if (c == QChar(0x00A4) || c.category() == QChar::Symbol_Modifier) {
            score -= 2; // "¤", "ˇ": hardly ever meant
        } else if (letterBefore || letterAfter) {
            // Signs stand apart from words; closing and opening quotes may touch them.
            const bool quote = c.category() == QChar::Punctuation_InitialQuote ||
                               c.category() == QChar::Punctuation_FinalQuote ||
                               c.category() == QChar::Punctuation_Other;
            score += quote ? 1 : -2;
        } else {
            score += c.category() == QChar::Symbol_Currency ? 2 : 1; // "25 €"
        }
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

std::optional<QByteArray> detect(const QByteArray &bytes, QString *why)
{
    const auto because = [why](const QString &reason) {
        if (why)
            *why = reason;
    };
    if (const auto fromBom = QStringConverter::encodingForData(bytes)) {
        because(QStringLiteral("byte order mark"));
        return QByteArray(QStringConverter::nameForEncoding(*fromBom)).toUpper();
    }
    // Stateless, so that a sequence cut off at the end counts as an error.
    QStringDecoder strictUtf8(QStringConverter::Utf8, QStringConverter::Flag::Stateless);
    const QString text = strictUtf8.decode(bytes);
    if (!strictUtf8.hasError()) {
        because(QStringLiteral("valid UTF-8"));
        return utf8;
    }
    if (bytes.contains('\0')) {
        // Text in UTF-16 without a mark: ASCII characters leave their zero byte on the
        // side of the byte order.
        qsizetype evenZeros = 0;
        qsizetype oddZeros = 0;
        for (qsizetype i = 0; i < bytes.size(); ++i)
            if (bytes[i] == '\0')
                ++(i % 2 == 0 ? evenZeros : oddZeros);
        if (bytes.size() % 2 == 0 && evenZeros != oddZeros) {
            because(QStringLiteral("zero bytes of UTF-16 without a byte order mark"));
            return evenZeros > oddZeros ? QByteArrayLiteral("UTF-16BE") : utf16LE;
        }
        return std::nullopt;
    }
    // The detector is one voice among the readings: a short list gives it too little to
    // go on, and it knows no MacRoman.
    const QByteArray answer = detectorAnswer(bytes);
    QByteArray best;
    int bestScore = std::numeric_limits<int>::min();
    bool tie = false;
    for (const QByteArray &candidate : singleByteCandidates()) {
        const int score = plausibility(decode(bytes, candidate)) + (candidate == answer ? 1 : 0);
        if (score > bestScore) {
            best = candidate;
            bestScore = score;
            tie = false;
        } else if (score == bestScore) {
            tie = true;
        }
    }
    because(tie ? QStringLiteral("the likeliest reading, %1 as the platform's own when "
                                 "others read as well")
                      .arg(QString::fromLatin1(best))
                : QStringLiteral("the likeliest reading of its accented characters"));
    return best;
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

namespace {

const std::pair<const char *, const char *> known[] = {
    {"UTF-8", "UTF-8"},
    {"UTF-16LE", "UTF-16"},
    {"UTF-16BE", "UTF-16 big-endian"},
    {"WINDOWS-1252", "Windows-1252"},
    {"MACINTOSH", "MacRoman"},
    {"ISO-8859-15", "ISO-8859-15"},
    {"ISO-8859-1", "ISO-8859-1"},
    {"WINDOWS-1250", "Windows-1250"},
    {"MAC-CENTRALEUROPE", "Mac Central European"},
    {"WINDOWS-1251", "Windows-1251"},
};

} // namespace

QList<QByteArray> choices()
{
    QList<QByteArray> names;
    for (const auto &[name, shown] : known)
        names << QByteArray(name);
    return names;
}

QString displayName(const QByteArray &encoding)
{
    for (const auto &[name, shown] : known)
        if (encoding.compare(name, Qt::CaseInsensitive) == 0)
            return QString::fromLatin1(shown);
    return QString::fromLatin1(encoding);
}

} // namespace TextEncoding
