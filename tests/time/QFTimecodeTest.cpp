#include "time/QFTimecode.h"

#include "QtPrinters.h"

#include <gtest/gtest.h>

#include <QRegularExpression>

#include <limits>

namespace {

constexpr quint64 maxCount = std::numeric_limits<quint64>::max();

TEST(FrameCountFromTimecode, Reads)
{
    // The NTSC flag changes nothing in the reading.
    const auto frames = [](const char *timecode, int timebase, bool dropFrame = false,
                           quint64 start = 0) {
        const QString text = QString::fromUtf8(timecode);
        const quint64 count =
            QFTimecode::frameCountFromTimecode(text, timebase, false, dropFrame, start);
        EXPECT_EQ(QFTimecode::frameCountFromTimecode(text, timebase, true, dropFrame, start), count)
            << timecode;
        return count;
    };
    // Plain non-drop readings.
    EXPECT_EQ(frames("01:00:00:00", 30), 108000u);
    EXPECT_EQ(frames("01:00:10:00", 25), 90250u);
    // The effective timebase: 0 and negative read as 30.
    EXPECT_EQ(frames("00:00:01:00", 0), 30u);
    // Three fields are unreadable; surrounding white space is not.
    EXPECT_EQ(frames("01:00:00", 30), 0u);
    EXPECT_EQ(frames(" \t01:00:00:00\r\n", 30), 108000u);
    // Either separator anywhere; fields past the fourth ignored; junk fields read as 0.
    EXPECT_EQ(frames("01;00;00;00", 30), 108000u);
    EXPECT_EQ(frames("00:00:01:02:99", 30), 32u);
    EXPECT_EQ(frames("aa:bb:01:xx", 30), 30u);
    // Drop frame (its minute boundaries are covered whole by the property tests): only
    // the flag decides, not the separator in the text.
    EXPECT_EQ(frames("00:01:00:02", 30, true), 1800u);
    EXPECT_EQ(frames("00:01:00;02", 30), 1802u);
    // The start frame is subtracted and wraps below zero.
    EXPECT_EQ(frames("01:00:10:00", 25, false, 90000), 250u);
    EXPECT_EQ(frames("00:00:00:05", 30, false, 10), maxCount - 4);
}

TEST(TimecodeFromFrameCount, PrintsHugeCountsToo)
{
    // The NTSC flag changes nothing in the printing.
    const auto print = [](quint64 count, int timebase, bool dropFrame = false, quint64 start = 0) {
        const QString text =
            QFTimecode::timecodeFromFrameCount(count, timebase, false, dropFrame, start);
        EXPECT_EQ(QFTimecode::timecodeFromFrameCount(count, timebase, true, dropFrame, start), text)
            << count;
        return text;
    };
    EXPECT_EQ(print(108000, 30), u"01:00:00:00");
    EXPECT_EQ(print(30 * 3600 * 25, 30), u"01:00:00:00"); // hours wrap at 24
    // Ten-minute blocks of 18000 frames: the display steps back once.
    EXPECT_EQ(print(17982, 30, true), u"00:10:00;02");
    EXPECT_EQ(print(18000, 30, true), u"00:10:00;18");
    EXPECT_EQ(print(107892, 30, true), u"01:00:00;00");

    // Huge counts print without failing.
    for (const quint64 count : {maxCount, maxCount - 1, quint64(1) << 63, quint64(1) << 40}) {
        for (const bool dropFrame : {false, true}) {
            const QString text = QFTimecode::timecodeFromFrameCount(count, 30, false, dropFrame, 7);
            EXPECT_GE(text.size(), 11) << count;
        }
    }
}

// The kit's other operations, which this application does not call: one row each for
// their contract.
TEST(OtherOperations, KeepTheirContract)
{
    using T = QFTimecode;
    const std::pair<QString, QString> cases[] = {
        {T::timecodeFromUserString(u"1.5"_s, false, QString()), u"00:00:01:05"_s},
        {T::timecodeFromUserString(u"5"_s, false, u"01:00:00:00"_s), u"01:00:00:05"_s},
        {QString::number(T::frameRateFromTimebase(30, true)), QString::number(30000.0 / 1001.0)},
        {T::timecodeFromSeconds(3600.0, 29.97f, true), u"01:00:00;00"_s},
        {T::addTimecode(u"00:00:10:00"_s, u"01:00:00:20"_s, 25, false, false), u"01:00:10:20"_s},
        {T::subtractTimecode(u"00:00:00:10"_s, u"00:00:01:00"_s, 30, false, false),
         u"00:00:00:20"_s},
        {T::timecode(u"00:01:00;02"_s, 0, 30, true, true), u"00:01:00;04"_s},
        {QString::number(T::timecodeInRange(u"00:00:00:29"_s, u"00:00:00:00"_s, u"00:00:01:00"_s)),
         u"0"_s},
        {T::elapsedTimeFromFrameCount(2997, 29.97), u"00:01:40:00"_s},
        {QString::number(T::frameCountFromElapsedTime(u"00:01:40:00"_s, 29.97)), u"2997"_s},
        {T::formatHours(10, 0, 59, 29, true), u"10:00:59;29"_s},
        {T::sanitizeTimecodeForFilename(u"01:00:00;00"_s), u"01.00.00.00"_s},
    };
    for (size_t row = 0; row < std::size(cases); ++row)
        EXPECT_EQ(cases[row].first, cases[row].second) << "row " << row;
    static const QRegularExpression dropShape(u"^([01]\\d|2[0-3]):[0-5]\\d:[0-5]\\d;([0-2]\\d)$"_s);
    EXPECT_TRUE(dropShape.match(T::timeOfDayTimecode(30, true, true)).hasMatch());
}

} // namespace
