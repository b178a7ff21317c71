#include "time/QFNumberReader.h"

#include <gtest/gtest.h>

#include <QString>

#include <cmath>
#include <limits>

namespace {

using namespace QFNumberReader;

TEST(LeadingDouble, ReadsLikeStrtodInTheCLocaleOverflowIncluded)
{
    // U+FF11 and U+FF12 are full-width digits.
    const std::pair<const char16_t *, double> cases[] = {{u"42", 42.0},    {u"  \t-1.5xyz", -1.5},
                                                         {u"+.25", 0.25},  {u"7.", 7.0},
                                                         {u".", 0.0},      {u"-", 0.0},
                                                         {u"", 0.0},       {u"1e3", 1000.0},
                                                         {u"1E-2s", 0.01}, {u"2e", 2.0},
                                                         {u"2e+", 2.0},    {u"3,5", 3.0},
                                                         {u"inf", 0.0},    {u"nan", 0.0},
                                                         {u"0x10", 0.0},   {u"\uff11\uff12", 0.0},
                                                         {u"1e-400", 0.0}, {u"0.000e999", 0.0}};
    for (const auto &[text, value] : cases)
        EXPECT_DOUBLE_EQ(leadingDouble(QStringView(text)), value)
            << QStringView(text).toString().toStdString();
    EXPECT_TRUE(std::isinf(leadingDouble(u"1e400")));
    EXPECT_LT(leadingDouble(u"-1e400"), 0.0);
    const QString manyDigits = QString(400, u'9');
    EXPECT_TRUE(std::isinf(leadingDouble(manyDigits)));
    // Found by fuzzing: exponents past every range.
    EXPECT_TRUE(std::isinf(leadingDouble(u"11e00331e")));
    EXPECT_TRUE(std::isinf(leadingDouble(u"3E9223372036854775807")));
    EXPECT_TRUE(std::isinf(leadingDouble(u"3E99999999999999999999999")));
    EXPECT_EQ(leadingDouble(u"3E-9223372036854775808"), 0.0);
    EXPECT_EQ(leadingDouble(u"3E-99999999999999999999999"), 0.0);
}

TEST(Integers, LeadingOnesSaturateAndConversionsWrapOrSaturate)
{
    EXPECT_EQ(leadingInteger(u" -12ab"), -12);
    EXPECT_EQ(leadingInteger(u"+7"), 7);
    EXPECT_EQ(leadingInteger(u"x7"), 0);
    EXPECT_EQ(leadingInteger(u"9223372036854775807"), std::numeric_limits<qint64>::max());
    EXPECT_EQ(leadingInteger(u"9223372036854775808"), std::numeric_limits<qint64>::max());
    EXPECT_EQ(leadingInteger(u"-9223372036854775808"), std::numeric_limits<qint64>::min());
    EXPECT_EQ(leadingInteger(u"-99999999999999999999"), std::numeric_limits<qint64>::min());

    // Conversions from double wrap, saturate, and make nothing of not-a-number.
    EXPECT_EQ(toUInt64(-1.0), std::numeric_limits<quint64>::max());
    EXPECT_EQ(toUInt64(2.9), 2u);
    EXPECT_EQ(toUInt64(1e30), std::numeric_limits<quint64>::max());
    EXPECT_EQ(toUInt64(std::nan("")), 0u);
    EXPECT_EQ(toUInt64(1.8e19), quint64(1.8e19));
    EXPECT_EQ(toInt32(-2.7), -2);
    EXPECT_EQ(toInt32(3e9), std::numeric_limits<qint32>::min());
    EXPECT_EQ(toInt64(std::numeric_limits<double>::infinity()), std::numeric_limits<qint64>::min());
}

} // namespace
