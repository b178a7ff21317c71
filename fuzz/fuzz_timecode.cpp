// Any text as a timecode, a user entry or an elapsed time, at rates and flags taken
// from the first bytes. Printed timecodes read back to the same frame within a day.

#include "FuzzInput.h"
#include "time/QFTimecode.h"

#include <cstring>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size < 12)
        return 0;
    int timebase;
    std::memcpy(&timebase, data, sizeof timebase);
    quint64 startFrame;
    std::memcpy(&startFrame, data + 4, sizeof startFrame);
    const bool dropFrame = startFrame & 1;
    data += 12;
    size -= 12;
    const QString text = fuzzUtf8(data, size);

    const quint64 frames =
        QFTimecode::frameCountFromTimecode(text, timebase, dropFrame, dropFrame, startFrame);
    const QString printed =
        QFTimecode::timecodeFromFrameCount(frames, timebase, dropFrame, dropFrame, startFrame);
    FUZZ_CHECK(printed.size() >= 11);

    // Non-drop readings of small counts are exact inverses modulo one day.
    const int tb = timebase > 0 ? timebase % 1000 + 1 : 30;
    const quint64 count = frames % (quint64(tb) * 86400);
    const QString plain = QFTimecode::timecodeFromFrameCount(count, tb, false, false, 0);
    FUZZ_CHECK(QFTimecode::frameCountFromTimecode(plain, tb, false, false, 0) == count);

    QFTimecode::timecodeFromUserString(text, dropFrame, text.left(11));
    QFTimecode::frameCountFromElapsedTime(text, double(timebase) / 7.0);
    QFTimecode::elapsedTimeFromFrameCount(frames, double(timebase) / 3.0);
    QFTimecode::timecode(text, qint64(startFrame), timebase, false, dropFrame);
    QFTimecode::timecodeFromSeconds(double(frames) / 3.0, float(timebase) / 3.0f, dropFrame);
    QFTimecode::subtractTimecode(text, plain, timebase, false, dropFrame);
    QFTimecode::timecodeInRange(text, plain, printed);
    QFTimecode::addDroppedFrames(frames, double(timebase) / 11.0);
    QFTimecode::subtractDroppedFrames(frames, double(timebase));
    return 0;
}
