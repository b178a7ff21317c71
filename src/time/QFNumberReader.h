#pragma once

#include <QStringView>
#include <QtGlobal>

/// Reading numbers from the front of a text, and converting doubles to whole
/// numbers without undefined behaviour. Shared by the timecode and FCPX time readers.
namespace QFNumberReader {

/// The leading whole number of the text: leading white space skipped, an optional
/// sign, then decimal digits; 0 when there are none. Saturates at the 64-bit limits.
qint64 leadingInteger(QStringView text);

/// The leading decimal number of the text, read like strtod in the C locale:
/// blanks, optional sign, digits, optional point and digits, optional exponent.
/// Reading stops at the first other character; 0 when no digit was read.
/// Infinity and not-a-number spellings are not numbers here.
double leadingDouble(QStringView text);

/// Truncates toward zero into an unsigned 64-bit count. Negative values wrap as
/// unsigned arithmetic does; values past the range saturate; not-a-number is 0.
quint64 toUInt64(double value);

/// Truncates toward zero; out-of-range values and not-a-number become the lowest
/// value, as the x86 conversion instruction does.
qint64 toInt64(double value);
qint32 toInt32(double value);

} // namespace QFNumberReader
