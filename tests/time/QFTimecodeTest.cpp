#include "time/QFTimecode.h"

#include "QtPrinters.h"

#include <gtest/gtest.h>

#include <QRegularExpression>

#include <limits>

namespace {

constexpr quint64 maxCount = std::numeric_limits<quint64>::max();

TEST(FrameCountFromTimecode, Reads)
{
    const struct
    {
        const char *timecode;
        int timebase;
        bool dropFrame;
        quint64 startFrame;
        quint64 expected;
    } cases[] = {
        // Plain non-drop readings.
        {"01:00:00:00", 30, false, 0, 108000},
        {"01:00:10:00", 25, false, 0, 90250},
        {"00:00:01:05", 24, false, 0, 29},
        // The effective timebase: 0 and negative read as 30.
        {"00:00:01:00", 0, false, 0, 30},
        {"00:00:01:00", -25, false, 0, 30},
        // Three fields are unreadable; surrounding white space is not.
        {"01:00:00", 30, false, 0, 0},
        {"", 30, false, 0, 0},
        {" \t01:00:00:00\r\n", 30, false, 0, 108000},
        // Either separator anywhere; fields past the fourth ignored; junk fields read as 0.
        {"01;00;00;00", 30, false, 0, 108000},
        {"00:00:01:02:99", 30, false, 0, 32},
        {"aa:bb:01:xx", 30, false, 0, 30},
        {"00:00:01:5x", 30, false, 0, 35},
        // Drop frame (its minute boundaries are covered whole by the property tests): only
        // the flag decides, not the separator in the text.
        {"00:01:00:02", 30, true, 0, 1800},
        {"00:01:00;02", 30, false, 0, 1802},
        // The start frame is subtracted and wraps below zero.
        {"01:00:10:00", 25, false, 90000, 250},
        {"00:00:00:05", 30, false, 10, maxCount - 4},
        {"00:59:59:00", 25, false, 90000, maxCount - 24}};
    for (const auto &c : cases) {
        for (const bool ntsc : {false, true}) {
            EXPECT_EQ(QFTimecode::frameCountFromTimecode(QString::fromUtf8(c.timecode), c.timebase,
                                                         ntsc, c.dropFrame, c.startFrame),
                      c.expected)
                << c.timecode << " at " << c.timebase << (ntsc ? " ntsc" : "")
                << (c.dropFrame ? " DF" : "");
        }
    }
}

TEST(TimecodeFromFrameCount, Prints)
{
    const struct
    {
        quint64 count;
        int timebase;
        bool dropFrame;
        quint64 startFrame;
        const char *expected;
    } cases[] = {{108000, 30, false, 0, "01:00:00:00"},
                 {0, 25, false, 0, "00:00:00:00"},
                 {30 * 3600 * 25, 30, false, 0, "01:00:00:00"}, // hours wrap at 24
                 {5, 30, false, 10, "00:00:00:15"},
                 {31, 0, false, 0, "00:00:01:01"},
                 {31, -1, false, 0, "00:00:01:01"},
                 // Ten-minute blocks of 18000 frames: the display steps back once.
                 {17982, 30, true, 0, "00:10:00;02"},
                 {17999, 30, true, 0, "00:10:00;19"},
                 {18000, 30, true, 0, "00:10:00;18"},
                 {107892, 30, true, 0, "01:00:00;00"}};
    for (const auto &c : cases) {
        for (const bool ntsc : {false, true}) {
            EXPECT_EQ(QFTimecode::timecodeFromFrameCount(c.count, c.timebase, ntsc, c.dropFrame,
                                                         c.startFrame),
                      QString::fromUtf8(c.expected))
                << c.count << " at " << c.timebase << (c.dropFrame ? " DF" : "");
        }
    }
}

TEST(TimecodeFromFrameCount, HugeCountsPrintWithoutFailing)
{
    for (const quint64 count : {maxCount, maxCount - 1, quint64(1) << 63, quint64(1) << 40}) {
        for (const bool dropFrame : {false, true}) {
            const QString text = QFTimecode::timecodeFromFrameCount(count, 30, false, dropFrame, 7);
            EXPECT_GE(text.size(), 11) << count;
        }
    }
}

TEST(TimecodeFromUserString, Expands)
{
    const struct
    {
        const char *typed;
        bool dropFrame;
        const char *start;
        const char *expected;
    } cases[] = {{"1...", false, nullptr, "01:00:00:00"},
                 {"1....", false, nullptr, "00:00:00:00"},
                 {"5", false, nullptr, "00:00:00:05"},
                 {"1.5", false, nullptr, "00:00:01:05"},
                 {"1,2,3,4", false, nullptr, "01:02:03:04"},
                 {"1:00:00:00", false, nullptr, "01:00:00:00"},
                 {"123456789", false, nullptr, "23:45:67:89"},
                 {"", false, nullptr, "00:00:00:00"},
                 {"", true, "", "00:00:00;00"},
                 {"1..", true, nullptr, "00:01:00;00"},
                 {"12345", true, nullptr, "00:01:23;45"},
                 {"12345", false, nullptr, "00:01:23:45"},
                 {"5", false, "01:00:00:00", "01:00:00:05"},
                 {"2,,", false, nullptr, "00:02:00:00"},
                 {"10.", false, nullptr, "00:00:10:00"},
                 {"1:2", false, nullptr, "00:00:00:12"},
                 {"abcdefghijk", false, nullptr, "abcdefghijk"},
                 {"99:99:99;99", true, nullptr, "99:99:99;99"},
                 {"7", false, "12:34", "12:07"}};
    for (const auto &c : cases) {
        const QString start = c.start ? QString::fromUtf8(c.start) : QString();
        EXPECT_EQ(
            QFTimecode::timecodeFromUserString(QString::fromUtf8(c.typed), c.dropFrame, start),
            QString::fromUtf8(c.expected))
            << '"' << c.typed << '"' << (c.dropFrame ? " DF" : "");
    }
}

TEST(FrameRateFromTimebase, NtscOnlyForTheThreeStandardRates)
{
    EXPECT_EQ(QFTimecode::frameRateFromTimebase(30, false), 30.0);
    EXPECT_EQ(QFTimecode::frameRateFromTimebase(25, false), 25.0);
    EXPECT_EQ(QFTimecode::frameRateFromTimebase(30, true), 30000.0 / 1001.0);
    EXPECT_EQ(QFTimecode::frameRateFromTimebase(24, true), 24000.0 / 1001.0);
    EXPECT_EQ(QFTimecode::frameRateFromTimebase(60, true), 60000.0 / 1001.0);
    EXPECT_EQ(QFTimecode::frameRateFromTimebase(25, true), 0.0);
    EXPECT_EQ(QFTimecode::frameRateFromTimebase(-30, true), 0.0);
}

TEST(Arithmetic, AddSubtractAndIncrement)
{
    EXPECT_EQ(QFTimecode::addTimecode("00:00:10:00", "01:00:00:20", 25, false, false),
              "01:00:10:20");
    EXPECT_EQ(QFTimecode::addTimecode("00:00:59;29", "00:00:00;01", 30, true, true), "00:01:00;02");
    EXPECT_EQ(QFTimecode::subtractTimecode("00:00:00:10", "00:00:01:00", 30, false, false),
              "00:00:00:20");
    EXPECT_TRUE(
        QFTimecode::subtractTimecode("00:00:01:00", "00:00:00:10", 30, false, false).isNull());
    EXPECT_EQ(QFTimecode::subtractTimecode("00:00:01:00", "00:00:01:00", 30, false, false),
              "00:00:00:00");
    // The input is always read non-drop; only the output honours the flag.
    EXPECT_EQ(QFTimecode::timecode("00:01:00;02", 0, 30, true, true), "00:01:00;04");
    EXPECT_EQ(QFTimecode::timecode("00:00:00:10", 5, 25, false, false), "00:00:00:15");
    EXPECT_EQ(QFTimecode::timecode("00:00:00:10", -11, 25, false, false),
              QFTimecode::timecodeFromFrameCount(maxCount, 25, false, false, 0));
}

TEST(TimecodeInRange, EqualTextOrInclusiveRangeAt24)
{
    EXPECT_TRUE(QFTimecode::timecodeInRange("junk", "junk", "01:00:00:00"));
    EXPECT_TRUE(QFTimecode::timecodeInRange("01:00:00:00", "00:00:00:00", "01:00:00:00"));
    EXPECT_TRUE(QFTimecode::timecodeInRange("00:00:00:23", "00:00:00:00", "00:00:01:00"));
    // Read at 24 whatever the real rate: frame 29 of a 30 fps timecode is past 1 s at 24.
    EXPECT_FALSE(QFTimecode::timecodeInRange("00:00:00:29", "00:00:00:00", "00:00:01:00"));
    EXPECT_TRUE(QFTimecode::timecodeInRange("00:00:01:00", "00:00:00:24", "00:00:01:01"));
    EXPECT_FALSE(QFTimecode::timecodeInRange("00:00:02:00", "00:00:00:00", "00:00:01:23"));
}

TEST(ElapsedTime, FractionalRatesAndDefaultRate)
{
    EXPECT_EQ(QFTimecode::elapsedTimeFromFrameCount(2997, 29.97), "00:01:40:00");
    EXPECT_EQ(QFTimecode::elapsedTimeFromFrameCount(31, 0.0), "00:00:01:01");
    EXPECT_EQ(QFTimecode::elapsedTimeFromFrameCount(90000 * 25 + 3, 25.0), "01:00:00:03");
    EXPECT_EQ(QFTimecode::frameCountFromElapsedTime("00:01:40:00", 29.97), 2997u);
    EXPECT_EQ(QFTimecode::frameCountFromElapsedTime("01:00:00:03", 25.0), 90003u);
    EXPECT_EQ(QFTimecode::frameCountFromElapsedTime("00:00:01.5:00", -1.0), 45u);
    EXPECT_EQ(QFTimecode::frameCountFromElapsedTime("00:01:40", 25.0), 0u);
}

TEST(TimecodeFromSeconds, RateDecidesTimebaseAndDropFrame)
{
    EXPECT_EQ(QFTimecode::timecodeFromSeconds(3600.0, 29.97f, true), "01:00:00;00");
    EXPECT_EQ(QFTimecode::timecodeFromSeconds(10.5, 25.0f, false), "00:00:10:13");
    EXPECT_EQ(QFTimecode::timecodeFromSeconds(1.0, 23.976f, false), "00:00:01:00");
    EXPECT_EQ(QFTimecode::timecodeFromSeconds(0.5, 23.976f, false), "00:00:00:12");
    EXPECT_EQ(QFTimecode::timecodeFromSeconds(-1.0, 25.0f, false),
              QFTimecode::timecodeFromFrameCount(maxCount - 24, 25, false, false, 0));
}

TEST(Formatting, FieldsSeparatorsAndFilenames)
{
    EXPECT_EQ(QFTimecode::formatHours(1, 2, 3, 4, false), "01:02:03:04");
    EXPECT_EQ(QFTimecode::formatHours(10, 0, 59, 29, true), "10:00:59;29");
    EXPECT_EQ(QFTimecode::formatHours(-1, 0, 0, 0, false), "018446744073709551615:00:00:00");
    EXPECT_EQ(QFTimecode::sanitizeTimecodeForFilename("01:00:00;00"), "01.00.00.00");
}

TEST(TimeOfDay, HasTimecodeShapeAndFramesBelowRate)
{
    static const QRegularExpression shape(
        QStringLiteral("^(\\d\\d):(\\d\\d):(\\d\\d)([:;])(\\d\\d)$"));
    const QRegularExpressionMatch drop = shape.match(QFTimecode::timeOfDayTimecode(30, true, true));
    ASSERT_TRUE(drop.hasMatch());
    EXPECT_EQ(drop.captured(4), ";");
    EXPECT_LT(drop.captured(1).toInt(), 24);
    EXPECT_LT(drop.captured(5).toInt(), 30);

    const QRegularExpressionMatch plain =
        shape.match(QFTimecode::timeOfDayTimecode(25, false, false));
    ASSERT_TRUE(plain.hasMatch());
    EXPECT_EQ(plain.captured(4), ":");
    EXPECT_LT(plain.captured(5).toInt(), 25);
    // An NTSC flag on a rate with no NTSC form gives rate 0, so frames are always 00.
    EXPECT_TRUE(QFTimecode::timeOfDayTimecode(25, true, false).endsWith(":00"));
}

} // namespace
