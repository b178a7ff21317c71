#include "RationalTime.h"

#include <limits>
#include <numeric>
#include <utility>

namespace {

__extension__ typedef __int128 Wide;

std::optional<RationalTime> reduced(Wide numerator, Wide denominator)
{
    if (denominator == 0)
        return std::nullopt;
    if (denominator < 0) {
        numerator = -numerator;
        denominator = -denominator;
    }
    Wide a = numerator < 0 ? -numerator : numerator;
    Wide b = denominator;
    // Times of documents fit in 64 bits, where division is an instruction rather than a
    // library call.
    constexpr Wide narrow = std::numeric_limits<quint64>::max();
    if (a <= narrow && b <= narrow) {
        a = std::gcd(quint64(a), quint64(b));
    } else {
        while (b != 0) {
            const Wide r = a % b;
            a = b;
            b = r;
        }
    }
    if (a > 1) {
        numerator /= a;
        denominator /= a;
    }
    constexpr Wide limit = std::numeric_limits<qint64>::max();
    if (numerator > limit || numerator < -limit || denominator > limit)
        return std::nullopt;
    return RationalTime{qint64(numerator), qint64(denominator)};
}

/// A decimal number with an optional sign and fraction, as numerator over a power of ten.
std::optional<std::pair<Wide, Wide>> decimal(QStringView text)
{
    Wide numerator = 0;
    Wide denominator = 1;
    bool negative = false;
    bool digits = false;
    bool fraction = false;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text[i];
        if (i == 0 && (c == u'-' || c == u'+')) {
            negative = c == u'-';
        } else if (c == u'.' && !fraction) {
            fraction = true;
        } else if (c >= u'0' && c <= u'9') {
            digits = true;
            numerator = numerator * 10 + (c.unicode() - u'0');
            if (fraction)
                denominator *= 10;
            if (numerator > Wide(std::numeric_limits<qint64>::max()) * 1000 ||
                denominator > Wide(std::numeric_limits<qint64>::max()))
                return std::nullopt;
        } else {
            return std::nullopt;
        }
    }
    if (!digits)
        return std::nullopt;
    return std::pair{negative ? -numerator : numerator, denominator};
}

} // namespace

std::optional<RationalTime> RationalTime::fromTimeString(const QString &timeString)
{
    if (timeString.isNull())
        return RationalTime{};
    QStringView text(timeString);
    if (!text.endsWith(u's'))
        return std::nullopt;
    text.chop(1);
    const qsizetype slash = text.indexOf(u'/');
    const auto top = decimal(slash < 0 ? text : text.first(slash));
    if (!top)
        return std::nullopt;
    if (slash < 0)
        return reduced(top->first, top->second);
    const auto bottom = decimal(text.sliced(slash + 1));
    if (!bottom)
        return std::nullopt;
    return reduced(top->first * bottom->second, top->second * bottom->first);
}

std::optional<RationalTime> RationalTime::frames(qint64 count, const RationalTime &frameDuration)
{
    return reduced(Wide(count) * frameDuration.numerator, frameDuration.denominator);
}

std::optional<RationalTime> RationalTime::plus(const RationalTime &other) const
{
    return reduced(Wide(numerator) * other.denominator + Wide(other.numerator) * denominator,
                   Wide(denominator) * other.denominator);
}

std::strong_ordering operator<=>(const RationalTime &a, const RationalTime &b)
{
    const Wide left = Wide(a.numerator) * b.denominator;
    const Wide right = Wide(b.numerator) * a.denominator;
    return left < right   ? std::strong_ordering::less
           : left > right ? std::strong_ordering::greater
                          : std::strong_ordering::equal;
}
