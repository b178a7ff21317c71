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

double FrameRate::framesPerSecond() const
{
    if (fps > 0)
        return fps;
    return ntsc ? timebase * 1000.0 / 1001.0 : double(timebase);
}

quint64 FrameRate::framesFromTimecode(const QString &timecode) const
{
    return QFTimecode::frameCountFromTimecode(timecode, timebase, ntsc, dropFrame, startFrame);
}

QString FrameRate::timecodeFromFrames(quint64 frames) const
{
    return QFTimecode::timecodeFromFrameCount(frames, timebase, ntsc, dropFrame, startFrame);
}
