#include "QFNumberReader.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <string>

namespace QFNumberReader {

namespace {

bool isDigit(QChar c)
{
    return c.unicode() >= u'0' && c.unicode() <= u'9';
}

qsizetype skipSpace(QStringView text, qsizetype i)
{
    while (i < text.size() && text[i].isSpace())
        ++i;
    return i;
}

} // namespace

qint64 leadingInteger(QStringView text)
{
    qsizetype i = skipSpace(text, 0);
    bool negative = false;
    if (i < text.size() && (text[i] == u'+' || text[i] == u'-')) {
        negative = text[i] == u'-';
        ++i;
    }
    // Accumulate as a negative number so that the lowest value fits exactly.
    constexpr qint64 lowest = std::numeric_limits<qint64>::min();
    qint64 value = 0;
    bool saturated = false;
    for (; i < text.size() && isDigit(text[i]); ++i) {
        const int digit = text[i].unicode() - u'0';
        if (value < (lowest + digit) / 10) {
            saturated = true;
            break;
        }
        value = value * 10 - digit;
    }
    if (negative)
        return saturated ? lowest : value;
    if (saturated || value == lowest)
        return std::numeric_limits<qint64>::max();
    return -value;
}

double leadingDouble(QStringView text)
{
    qsizetype i = skipSpace(text, 0);
    bool negative = false;
    if (i < text.size() && (text[i] == u'+' || text[i] == u'-')) {
        negative = text[i] == u'-';
        ++i;
    }
    std::string ascii;
    qsizetype digits = 0;
    // Order of magnitude, to tell overflow from underflow when the value is out of range.
    long long magnitude = 0;
    bool seenNonZero = false;
    for (; i < text.size() && isDigit(text[i]); ++i, ++digits) {
        ascii += char(text[i].unicode());
        seenNonZero = seenNonZero || text[i] != u'0';
        if (seenNonZero)
            ++magnitude;
    }
    if (i < text.size() && text[i] == u'.') {
        ascii += '.';
        for (++i; i < text.size() && isDigit(text[i]); ++i, ++digits) {
            ascii += char(text[i].unicode());
            if (!seenNonZero && text[i] == u'0')
                --magnitude;
            seenNonZero = seenNonZero || text[i] != u'0';
        }
    }
    if (digits == 0)
        return 0.0;
    if (i + 1 < text.size() && (text[i] == u'e' || text[i] == u'E')) {
        qsizetype j = i + 1;
        std::string exponent = "e";
        if (text[j] == u'+' || text[j] == u'-')
            exponent += char(text[j++].unicode());
        if (j < text.size() && isDigit(text[j])) {
            for (; j < text.size() && isDigit(text[j]); ++j)
                exponent += char(text[j].unicode());
            ascii += exponent;
            // Only the sign of the magnitude matters once out of range: keep the sum
            // far from overflow whatever the exponent's length.
            constexpr long long limit = 1'000'000'000'000'000LL;
            long long e = 0;
            const char *digitsStart = exponent.data() + 1;
            const auto parsed = std::from_chars(digitsStart, exponent.data() + exponent.size(), e);
            if (parsed.ec == std::errc::result_out_of_range)
                e = *digitsStart == '-' ? -limit : limit;
            magnitude += std::clamp(e, -limit, limit);
        }
    }
    if (!seenNonZero)
        return negative ? -0.0 : 0.0;
    double value = 0.0;
    const auto result = std::from_chars(ascii.data(), ascii.data() + ascii.size(), value);
    if (result.ec == std::errc::result_out_of_range)
        value = magnitude > 0 ? std::numeric_limits<double>::infinity() : 0.0;
    return negative ? -value : value;
}

quint64 toUInt64(double value)
{
    if (std::isnan(value))
        return 0;
    constexpr double two64 = 18446744073709551616.0;
    constexpr double two63 = 9223372036854775808.0;
    if (value >= two64)
        return std::numeric_limits<quint64>::max();
    if (value >= two63)
        return quint64(value);
    if (value <= -two63)
        return quint64(1) << 63;
    return quint64(qint64(value));
}

qint64 toInt64(double value)
{
    constexpr double two63 = 9223372036854775808.0;
    if (std::isnan(value) || value >= two63 || value < -two63)
        return std::numeric_limits<qint64>::min();
    return qint64(value);
}

qint32 toInt32(double value)
{
    if (std::isnan(value) || value >= 2147483648.0 || value <= -2147483649.0)
        return std::numeric_limits<qint32>::min();
    return qint32(value);
}

} // namespace QFNumberReader
