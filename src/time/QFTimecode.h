#pragma once

#include <QString>
#include <QtGlobal>

/// Timecode strings and frame counts, drop frame and non drop frame.
///
/// Stateless; every member may be called from any thread. Frame counts are unsigned
/// and wrap as unsigned arithmetic does. The conversions use the whole-number
/// "effective timebase" (the timebase, or 30 when it is not positive) and ignore the
/// ntsc flag, so drop-frame numbering at 29.97 counts ten-minute blocks of 18000
/// frames; documents written by earlier versions depend on these exact numbers.
class QFTimecode
{
public:
    QFTimecode() = delete;

    /// "HH:MM:SS:FF" (or "HH:MM:SS;FF" with dropFrame) for count + startFrame.
    /// Hours wrap at 24.
    static QString timecodeFromFrameCount(quint64 count, int timebase, bool ntsc, bool dropFrame,
                                          quint64 startFrame);

    /// Frame count of a timecode, minus startFrame (wrapping). Either ":" or ";"
    /// separates fields; only dropFrame decides drop-frame reading. 0 when the text
    /// has fewer than four fields.
    static quint64 frameCountFromTimecode(const QString &timecode, int timebase, bool ntsc,
                                          bool dropFrame, quint64 startFrame);

    /// Elapsed time "HH:MM:SS:FF" at a possibly fractional rate (30 when not positive).
    static QString elapsedTimeFromFrameCount(quint64 count, double fps);

    /// Frame count of an elapsed time written at a possibly fractional rate.
    static quint64 frameCountFromElapsedTime(const QString &elapsedTime, double fps);

    /// The timecode moved by increment frames. The input is always read as non drop
    /// frame; only the output honours dropFrame.
    static QString timecode(const QString &timecode, qint64 incrementBy, int timebase, bool ntsc,
                            bool dropFrame);

    /// Frames per second: the timebase, or timebase * 1000 / 1001 with ntsc for 24,
    /// 30 and 60 (0.0 for any other timebase with ntsc).
    static double frameRateFromTimebase(int timebase, bool isNTSC);

    /// Timecode of a time in seconds at a (possibly fractional) rate.
    static QString timecodeFromSeconds(double seconds, float fps, bool dropFrame);

    /// Expands what a user typed ("1...", "1.5", "12345") into a full timecode,
    /// taking missing leading fields from startTimecode (00:00:00:00 when empty).
    static QString timecodeFromUserString(const QString &userString, bool dropFrame,
                                          const QString &startTimecode);

    /// The wall-clock time of day as a timecode at the given timebase.
    static QString timeOfDayTimecode(int timebase, bool ntsc, bool dropFrame);

    static QString addTimecode(const QString &timecode, const QString &toTimecode, int timebase,
                               bool ntsc, bool dropFrame);

    /// fromTimecode minus timecode; a null string when that would be negative.
    static QString subtractTimecode(const QString &timecode, const QString &fromTimecode,
                                    int timebase, bool ntsc, bool dropFrame);

    /// True when the text equals start or end, or lies between them read at 24 fps.
    static bool timecodeInRange(const QString &timecode, const QString &start, const QString &end);

    /// Real frame count to drop-frame display number.
    static quint64 addDroppedFrames(quint64 count, double fps);

    /// Drop-frame display number back to a real frame count (a one-step correction).
    static quint64 subtractDroppedFrames(quint64 count, double fps);

    /// "01:00:00;00" becomes "01.00.00.00".
    static QString sanitizeTimecodeForFilename(const QString &timecode);

    /// Joins four fields; values below 10 get a leading "0"; printed as unsigned.
    static QString formatHours(qint64 hours, qint64 mins, qint64 secs, qint64 frames,
                               bool dropFrame);
};
