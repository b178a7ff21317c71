#pragma once

#include <QString>
#include <QtGlobal>

/// A timeline's frame rate as the timecode arithmetic counts with it: the whole-number
/// timebase (30 for 29.97 material) with its NTSC flag, the drop-frame numbering, the
/// exact rate, and the frame number the timeline's timecode starts at.
struct FrameRate
{
    int timebase = 0;
    bool ntsc = false;
    bool dropFrame = false;
    /// Frames per second, fractional for NTSC material; 0 when unknown.
    double fps = 0;
    /// Subtracted from every timecode read, so that the timeline's first frame is 0.
    quint64 startFrame = 0;
    /// Where the timeline's first frame lies in the frames that timecodes give: what a
    /// time counted from the timeline's start is added to.
    quint64 timelineStart = 0;

    /// The frames per second, or from the timebase when they are not known.
    double framesPerSecond() const;
    /// The timebase the timecodes are read with: 30 when the timeline gives none.
    int countingTimebase() const { return timebase > 0 ? timebase : 30; }

    /// The rate of an FCPX frame duration ("1001/30000s"): fps its reciprocal,
    /// timebase fps rounded up (the lowest int when fps is not finite), NTSC when the
    /// timebase exceeds fps.
    static FrameRate fromFrameDuration(const QString &frameDuration, bool dropFrame);

    /// The frame count of a timecode at this rate, from startFrame (wrapping below it).
    quint64 framesFromTimecode(const QString &timecode) const;
    /// The timecode of a frame count at this rate, startFrame added.
    QString timecodeFromFrames(quint64 frames) const;
};
