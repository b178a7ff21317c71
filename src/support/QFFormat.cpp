#include "QFFormat.h"

#include <charconv>
#include <clocale>
#include <cstdio>
#ifdef Q_OS_MACOS
#include <xlocale.h>
#else
#include <locale.h>
#endif

namespace QFFormat {

qint64 Arg::asSigned() const
{
    switch (m_kind) {
    case Kind::Signed:
        return m_signed;
    case Kind::Unsigned:
        return qint64(m_unsigned);
    case Kind::Double:
        return qint64(m_double);
    case Kind::Pointer:
        return qint64(reinterpret_cast<quintptr>(m_pointer));
    case Kind::String:
        break;
    }
    return m_string.toLongLong();
}

quint64 Arg::asUnsigned() const
{
    return m_kind == Kind::Unsigned ? m_unsigned : quint64(asSigned());
}

double Arg::asDouble() const
{
    switch (m_kind) {
    case Kind::Double:
        return m_double;
    case Kind::Signed:
        return double(m_signed);
    case Kind::Unsigned:
        return double(m_unsigned);
    case Kind::String:
        return m_string.toDouble();
    case Kind::Pointer:
        break;
    }
    return 0.0;
}

QString Arg::asString() const
{
    switch (m_kind) {
    case Kind::String:
        return m_string.isNull() ? QStringLiteral("(null)") : m_string;
    case Kind::Signed:
        return QString::number(m_signed);
    case Kind::Unsigned:
        return QString::number(m_unsigned);
    case Kind::Double:
        return QString::number(m_double);
    case Kind::Pointer:
        return QString::asprintf("%p", m_pointer);
    }
    return QString();
}

namespace {

bool isFlag(QChar c)
{
    return c == u'-' || c == u'+' || c == u' ' || c == u'#' || c == u'0';
}

bool isDigit(QChar c)
{
    return c >= u'0' && c <= u'9';
}

bool isLengthModifier(QChar c)
{
    return c == u'h' || c == u'l' || c == u'q' || c == u'L' || c == u'z' || c == u't' || c == u'j';
}

// The directive is rebuilt from checked flags, width and precision and a conversion
// chosen here to match the argument's type, so a non-literal format is safe.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
template<typename T> QString printOne(const QByteArray &directive, T value)
{
    return QString::asprintf(directive.constData(), value);
}

/// C's own printf for floating values: Qt's formatter rounds halves away from zero
/// (2.5 gives "3"), printf to even ("2"), and the formats were written for printf.
/// The C locale keeps the decimal point a point whatever the user's locale.
QString printDouble(const QByteArray &directive, double value)
{
    static const locale_t cLocale = newlocale(LC_ALL_MASK, "C", locale_t(nullptr));
    const locale_t previous = uselocale(cLocale);
    char buffer[128];
    const int length = std::snprintf(buffer, sizeof buffer, directive.constData(), value);
    QString text;
    if (length >= 0 && length < int(sizeof buffer)) {
        text = QString::fromLatin1(buffer, length);
    } else if (length > 0) {
        QByteArray large(length + 1, Qt::Uninitialized);
        std::snprintf(large.data(), size_t(large.size()), directive.constData(), value);
        text = QString::fromLatin1(large.constData(), length);
    }
    uselocale(previous);
    return text;
}
#pragma GCC diagnostic pop

/// Pads a text to a width like printf's %s does (right-aligned unless "-").
QString pad(const QString &text, const QString &flags, int width)
{
    if (text.size() >= width)
        return text;
    const QString fill(width - text.size(), u' ');
    return flags.contains(u'-') ? text + fill : fill + text;
}

} // namespace

QString formatList(QStringView format, std::initializer_list<Arg> args)
{
    QString out;
    out.reserve(format.size() + 16 * qsizetype(args.size()));
    auto next = args.begin();
    const qsizetype n = format.size();
    qsizetype i = 0;
    while (i < n) {
        const qsizetype percent = format.indexOf(u'%', i);
        if (percent < 0) {
            out += format.sliced(i);
            break;
        }
        out += format.sliced(i, percent - i);
        qsizetype j = percent + 1;
        if (j < n && format[j] == u'%') {
            out += u'%';
            i = j + 1;
            continue;
        }
        const qsizetype flagsStart = j;
        while (j < n && isFlag(format[j]))
            ++j;
        const QString flags = format.sliced(flagsStart, j - flagsStart).toString();
        int width = 0;
        while (j < n && isDigit(format[j]))
            width = qMin(width * 10 + (format[j++].unicode() - u'0'), 100000);
        int precision = -1;
        if (j < n && format[j] == u'.') {
            precision = 0;
            for (++j; j < n && isDigit(format[j]); ++j)
                precision = qMin(precision * 10 + (format[j].unicode() - u'0'), 100000);
        }
        while (j < n && isLengthModifier(format[j]))
            ++j;
        if (j >= n || next == args.end()) {
            // Unfinished directive or no argument left: keep the text as written.
            out += format.sliced(percent, qMin(j + 1, n) - percent);
            i = j + 1;
            continue;
        }
        const char16_t conversion = format[j].unicode();
        i = j + 1;
        // The common plain forms ("%@", "%li", "%u") skip printf, which log lines use by
        // the thousand.
        if (flags.isEmpty() && width == 0 && precision < 0) {
            if (conversion == u'@' || conversion == u's') {
                out += (next++)->asString();
                continue;
            }
            if (conversion == u'd' || conversion == u'i') {
                out += QString::number((next++)->asSigned());
                continue;
            }
            if (conversion == u'u') {
                out += QString::number((next++)->asUnsigned());
                continue;
            }
        }
        // "%0.0f" and the like: to_chars prints exactly what printf does in the C
        // locale, several times faster.
        if ((flags.isEmpty() || flags == u"0") && width == 0 && conversion == u'f') {
            char buffer[400];
            const auto [end, error] =
                std::to_chars(buffer, buffer + sizeof buffer, next->asDouble(),
                              std::chars_format::fixed, precision < 0 ? 6 : precision);
            if (error == std::errc()) {
                ++next;
                out += QLatin1StringView(buffer, end - buffer);
                continue;
            }
        }
        const QString directive = QStringLiteral("%") + flags +
                                  (width ? QString::number(width) : QString()) +
                                  (precision >= 0 ? u'.' + QString::number(precision) : QString());
        const QByteArray prefix = directive.toLatin1();
        switch (conversion) {
        case u'@':
        case u's': {
            QString text = (next++)->asString();
            if (conversion == u's' && precision >= 0)
                text.truncate(precision);
            out += pad(text, flags, width);
            break;
        }
        case u'C':
        case u'c':
            out += pad(QString(QChar(char16_t((next++)->asUnsigned()))), flags, width);
            break;
        case u'd':
        case u'i':
            out += printOne(prefix + "lld", qlonglong((next++)->asSigned()));
            break;
        case u'u':
        case u'x':
        case u'X':
        case u'o':
            out += printOne(prefix + "ll" + char(conversion), qulonglong((next++)->asUnsigned()));
            break;
        case u'f':
        case u'F':
        case u'e':
        case u'E':
        case u'g':
        case u'G':
            out += printDouble(prefix + char(conversion), (next++)->asDouble());
            break;
        case u'p':
            out += QString::asprintf("%p", (next++)->asPointer());
            break;
        default:
            out += format.sliced(percent, j + 1 - percent);
            break;
        }
    }
    return out;
}

} // namespace QFFormat
