#include "time/FrameRate.h"

#include "time/QFFCPXMLParser.h"
#include "time/QFNumberReader.h"
#include "time/QFTimecode.h"

#include <cmath>

FrameRate FrameRate::fromFrameDuration(const QString &frameDuration, bool dropFrame)
{
    FrameRate rate;
    rate.fps = QFFCPXMLParser::fpsFromFrameDuration(frameDuration);
    rate.timebase = QFNumberReader::toInt32(std::ceil(rate.fps));
    rate.ntsc = rate.timebase > rate.fps;
    rate.dropFrame = dropFrame;
    return rate;
}

quint64 FrameRate::framesFromTimecode(const QString &timecode) const
{
    return QFTimecode::frameCountFromTimecode(timecode, timebase, ntsc, dropFrame, startFrame);
}

QString FrameRate::timecodeFromFrames(quint64 frames) const
{
    return QFTimecode::timecodeFromFrameCount(frames, timebase, ntsc, dropFrame, startFrame);
}
