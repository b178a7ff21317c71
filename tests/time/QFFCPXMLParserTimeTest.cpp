#include "time/QFFCPXMLParser.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

TEST(SecondsFromTimeString, ReadsAndLeavesAZeroDenominatorUnguarded)
{
    const double ntsc = 1001 / 30000.0;
    // nullptr: an absent attribute.
    const std::pair<const char *, double> cases[] = {
        {"3600s", 3600.0}, {"3600", 3600.0},  {"0.5s", 0.5},      {"1001/30000s", ntsc},
        {"0/1s", 0.0},     {"1/2/3s", 0.0},   {"", 0.0},          {nullptr, 0.0},
        {"s", 0.0},        {"abc", 0.0},      {" 12abc/4s", 3.0}, {"-10/4s", -2.5},
        {"1e3/2s", 500.0}, {"3600ss", 3600.0}};
    for (const auto &[text, seconds] : cases) {
        EXPECT_DOUBLE_EQ(
            QFFCPXMLParser::secondsFromTimeString(text ? QString::fromUtf8(text) : QString()),
            seconds)
            << (text ? text : "(null)");
    }
    EXPECT_DOUBLE_EQ(QFFCPXMLParser::secondsFromTimeString("86400300/24000s"), 3600.0125);

    // A zero denominator is not guarded.
    EXPECT_TRUE(std::isinf(QFFCPXMLParser::secondsFromTimeString("1/0s")));
    EXPECT_TRUE(std::isnan(QFFCPXMLParser::secondsFromTimeString("0/0s")));
}

TEST(FrameDuration, FpsInvertsTwoPartsAndTheMultiplierIsTheNumerator)
{
    EXPECT_DOUBLE_EQ(QFFCPXMLParser::fpsFromFrameDuration("1001/30000s"), 30000.0 / 1001.0);
    EXPECT_DOUBLE_EQ(QFFCPXMLParser::fpsFromFrameDuration("100/2500s"), 25.0);
    EXPECT_DOUBLE_EQ(QFFCPXMLParser::fpsFromFrameDuration("1001/24000s"), 24000.0 / 1001.0);
    EXPECT_DOUBLE_EQ(QFFCPXMLParser::fpsFromFrameDuration("25s"), 25.0);
    EXPECT_DOUBLE_EQ(QFFCPXMLParser::fpsFromFrameDuration("0.04s"), 0.04);
    EXPECT_DOUBLE_EQ(QFFCPXMLParser::fpsFromFrameDuration("1/2/3s"), 0.0);
    EXPECT_DOUBLE_EQ(QFFCPXMLParser::fpsFromFrameDuration(QString()), 0.0);
    EXPECT_TRUE(std::isinf(QFFCPXMLParser::fpsFromFrameDuration("0/25s")));
    EXPECT_EQ(QFFCPXMLParser::multiplierFromFrameDuration("1001/30000s"), 1001);
    EXPECT_EQ(QFFCPXMLParser::multiplierFromFrameDuration("100/2500s"), 100);
    EXPECT_EQ(QFFCPXMLParser::multiplierFromFrameDuration("1/24s"), 1);
    EXPECT_EQ(QFFCPXMLParser::multiplierFromFrameDuration("2s"), 2);
    EXPECT_EQ(QFFCPXMLParser::multiplierFromFrameDuration("1.5/3s"), 1);
    EXPECT_EQ(QFFCPXMLParser::multiplierFromFrameDuration("abc"), 0);
    EXPECT_EQ(QFFCPXMLParser::multiplierFromFrameDuration(""), 0);
    EXPECT_EQ(QFFCPXMLParser::multiplierFromFrameDuration(QString()), 0);
}

TEST(FramesFromTimeString, NumeratorOverFrameDuration)
{
    EXPECT_EQ(QFFCPXMLParser::framesFromTimeString("3003/30000s", 1001), 3u);
    EXPECT_EQ(QFFCPXMLParser::framesFromTimeString("250/25s", 1), 250u);
    EXPECT_EQ(QFFCPXMLParser::framesFromTimeString("3002/30000s", 1001), 2u);
    EXPECT_EQ(QFFCPXMLParser::framesFromTimeString(QString(), 1001), 0u);
    EXPECT_EQ(QFFCPXMLParser::framesFromTimeString("abc", 1001), 0u);
    // A zero frame duration divides by zero; the count saturates instead of failing.
    EXPECT_EQ(QFFCPXMLParser::framesFromTimeString("0s", 0), 0u);
    EXPECT_EQ(QFFCPXMLParser::framesFromTimeString("5s", 0), std::numeric_limits<quint64>::max());
}

} // namespace
