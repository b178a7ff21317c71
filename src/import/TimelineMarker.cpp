#include "import/TimelineMarker.h"

#include "diagnostics/QFLog.h"
#include "import/UserTextEscaping.h"
#include "time/QFNumberReader.h"

#include <algorithm>

TimelineMarker TimelineMarker::make(const MarkerRecord &record, const FrameRate &rate,
                                    qint64 offsetFrames, bool stripWhitespace,
                                    Arithmetic arithmetic)
{
    TimelineMarker marker;
    marker.record = record;
    marker.name = UserTextEscaping::escapeUserInputForXML(record.name, stripWhitespace);
    marker.comment = UserTextEscaping::escapeUserInputForXML(record.comment, stripWhitespace);
    const quint64 startFrames = rate.framesFromTimecode(record.start);
    FrameRate durationRate = rate;
    durationRate.startFrame = 0;
    marker.durationFrames = durationRate.framesFromTimecode(record.duration);

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
