#include "time/QFFCPXMLParser.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

struct SecondsCase
{
    const char *text; // nullptr: an absent attribute
    double seconds;

    friend void PrintTo(const SecondsCase &c, std::ostream *os)
    {
        *os << (c.text ? c.text : "(null)");
    }
};

class SecondsFromTimeString : public testing::TestWithParam<SecondsCase>
{
};

TEST_P(SecondsFromTimeString, Reads)
{
    const SecondsCase &c = GetParam();
    const QString text = c.text ? QString::fromUtf8(c.text) : QString();
    EXPECT_DOUBLE_EQ(QFFCPXMLParser::secondsFromTimeString(text), c.seconds)
        << (c.text ? c.text : "(null)");
}

INSTANTIATE_TEST_SUITE_P(
    Cases, SecondsFromTimeString,
    testing::Values(SecondsCase{"3600s", 3600.0}, SecondsCase{"3600", 3600.0},
                    SecondsCase{"0.5s", 0.5}, SecondsCase{"1001/30000s", 1001.0 / 30000.0},
                    SecondsCase{"86400300/24000s", 86400300.0 / 24000.0}, SecondsCase{"0/1s", 0.0},
                    SecondsCase{"1/2/3s", 0.0}, SecondsCase{"", 0.0}, SecondsCase{nullptr, 0.0},
                    SecondsCase{"s", 0.0}, SecondsCase{"abc", 0.0}, SecondsCase{" 12abc/4s", 3.0},
                    SecondsCase{"-10/4s", -2.5}, SecondsCase{"1e3/2s", 500.0},
                    SecondsCase{"3600ss", 3600.0}));

TEST(SecondsFromTimeString, ZeroDenominatorIsNotGuarded)
{
    EXPECT_TRUE(std::isinf(QFFCPXMLParser::secondsFromTimeString("1/0s")));
    EXPECT_TRUE(std::isnan(QFFCPXMLParser::secondsFromTimeString("0/0s")));
}

TEST(FpsFromFrameDuration, TwoPartsInvertOnePartStands)
{
    EXPECT_DOUBLE_EQ(QFFCPXMLParser::fpsFromFrameDuration("1001/30000s"), 30000.0 / 1001.0);
    EXPECT_DOUBLE_EQ(QFFCPXMLParser::fpsFromFrameDuration("100/2500s"), 25.0);
    EXPECT_DOUBLE_EQ(QFFCPXMLParser::fpsFromFrameDuration("1001/24000s"), 24000.0 / 1001.0);
    EXPECT_DOUBLE_EQ(QFFCPXMLParser::fpsFromFrameDuration("25s"), 25.0);
    EXPECT_DOUBLE_EQ(QFFCPXMLParser::fpsFromFrameDuration("0.04s"), 0.04);
    EXPECT_DOUBLE_EQ(QFFCPXMLParser::fpsFromFrameDuration("1/2/3s"), 0.0);
    EXPECT_DOUBLE_EQ(QFFCPXMLParser::fpsFromFrameDuration(QString()), 0.0);
    EXPECT_TRUE(std::isinf(QFFCPXMLParser::fpsFromFrameDuration("0/25s")));
}

TEST(MultiplierFromFrameDuration, NumeratorAsInteger)
{
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
