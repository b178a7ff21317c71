#include "QFTimecode.h"

#include "QFNumberReader.h"

#include <QDateTime>
#include <QStringList>

#include <array>
#include <cmath>

using QFNumberReader::toInt32;
using QFNumberReader::toInt64;
using QFNumberReader::toUInt64;

namespace {

int effectiveTimebase(int timebase)
{
    return timebase > 0 ? timebase : 30;
}

bool isFieldSeparator(QChar c)
{
    return c == u':' || c == u';';
}

/// Splits a trimmed timecode at every ":" and ";" into its first four fields without
/// allocating. False when there are fewer than four.
bool splitFields(QStringView text, std::array<QStringView, 4> &fields)
{
    text = text.trimmed();
    qsizetype start = 0;
    int found = 0;
    for (qsizetype i = 0; i < text.size() && found < 3; ++i) {
        if (isFieldSeparator(text[i])) {
            fields[found++] = text.sliced(start, i - start);
            start = i + 1;
        }
    }
    if (found < 3)
        return false;
    qsizetype end = start;
    while (end < text.size() && !isFieldSeparator(text[end]))
        ++end;
    fields[3] = text.sliced(start, end - start);
    return true;
}

/// Appends a value as printf's "%0.2li" does: at least two digits, sign first.
void appendField(char16_t *&out, qint64 value)
{
    quint64 magnitude = value < 0 ? 0 - quint64(value) : quint64(value);
    if (value < 0)
        *out++ = u'-';
    char16_t digits[20];
    int n = 0;
    do {
        digits[n++] = char16_t(u'0' + magnitude % 10);
        magnitude /= 10;
    } while (magnitude != 0);
    if (n < 2)
        digits[n++] = u'0';
    while (n > 0)
        *out++ = digits[--n];
}

/// Hours, minutes and seconds of the whole seconds, then frames, as a timecode.
QString formatTimecode(double n, double fps, bool dropFrame)
{
    const double x = n / fps;
    const quint64 wholeSeconds = toUInt64(std::floor(x));
    const qint64 frames = toInt64(std::floor(n - double(toInt32(x)) * fps));

    // Four fields of up to 20 characters each plus separators; one allocation.
    char16_t buffer[4 * 21 + 3];
    char16_t *out = buffer;
    appendField(out, qint64((wholeSeconds / 3600) % 24));
    *out++ = u':';
    appendField(out, qint64((wholeSeconds / 60) % 60));
    *out++ = u':';
    appendField(out, qint64(wholeSeconds % 60));
    *out++ = dropFrame ? u';' : u':';
    appendField(out, frames);
    return QString(reinterpret_cast<const QChar *>(buffer), out - buffer);
}

QString twoDigitPrefix(qint64 value)
{
    return value < 10 ? QStringLiteral("0") : QString();
}

} // namespace

quint64 QFTimecode::addDroppedFrames(quint64 count, double fps)
{
    const qint64 dropped = toInt64(std::round(fps * 0.06666666666666667));
    const qint64 block = toInt64(std::round(60.0 * fps * 10.0));
    // A rate with no ten-minute block would divide by zero; nothing is dropped then.
    if (block <= 0)
        return count;
    const quint64 blocks = count / quint64(block);
    const qint64 rest = qint64(count % quint64(block));
    const quint64 droppedPerBlock = quint64(9 * dropped);
    if (rest - dropped <= 0)
        return count + droppedPerBlock * blocks;
    const qint64 perMinute = toInt64(std::round(fps) * 60.0 - double(dropped));
    const qint64 minutes = perMinute > 0 ? (rest - dropped) / perMinute : 0;
    return toUInt64(double(count) + double(dropped * minutes) +
                    double(droppedPerBlock) * double(blocks));
}

quint64 QFTimecode::subtractDroppedFrames(quint64 count, double fps)
{
    const quint64 added = addDroppedFrames(count, fps) - count;
    return addDroppedFrames(added, fps) + count - 2 * added;
}

QString QFTimecode::timecodeFromFrameCount(quint64 count, int timebase, bool /*ntsc*/,
                                           bool dropFrame, quint64 startFrame)
{
    const double fps = effectiveTimebase(timebase);
    quint64 n = count + startFrame;
    if (dropFrame)
        n = addDroppedFrames(n, fps);
    return formatTimecode(double(n), fps, dropFrame);
}

quint64 QFTimecode::frameCountFromTimecode(const QString &timecode, int timebase, bool /*ntsc*/,
                                           bool dropFrame, quint64 startFrame)
{
    std::array<QStringView, 4> fields;
    if (!splitFields(timecode, fields))
        return 0;
    const quint64 h = quint64(QFNumberReader::leadingInteger(fields[0]));
    const quint64 m = quint64(QFNumberReader::leadingInteger(fields[1]));
    const quint64 s = quint64(QFNumberReader::leadingInteger(fields[2]));
    const quint64 f = quint64(QFNumberReader::leadingInteger(fields[3]));
    const int tb = effectiveTimebase(timebase);
    quint64 n = (s + m * 60 + h * 3600) * quint64(tb) + f;
    if (dropFrame)
        n = subtractDroppedFrames(n, tb);
    return n - startFrame;
}

QString QFTimecode::elapsedTimeFromFrameCount(quint64 count, double fps)
{
    return formatTimecode(double(count), fps > 0 ? fps : 30.0, false);
}

quint64 QFTimecode::frameCountFromElapsedTime(const QString &elapsedTime, double fps)
{
    const double rate = fps > 0 ? fps : 30.0;
    std::array<QStringView, 4> fields;
    if (!splitFields(elapsedTime, fields))
        return 0;
    const double h = QFNumberReader::leadingDouble(fields[0]);
    const double m = QFNumberReader::leadingDouble(fields[1]);
    const double s = QFNumberReader::leadingDouble(fields[2]);
    const quint64 frames = quint64(QFNumberReader::leadingInteger(fields[3]));
    quint64 n = toUInt64(std::round(h * rate * 60 * 60));
    n = toUInt64(std::trunc(double(n) + std::round(m * rate * 60)));
    n = toUInt64(std::trunc(double(n) + std::round(s * rate)));
    return n + frames;
}

QString QFTimecode::timecode(const QString &timecode, qint64 incrementBy, int timebase, bool ntsc,
                             bool dropFrame)
{
    const quint64 count =
        frameCountFromTimecode(timecode, timebase, ntsc, false, 0) + quint64(incrementBy);
    return timecodeFromFrameCount(count, timebase, ntsc, dropFrame, 0);
}

double QFTimecode::frameRateFromTimebase(int timebase, bool isNTSC)
{
    if (!isNTSC)
        return double(timebase);
    if (timebase == 24 || timebase == 30 || timebase == 60)
        return double(timebase) * 1000.0 / 1001.0;
    return 0.0;
}

QString QFTimecode::timecodeFromSeconds(double seconds, float fps, bool dropFrame)
{
    const double rate = fps;
    const quint64 frames = toUInt64(std::round(seconds * rate));
    const int timebase = toInt32(std::ceil(rate));
    const bool ntsc = std::floor(rate) != std::ceil(rate);
    return timecodeFromFrameCount(frames, timebase, ntsc, dropFrame, 0);
}

QString QFTimecode::timecodeFromUserString(const QString &userString, bool dropFrame,
                                           const QString &startTimecode)
{
    if (userString.size() == 11)
        return userString;

    // Trailing points or commas stand for the fields the user left out.
    struct Suffix
    {
        QLatin1StringView ending;
        QLatin1StringView replacement;
    };
    static const Suffix suffixes[] = {
        {QLatin1StringView("...."), QLatin1StringView("00000000")},
        {QLatin1StringView("..."), QLatin1StringView(".000000")},
        {QLatin1StringView(".."), QLatin1StringView(".0000")},
        {QLatin1StringView("."), QLatin1StringView(".00")},
        {QLatin1StringView(",,,,"), QLatin1StringView("00000000")},
        {QLatin1StringView(",,,"), QLatin1StringView(",000000")},
        {QLatin1StringView(",,"), QLatin1StringView(",0000")},
        {QLatin1StringView(","), QLatin1StringView(",00")},
    };
    QString text = userString;
    for (const Suffix &suffix : suffixes) {
        if (text.endsWith(suffix.ending)) {
            text.chop(suffix.ending.size());
            text += suffix.replacement;
        }
    }

    QString digits;
    for (const QStringView piece : QStringView(text).tokenize(u'.')) {
        for (const QStringView part : piece.tokenize(u',')) {
            if (part.size() == 1)
                digits += u'0';
            digits += part;
        }
    }
    digits.remove(u':');
    digits.remove(u';');
    if (digits.size() >= 9)
        digits = digits.right(8);

    QString result = digits;
    if (digits.size() >= 3) {
        // Regroup into pairs from the right; an odd leading character becomes "0X".
        QStringList groups;
        qsizetype end = digits.size();
        while (end >= 2) {
            groups.prepend(digits.mid(end - 2, 2));
            end -= 2;
        }
        if (end == 1)
            groups.prepend(QStringLiteral("0") + digits.at(0));
        result = groups.first();
        for (qsizetype i = 1; i < groups.size(); ++i) {
            const bool last = i == groups.size() - 1;
            result += (last && dropFrame) ? u';' : u':';
            result += groups.at(i);
        }
    }

    QString start = startTimecode;
    if (start.isEmpty())
        start = dropFrame ? QStringLiteral("00:00:00;00") : QStringLiteral("00:00:00:00");
    if (start.size() > result.size())
        return start.left(start.size() - result.size()) + result;
    return result;
}

QString QFTimecode::timeOfDayTimecode(int timebase, bool ntsc, bool dropFrame)
{
    const double rate = frameRateFromTimebase(timebase, ntsc);
    const QTime now = QTime::currentTime();
    const double hundredths = now.msec() / 10;
    const qint64 frames = toInt64(std::floor(hundredths / 100.0 * rate));
    auto field = [](qint64 value) -> QString {
        return twoDigitPrefix(value) + QString::number(value);
    };
    return field(now.hour()) + u':' + field(now.minute()) + u':' + field(now.second()) +
           (dropFrame ? u';' : u':') + field(frames);
}

QString QFTimecode::addTimecode(const QString &timecode, const QString &toTimecode, int timebase,
                                bool ntsc, bool dropFrame)
{
    const quint64 a = frameCountFromTimecode(timecode, timebase, ntsc, dropFrame, 0);
    const quint64 b = frameCountFromTimecode(toTimecode, timebase, ntsc, dropFrame, 0);
    return timecodeFromFrameCount(a + b, timebase, ntsc, dropFrame, 0);
}

QString QFTimecode::subtractTimecode(const QString &timecode, const QString &fromTimecode,
                                     int timebase, bool ntsc, bool dropFrame)
{
    const quint64 a = frameCountFromTimecode(timecode, timebase, ntsc, dropFrame, 0);
    const quint64 b = frameCountFromTimecode(fromTimecode, timebase, ntsc, dropFrame, 0);
    if (b < a)
        return QString();
    return timecodeFromFrameCount(b - a, timebase, ntsc, dropFrame, 0);
}

bool QFTimecode::timecodeInRange(const QString &timecode, const QString &start, const QString &end)
{
    if (timecode == start || timecode == end)
        return true;
    const quint64 value = frameCountFromTimecode(timecode, 24, false, false, 0);
    return frameCountFromTimecode(start, 24, false, false, 0) <= value &&
           value <= frameCountFromTimecode(end, 24, false, false, 0);
}

QString QFTimecode::sanitizeTimecodeForFilename(const QString &timecode)
{
    QString result = timecode;
    result.replace(u':', u'.');
    result.replace(u';', u'.');
    return result;
}

QString QFTimecode::formatHours(qint64 hours, qint64 mins, qint64 secs, qint64 frames,
                                bool dropFrame)
{
    auto field = [](qint64 value) -> QString {
        return twoDigitPrefix(value) + QString::number(quint64(value));
    };
    return field(hours) + u':' + field(mins) + u':' + field(secs) + (dropFrame ? u';' : u':') +
           field(frames);
}
