#pragma once

#include "import/MarkerList.h"
#include "time/FrameRate.h"
#include "xml/XmlNode.h"

#include <QString>

/// One marker made ready for a timeline, the step both import procedures take for
/// each record: name and comment escaped for XML, the timecodes turned into frames at
/// the timeline's rate, the offset applied, and every value logged.
struct TimelineMarker
{
    /// How the positions are counted. Final Cut Pro 7 counts whole frames, wrapping as
    /// unsigned and read back signed; FCPX counts in real numbers, as its clip times are.
    enum class Arithmetic
    {
        WholeFrames,
        RealFrames
    };

    MarkerRecord record;
    QString name;    ///< escaped
    QString comment; ///< escaped
    quint64 durationFrames = 0;
    /// Whole frames: the first frame, never below 0, and the frame after the last, -1
    /// for a marker without duration (or one that would end below 0).
    qint64 in = 0;
    qint64 out = -1;
    /// Real frames: the first frame, never below 0.
    double position = 0;

    /// Why the record's start or duration is no timecode that can exist at the rate
    /// (four numbers, hours below 24, minutes and seconds below 60, frames below the
    /// timebase, none of the numbers drop frame skips); a null string when both can.
    static QString timecodeProblem(const MarkerRecord &record, const FrameRate &rate);
    /// Whether the record's timecodes can exist at the rate; when not, its lines are
    /// logged and skipped in the report with the reason.
    static bool timecodesExist(const MarkerRecord &record, const FrameRate &rate,
                               ImportReport &report);

    /// Removes every marker inside a timeline element, those on its clips too.
    static void clearAll(const XmlNode &timeline);

    static TimelineMarker make(const MarkerRecord &record, const FrameRate &rate,
                               qint64 offsetFrames, bool stripWhitespace, Arithmetic arithmetic);
};
