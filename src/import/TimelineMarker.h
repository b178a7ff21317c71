#pragma once

#include "import/QFFCP7MarkerListParser.h"
#include "time/FrameRate.h"

#include <QString>

/// The columns of a parsed marker record by their meaning.
struct MarkerRecord
{
    QString name;
    QString comment;
    QString start;    ///< timecode
    QString duration; ///< timecode
    QString color;    ///< colour name

    /// The marker columns of a parser record (which has at least seven fields).
    static MarkerRecord fromRecord(const QFMarkerRecord &record)
    {
        return {record[2], record[3], record[4], record[5], record[6]};
    }
};

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

    static TimelineMarker make(const MarkerRecord &record, const FrameRate &rate,
                               qint64 offsetFrames, bool stripWhitespace, Arithmetic arithmetic);
};
