#include "QFFCPXMLParser.h"

#include "QFNumberReader.h"

#include <cmath>

namespace {

/// A time string without its trailing "s", cut at every "/". Only the first two parts
/// are kept; count tells how many there were.
struct TimeParts
{
    QStringView first;
    QStringView second;
    qsizetype count = 0;
};

TimeParts splitTimeString(const QString &timeString)
{
    QStringView text(timeString);
    if (text.endsWith(u's'))
        text.chop(1);
    TimeParts parts;
    for (const QStringView part : text.tokenize(u'/')) {
        if (parts.count == 0)
            parts.first = part;
        else if (parts.count == 1)
            parts.second = part;
        ++parts.count;
    }
    return parts;
}

} // namespace

double QFFCPXMLParser::secondsFromTimeString(const QString &timeString)
{
    if (timeString.isNull())
        return 0.0;
    const TimeParts parts = splitTimeString(timeString);
    if (parts.count == 1)
        return QFNumberReader::leadingDouble(parts.first);
    if (parts.count == 2)
        return QFNumberReader::leadingDouble(parts.first) /
               QFNumberReader::leadingDouble(parts.second);
    return 0.0;
}

quint64 QFFCPXMLParser::framesFromTimeString(const QString &timeString, quint64 frameDuration)
{
    if (timeString.isNull())
        return 0;
    const TimeParts parts = splitTimeString(timeString);
    const double numerator = QFNumberReader::leadingDouble(parts.first);
    return QFNumberReader::toUInt64(std::trunc(numerator / double(frameDuration)));
}

double QFFCPXMLParser::fpsFromFrameDuration(const QString &frameDuration)
{
    if (frameDuration.isNull())
        return 0.0;
    const TimeParts parts = splitTimeString(frameDuration);
    if (parts.count == 2)
        return QFNumberReader::leadingDouble(parts.second) /
               QFNumberReader::leadingDouble(parts.first);
    if (parts.count == 1)
        return QFNumberReader::leadingDouble(parts.first);
    return 0.0;
}

qint64 QFFCPXMLParser::multiplierFromFrameDuration(const QString &frameDuration)
{
    if (frameDuration.isEmpty())
        return 0;
    return QFNumberReader::leadingInteger(splitTimeString(frameDuration).first);
}
