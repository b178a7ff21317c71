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
    EXPECT_EQ(frames("00:00:01:05", 24), 29u);
    // The effective timebase: 0 and negative read as 30.
    EXPECT_EQ(frames("00:00:01:00", 0), 30u);
    EXPECT_EQ(frames("00:00:01:00", -25), 30u);
    // Three fields are unreadable; surrounding white space is not.
    EXPECT_EQ(frames("01:00:00", 30), 0u);
    EXPECT_EQ(frames("", 30), 0u);
    EXPECT_EQ(frames(" \t01:00:00:00\r\n", 30), 108000u);
    // Either separator anywhere; fields past the fourth ignored; junk fields read as 0.
    EXPECT_EQ(frames("01;00;00;00", 30), 108000u);
    EXPECT_EQ(frames("00:00:01:02:99", 30), 32u);
    EXPECT_EQ(frames("aa:bb:01:xx", 30), 30u);
    EXPECT_EQ(frames("00:00:01:5x", 30), 35u);
    // Drop frame (its minute boundaries are covered whole by the property tests): only
    // the flag decides, not the separator in the text.
    EXPECT_EQ(frames("00:01:00:02", 30, true), 1800u);
    EXPECT_EQ(frames("00:01:00;02", 30), 1802u);
    // The start frame is subtracted and wraps below zero.
    EXPECT_EQ(frames("01:00:10:00", 25, false, 90000), 250u);
    EXPECT_EQ(frames("00:00:00:05", 30, false, 10), maxCount - 4);
    EXPECT_EQ(frames("00:59:59:00", 25, false, 90000), maxCount - 24);
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
    EXPECT_EQ(print(0, 25), u"00:00:00:00");
    EXPECT_EQ(print(30 * 3600 * 25, 30), u"01:00:00:00"); // hours wrap at 24
    EXPECT_EQ(print(5, 30, false, 10), u"00:00:00:15");
    EXPECT_EQ(print(31, 0), u"00:00:01:01");
    EXPECT_EQ(print(31, -1), u"00:00:01:01");
    // Ten-minute blocks of 18000 frames: the display steps back once.
    EXPECT_EQ(print(17982, 30, true), u"00:10:00;02");
    EXPECT_EQ(print(17999, 30, true), u"00:10:00;19");
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

TEST(TimecodeFromUserString, Expands)
{
    const std::pair<const char *, const char *> nonDrop[] = {
        {"1...", "01:00:00:00"},       {"1....", "00:00:00:00"},   {"5", "00:00:00:05"},
        {"1.5", "00:00:01:05"},        {"1,2,3,4", "01:02:03:04"}, {"1:00:00:00", "01:00:00:00"},
        {"123456789", "23:45:67:89"},  {"", "00:00:00:00"},        {"12345", "00:01:23:45"},
        {"2,,", "00:02:00:00"},        {"10.", "00:00:10:00"},     {"1:2", "00:00:00:12"},
        {"abcdefghijk", "abcdefghijk"}};
    for (const auto &[typed, expected] : nonDrop) {
        EXPECT_EQ(QFTimecode::timecodeFromUserString(QString::fromUtf8(typed), false, QString()),
                  QString::fromUtf8(expected))
            << '"' << typed << '"';
    }
    // Drop frame, and a start the typed digits are filled into.
    EXPECT_EQ(QFTimecode::timecodeFromUserString(u""_qs, true, u""_qs), u"00:00:00;00");
    EXPECT_EQ(QFTimecode::timecodeFromUserString(u"1.."_qs, true, QString()), u"00:01:00;00");
    EXPECT_EQ(QFTimecode::timecodeFromUserString(u"12345"_qs, true, QString()), u"00:01:23;45");
    EXPECT_EQ(QFTimecode::timecodeFromUserString(u"99:99:99;99"_qs, true, QString()),
              u"99:99:99;99");
    EXPECT_EQ(QFTimecode::timecodeFromUserString(u"5"_qs, false, u"01:00:00:00"_qs),
              u"01:00:00:05");
    EXPECT_EQ(QFTimecode::timecodeFromUserString(u"7"_qs, false, u"12:34"_qs), u"12:07");
}

TEST(Rates, NtscRatesForThreeTimebasesOnlyAndTheRateDecidesHowSecondsPrint)
{
    EXPECT_EQ(QFTimecode::frameRateFromTimebase(30, false), 30.0);
    EXPECT_EQ(QFTimecode::frameRateFromTimebase(25, false), 25.0);
    EXPECT_EQ(QFTimecode::frameRateFromTimebase(30, true), 30000.0 / 1001.0);
    EXPECT_EQ(QFTimecode::frameRateFromTimebase(24, true), 24000.0 / 1001.0);
    EXPECT_EQ(QFTimecode::frameRateFromTimebase(60, true), 60000.0 / 1001.0);
    EXPECT_EQ(QFTimecode::frameRateFromTimebase(25, true), 0.0);
    EXPECT_EQ(QFTimecode::frameRateFromTimebase(-30, true), 0.0);

    // The rate decides the timebase and drop frame.
    EXPECT_EQ(QFTimecode::timecodeFromSeconds(3600.0, 29.97f, true), "01:00:00;00");
    EXPECT_EQ(QFTimecode::timecodeFromSeconds(10.5, 25.0f, false), "00:00:10:13");
    EXPECT_EQ(QFTimecode::timecodeFromSeconds(1.0, 23.976f, false), "00:00:01:00");
    EXPECT_EQ(QFTimecode::timecodeFromSeconds(0.5, 23.976f, false), "00:00:00:12");
    EXPECT_EQ(QFTimecode::timecodeFromSeconds(-1.0, 25.0f, false),
              QFTimecode::timecodeFromFrameCount(maxCount - 24, 25, false, false, 0));
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

TEST(Formatting, FieldsSeparatorsAndFilenames)
{
    EXPECT_EQ(QFTimecode::formatHours(1, 2, 3, 4, false), "01:02:03:04");
    EXPECT_EQ(QFTimecode::formatHours(10, 0, 59, 29, true), "10:00:59;29");
    EXPECT_EQ(QFTimecode::formatHours(-1, 0, 0, 0, false), "018446744073709551615:00:00:00");
    EXPECT_EQ(QFTimecode::sanitizeTimecodeForFilename("01:00:00;00"), "01.00.00.00");
}

TEST(TimeOfDay, HasTimecodeShapeAndFramesBelowRate)
{
    static const QRegularExpression shape(u"^(\\d\\d):(\\d\\d):(\\d\\d)([:;])(\\d\\d)$"_qs);
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
