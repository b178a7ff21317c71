#include "support/QFFormat.h"

#include "QtPrinters.h"

#include <gtest/gtest.h>

#include <QLocale>

#include <clocale>

namespace {

using QFFormat::format;

TEST(QFFormat, SystemDirectivesAndWhatIsMissingOrUnknownStaysAsWritten)
{
    EXPECT_EQ(format(u"Marker start pos: %li", qint64(-250)), "Marker start pos: -250");
    EXPECT_EQ(format(u"%0.2li:%0.2li", 5, 123), "05:123");
    EXPECT_EQ(format(u"%@ - %@", u"a"_s, "b"), "a - b");
    EXPECT_EQ(format(u"%@%@", u"utf-16 literal", true ? u"0" : u""), "utf-16 literal0");
    EXPECT_EQ(format(u"%@", QString()), "(null)");
    EXPECT_EQ(format(u"Tab count: %i", 8), "Tab count: 8");
    EXPECT_EQ(format(u"%lu", qint64(-1)), "18446744073709551615");
    EXPECT_EQ(format(u"%0.2f GB", 23.4567), "23.46 GB");
    EXPECT_EQ(format(u"%0.0f/%0.0fs", 300300.0, 30000.0), "300300/30000s");
    EXPECT_EQ(format(u"%0.0f %0.0f %0.0f %0.0f", 0.5, 1.5, 100600.5, -0.5), "0 2 100600 -0");
    EXPECT_EQ(format(u"%f %e", 1.0 / 3, 1e300), "0.333333 1.000000e+300");
    EXPECT_EQ(format(u"Stripped character %C", QChar(u'\u00e9')),
              QString::fromUtf8("Stripped character é"));
    EXPECT_EQ(format(u"Unable to create folder %s.\n", u"/x y"_s),
              "Unable to create folder /x y.\n");
    EXPECT_EQ(format(u"100%% done"), "100% done");
    EXPECT_EQ(format(u"%5s|%-5s|", "ab", "cd"), "   ab|cd   |");
    EXPECT_EQ(format(u"%x %X %o", 255, 255, 8), "ff FF 10");
    EXPECT_EQ(format(u"%li and %@"), "%li and %@");
    EXPECT_EQ(format(u"50%"), "50%");
    EXPECT_EQ(format(u"%y", 3), "%y");
    EXPECT_EQ(format(u"%@ %@", "one"), "one %@");
}

TEST(QFFormat, PointIsTheDecimalSeparatorWhateverTheLocale)
{
    const char *previous = std::setlocale(LC_NUMERIC, nullptr);
    const std::string saved = previous ? previous : "C";
    std::setlocale(LC_NUMERIC, "de_DE.UTF-8"); // may be missing; then the test is still valid
    QLocale::setDefault(QLocale(QLocale::German));
    EXPECT_EQ(format(u"%0.2f", 1.5), "1.50");
    QLocale::setDefault(QLocale::c());
    std::setlocale(LC_NUMERIC, saved.c_str());
}

} // namespace
