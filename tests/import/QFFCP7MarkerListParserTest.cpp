#include "import/QFFCP7MarkerListParser.h"

#include "QtPrinters.h"

#include <gtest/gtest.h>

namespace {

using Records = QList<QStringList>;

QStringList record(std::initializer_list<const char *> fields)
{
    QStringList result;
    for (const char *field : fields)
        result << QString::fromUtf8(field);
    return result;
}

/// The fields of each record, which the tables compare.
Records fieldsOf(const QList<QFMarkerRecord> &records)
{
    Records fields;
    for (const QFMarkerRecord &r : records)
        fields << r.fields;
    return fields;
}

const QString header = u"#\tTrack\tName\tComment\tStart\tDuration\tColor"_s;
const QStringList headerRecord =
    record({"#", "Track", "Name", "Comment", "Start", "Duration", "Color"});

QString interleaveNuls(const QString &text)
{
    QString result;
    for (const QChar c : text)
        result += QString(c) + QChar(u'\0');
    return result;
}

const QString line1 = u"1\tV1\tIntro\tFade up\t01:00:00:00\t00:00:02:00\tBlue"_s;
const QString line2 = u"2\tV1\tCut\tToo long\t01:00:05:00\t00:00:00:00\tRed"_s;
const QStringList record1 =
    record({"1", "V1", "Intro", "Fade up", "01:00:00:00", "00:00:02:00", "Blue"});
const QStringList record2 =
    record({"2", "V1", "Cut", "Too long", "01:00:05:00", "00:00:00:00", "Red"});

TEST(ParseMarkersFromText, Records)
{
    const struct
    {
        const char *name;
        QString text;
        Records expected;
    } cases[] = {
        {"LineFeeds",
         header + "\n" + line1 + "\n" + line2 + "\n",
         {headerRecord, record1, record2}},
        {"CarriageReturns", header + "\r" + line1 + "\r" + line2, {headerRecord, record1, record2}},
        {"CrLf",
         header + "\r\n" + line1 + "\r\n" + line2 + "\r\n",
         {headerRecord, record1, record2}},
        // One line feed already gives two pieces, so the carriage returns stay inside.
        {"OneLineFeedManyCarriageReturns",
         header + "\r" + line1 + "\n" + line2,
         {record({"#", "Track", "Name", "Comment", "Start", "Duration", "Color\r1", "V1", "Intro",
                  "Fade up", "01:00:00:00", "00:00:02:00", "Blue"}),
          record2}},
        // Older Mac programs end lines with CR and may put a line feed inside a cell.
        {"MoreBareCarriageReturnsThanLineFeeds",
         header + "\r" + line1 + "\r" + line2.left(10) + "\n" + line2.mid(10) + "\r",
         {headerRecord, record1,
          record({"2", "V1", "Cut", "T\noo long", "01:00:05:00", "00:00:00:00", "Red"})}},
        // Spreadsheet quoting: doubled quotes inside, and a tab and a line break.
        {"QuotedCells",
         header + "\n1\tV1\t\"Cue \"\"Morning Light\"\" starts\"\t\"one\ttwo\nthree\"\t"
                  "01:00:00:00\t00:00:00:00\tRed\n",
         {headerRecord, record({"1", "V1", "Cue \"Morning Light\" starts", "one\ttwo\nthree",
                                "01:00:00:00", "00:00:00:00", "Red"})}},
        {"NulInterleaved",
         interleaveNuls(header + "\r\n" + line1 + "\r\n"),
         {headerRecord, record1}},
        {"BlankLinesBetween",
         "\n\n" + header + "\n\n  \t \n" + line1 + "\n\n",
         {headerRecord, record1}},
        {"CommentOverTwoLines",
         header +
             "\n3\tA1\tVO\tLine 14 re-recorded,\nuse take 3\t01:00:40:20\t00:00:04:00\tPurple\n",
         {headerRecord, record({"3", "A1", "VO", "Line 14 re-recorded,\nuse take 3", "01:00:40:20",
                                "00:00:04:00", "Purple"})}},
        {"EightFields",
         header + "\n" + line1 + "\textra\n",
         {headerRecord,
          record({"1", "V1", "Intro", "Fade up", "01:00:00:00", "00:00:02:00", "Blue", "extra"})}},
        {"SixFieldLastLineDropped",
         header + "\n" + line1 + "\n1\t2\t3\t4\t5\t6\n",
         {headerRecord, record1}},
        // With timecodes in the fifth and sixth columns a line stands alone: its empty
        // colour column comes back, and what was held back before it is not joined.
        {"EmptyColourStandsAlone",
         header + "\n1\tV1\tA\tB\t01:00:00:00\t00:00:01:00\t\n" + line2,
         {headerRecord, record({"1", "V1", "A", "B", "01:00:00:00", "00:00:01:00", ""}), record2}},
        // Leading tabs vanish with the trim: the columns shift left.
        {"LeadingTabsShiftColumns",
         header + "\n\t\t" + line1 + "\tx\ty\n",
         {headerRecord,
          record({"1", "V1", "Intro", "Fade up", "01:00:00:00", "00:00:02:00", "Blue", "x", "y"})}},
        {"FieldsTrimmed",
         header + "\n 1 \t V1\t Intro \tA\t01:00:00:00 \t0\t Red \r\n",
         {headerRecord, record({"1", "V1", "Intro", "A", "01:00:00:00", "0", "Red"})}},
        {"Empty", QString(), {}},
        {"OnlyBlanks", "\n \n\t\r\n", {}},
        {"NoTabs", "hello\nworld\n", {}}};
    for (const auto &c : cases)
        EXPECT_EQ(fieldsOf(QFFCP7MarkerListParser::parseMarkersFromText(c.text)), c.expected)
            << c.name;
}

TEST(ParseMarkersFromText, RecordsKnowTheirLinesAndLeftOverLinesAreReported)
{
    const QString text = header + "\n\n3\tA1\tVO\tfirst\n\nlast\t01:00:00:00\t0\tRed\n" +
                         "1\tV1\tshort\n" + line1 + "\nx\ty\n";
    QList<SkippedLine> leftOver;
    const QList<QFMarkerRecord> records =
        QFFCP7MarkerListParser::parseMarkersFromText(text, &leftOver);
    ASSERT_EQ(records.size(), 3);
    EXPECT_EQ(records[0].lines, QList<qsizetype>({1}));
    EXPECT_EQ(records[1].lines, QList<qsizetype>({3, 5}));
    EXPECT_TRUE(records[1].joined);
    EXPECT_EQ(records[2].lines, QList<qsizetype>({7}));
    EXPECT_EQ(leftOver, QList<SkippedLine>({{6, u"seven columns expected, found 3"_s},
                                            {8, u"seven columns expected, found 2"_s}}));

    // A quoted cell over three lines: the record spans them.
    const QList<QFMarkerRecord> quoted = QFFCP7MarkerListParser::parseMarkersFromText(
        header + "\n1\tV1\tA\t\"first\n\nthird\"\t01:00:00:00\t00:00:00:00\tRed\n");
    ASSERT_EQ(quoted.size(), 2);
    EXPECT_EQ(quoted[1].lines, QList<qsizetype>({2, 4}));
    EXPECT_EQ(quoted[1].fields[3], u"first\n\nthird");
}

TEST(ParseMarkersFromText, ManyIncompleteLinesStayLinear)
{
    // 200,000 short lines that never complete a record, then one that does: joined
    // literally this would copy gigabytes.
    QString text = header + u'\n';
    for (int i = 0; i < 200000; ++i)
        text += u"word\n"_s;
    text += u"a\tb\tc\td\te\tf\tg\n"_s;
    const Records records = fieldsOf(QFFCP7MarkerListParser::parseMarkersFromText(text));
    ASSERT_EQ(records.size(), 2);
    EXPECT_EQ(records[1].size(), 7);
    EXPECT_TRUE(records[1][0].startsWith(u"word\nword\n"_s));
    EXPECT_EQ(records[1][6], "g");
}

} // namespace
