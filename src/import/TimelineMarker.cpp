#include "import/TimelineMarker.h"

#include "import/UserTextEscaping.h"
#include "support/QFLog.h"
#include "time/QFNumberReader.h"
#include "xml/QFXMLParser.h"

#include <algorithm>
#include <cmath>

namespace {

QString problemWith(const char *what, const QString &timecode, const FrameRate &rate)
{
    const auto problem = [&](const QString &why) {
        return QStringLiteral("%1 timecode \"%2\" %3").arg(QLatin1StringView(what), timecode, why);
    };
    // ";" or ":" anywhere, as the timecode reader takes them.
    int values[4] = {};
    qsizetype count = 0;
    const QStringView text(timecode);
    for (qsizetype from = 0; from <= text.size();) {
        qsizetype to = from;
        while (to < text.size() && text[to] != u':' && text[to] != u';')
            ++to;
        const QStringView part = text.sliced(from, to - from);
        bool number = count < 4 && !part.isEmpty() && part.size() <= 6;
        for (const QChar c : part)
            number = number && c >= u'0' && c <= u'9';
        if (!number)
            return problem(QStringLiteral("is not HH:MM:SS:FF"));
        values[count++] = part.toInt();
        from = to + 1;
    }
    if (count != 4)
        return problem(QStringLiteral("is not HH:MM:SS:FF"));
    const auto [hours, minutes, seconds, frames] = values;
    if (hours >= 24)
        return problem(QStringLiteral("has hours beyond 23"));
    if (minutes >= 60 || seconds >= 60)
        return problem(QStringLiteral("has minutes or seconds beyond 59"));
    // Checked at the rate the timecode is read with, so that no frame beyond it is
    // carried into the next second.
    if (frames >= rate.countingTimebase())
        return problem(QStringLiteral("has frame %1, but a second has %2 frames here")
                           .arg(frames)
                           .arg(rate.countingTimebase()));
    const int skipped = rate.timebase >= 60 ? 4 : 2;
    if (rate.dropFrame && seconds == 0 && minutes % 10 != 0 && frames < skipped)
        return problem(QStringLiteral("does not exist in drop-frame timecode"));
    return QString();
}

} // namespace

QString TimelineMarker::timecodeProblem(const MarkerRecord &record, const FrameRate &rate)
{
    QString problem = record.startSeconds ? QString() : problemWith("start", record.start, rate);
    if (problem.isNull() && !record.durationFrames && !record.durationSeconds)
        problem = problemWith("duration", record.duration, rate);
    return problem;
}

bool TimelineMarker::timecodesExist(const MarkerRecord &record, const FrameRate &rate,
                                    ImportReport &report)
{
    const QString problem = timecodeProblem(record, rate);
    if (problem.isNull())
        return true;
    QFLog::appendLog(u"Line %li skipped: %@", qint64(record.lines.value(0)), problem);
    report.skip(record.lines, problem);
    return false;
}

void TimelineMarker::clearAll(const XmlNode &timeline)
{
    for (XmlNode marker : QFXMLParser::nodesForQuery(QStringLiteral(".//marker"), timeline))
        marker.detach();
}

TimelineMarker TimelineMarker::make(const MarkerRecord &record, const FrameRate &rate,
                                    qint64 offsetFrames, bool stripWhitespace,
                                    Arithmetic arithmetic)
{
    TimelineMarker marker;
    marker.record = record;
    marker.name = UserTextEscaping::escapeUserInputForXML(record.name, stripWhitespace);
    marker.comment = UserTextEscaping::escapeUserInputForXML(record.comment, stripWhitespace);
    // Seconds from the timeline's start go to the nearest frame at its rate.
    const auto framesOf = [&rate](double seconds) {
        return quint64(std::max<qint64>(0, std::llround(seconds * rate.framesPerSecond())));
    };
    const quint64 startFrames = record.startSeconds
                                    ? rate.timelineStart + framesOf(*record.startSeconds)
                                    : rate.framesFromTimecode(record.start);
    FrameRate durationRate = rate;
    durationRate.startFrame = 0;
    marker.durationFrames = record.durationSeconds ? framesOf(*record.durationSeconds)
                            : record.durationFrames
                                ? *record.durationFrames
                                : durationRate.framesFromTimecode(record.duration);

    QFLog::appendLog(u"Marker name: %@", marker.name);
    QFLog::appendLog(u"Comment: %@", marker.comment);
    QFLog::appendLog(u"Start timecode: %@", record.start);
    QFLog::appendLog(u"Duration timecode: %@", record.duration);
    QFLog::appendLog(u"Color name: %@", record.color);
    if (arithmetic == Arithmetic::WholeFrames) {
        // A marker before the timeline's start wraps and reads negative here.
        marker.in = std::max<qint64>(qint64(startFrames + quint64(offsetFrames)), 0);
        if (marker.durationFrames != 0) {
            const qint64 end = qint64(startFrames + marker.durationFrames);
            marker.out = end < 0 ? end : qint64(quint64(end) + quint64(offsetFrames));
        }
        if (marker.out < 0)
            marker.out = -1;
        QFLog::appendLog(u"Marker start pos: %li", marker.in);
        QFLog::appendLog(u"Marker duration: %li", marker.durationFrames);
        QFLog::appendLog(u"Marker out pos: %li", marker.out);
    } else {
        const double start = double(startFrames);
        const double duration = double(marker.durationFrames);
        marker.position = std::max(0.0, start + double(offsetFrames));
        const double out = duration == 0 ? -1.0 : start + duration + double(offsetFrames);
        QFLog::appendLog(u"Marker start pos: %0.0f", marker.position);
        QFLog::appendLog(u"Marker duration: %li", QFNumberReader::toInt64(duration));
        QFLog::appendLog(u"Marker out pos: %li", QFNumberReader::toInt64(out));
    }
    return marker;
}
