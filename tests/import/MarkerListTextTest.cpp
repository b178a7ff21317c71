#include "import/MarkerListText.h"
#include "import/MarkerExports.h"
#include "import/QFFCP7MarkerListParser.h"
#include "import/TextEncoding.h"

#include "LoggedTest.h"
#include "QtPrinters.h"

#include <gtest/gtest.h>

namespace {

using TextEncoding::decode;
using TextEncoding::detect;

/// The path of one of the bundled example lists.
QString example(const char *name)
{
    return QStringLiteral(CUEBRIDGE_SOURCE_DIR "/examples/") + QLatin1StringView(name);
}

TEST(TextEncoding, MarksAndUtf8ComeFirstThenTheLikeliestReading)
{
    // A line as older spreadsheet and text programs save it, in their encodings.
    const QString line = u"Café\tTrès bien, “à revoir” – 5 €\tNoël"_s;
    const struct
    {
        QByteArray bytes;
        std::optional<QByteArray> encoding;
        QString text;
    } cases[] = {
        {QByteArray("\xff\xfe"
                    "a\0",
                    4),
         "UTF-16LE", u"a"_s},
        {QByteArray("\xfe\xff\0a", 4), "UTF-16BE", u"a"_s},
        {"\xef\xbb\xbf"
         "caf\xc3\xa9",
         "UTF-8", u"café"_s},
        {line.toUtf8(), "UTF-8", line},
        {QByteArray(), "UTF-8", u""_s},
        {"Caf\xe9\tTr\xe8s bien, \x93\xe0 revoir\x94 \x96 5 \x80\tNo\xebl", "WINDOWS-1252", line},
        {"Caf\x8e\tTr\x8fs bien, \xd2\x88 revoir\xd3 \xd0 5 \xdb\tNo\x91l", "MACINTOSH", line},
        // Without a mark, UTF-16 by where its zero bytes lie.
        {TempHome::read(example("review-notes-utf16.txt")).mid(2), "UTF-16LE", QString()},
        {QByteArray("\0a\0\n\0\xe9", 6), "UTF-16BE", u"a\né"_s},
        // Short lists with one accented word, as editors' older tools write them.
        {"#\tName\n1\tCaf\x8e\n", "MACINTOSH", u"#\tName\n1\tCafé\n"_s},
        {"#\tName\n1\tbr\x9el\x8e\n", "MACINTOSH", u"#\tName\n1\tbrûlé\n"_s},
        {"#\tName\n1\tMonta\x96"
         "a\n",
         "MACINTOSH", u"#\tName\n1\tMontaña\n"_s},
        {"#\tName\n1\tNi\xf1o\n", "WINDOWS-1252", u"#\tName\n1\tNiño\n"_s},
        {"#\tName\n1\t\xa3\xf3"
         "d\x9f\n",
         "WINDOWS-1250", u"#\tName\n1\tŁódź\n"_s},
        {"#\tName\n1\t25 \xa4\n", "ISO-8859-15", u"#\tName\n1\t25 €\n"_s},
        {"#\tName\n1\t\xcf\xf0\xe8\xe2\xe5\xf2\n", "WINDOWS-1251", u"#\tName\n1\tПривет\n"_s},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.bytes.left(16).toHex().toStdString());
        EXPECT_EQ(detect(c.bytes), c.encoding);
        if (c.encoding && !c.text.isNull()) {
            EXPECT_EQ(decode(c.bytes, *c.encoding), c.text);
        }
    }
    bool valid = true;
    EXPECT_EQ(decode("caf\xc3\x28", TextEncoding::utf8, &valid), u"caf\ufffd("_s);
    EXPECT_FALSE(valid);
    EXPECT_TRUE(decode("x", "NO-SUCH-ENCODING", &valid).isNull());
    EXPECT_FALSE(valid);
}

// The example lists, read as the import reads them: a UTF-16 list without its mark
// falls back to UTF-16 little-endian and reads whole.
TEST_F(LoggedTest, TheExampleListsInEachEncodingGiveTheSameMarkers)
{
    const auto records = [](const QString &path) {
        QStringList fields;
        for (const MarkerRecord &m : MarkerListText::readForImport(path, {}, {}).list.markers)
            fields << m.name + u'|' + m.comment + u'|' + m.start + u'|' + m.duration + u'|' +
                          m.color;
        return fields;
    };
    const QString utf16 = example("review-notes-utf16.txt");
    const QStringList utf8 = records(example("review-notes.txt"));
    ASSERT_EQ(utf8.size(), 20);
    EXPECT_EQ(records(utf16), utf8);
    EXPECT_EQ(records(home.file(u"markless.txt"_s, TempHome::read(utf16).mid(2))), utf8);
    EXPECT_TRUE(utf8[8].contains(u"|Line 14 re-recorded,\nuse take 3 from the pickup session|"));
    EXPECT_TRUE(utf8[10].startsWith(QString::fromUtf8("Björk's line|")));
}

} // namespace

namespace {

// Other editors' exports by their structure: each marker's name, start, duration in
// frames and lines, and every line with text accounted for.
TEST(MarkerExports, FormsAreRecognisedByStructureAndEveryLineIsAccountedFor)
{
    struct Marker
    {
        const char16_t *name;
        const char16_t *start;
        quint64 frames;
        QList<qsizetype> lines;
        double seconds = -1; ///< from the timeline's start; -1: a timecode
    };
    const struct
    {
        const char *name;
        QString text;
        MarkerExports::Source source;
        QList<Marker> markers;
    } cases[] = {
        {"PremiereInRussian",
         u"Имя маркера\tОписание\tВход\tВыход\tПродолжительность\tТип маркера\r\n"
         u"Маркер 1\t\t00:00:01;00\t00:00:01;00\t00:00:00;00\tКомментарий\r\n"_s,
         MarkerExports::Source::Premiere,
         {{u"Маркер 1", u"00:00:01;00", 0, {2}}}},
        {"MediaComposerFiveColumnsCarriageReturns",
         u"editor\t01:00:10:00\tV1\tred\tFix\reditor\t01:00:20:00\tV1\tblue\tSecond\r"_s,
         MarkerExports::Source::Avid,
         {{u"Fix", u"01:00:10:00", 0, {1}}, {u"Second", u"01:00:20:00", 0, {2}}}},
        {"MediaComposerCommentOverTwoLines",
         u"editor\t01:00:10:00\tV1\tred\tFirst\nsecond part\t5\neditor\t01:00:20:00\tV1\tred\tNext\t0\n"_s,
         MarkerExports::Source::Avid,
         {{u"First second part", u"01:00:10:00", 5, {1, 2}}, {u"Next", u"01:00:20:00", 0, {3}}}},
        {"ResolveNoteOverTwoLines",
         u"TITLE: T\nFCM: NON-DROP FRAME\n\n001  001  V  C  01:00:10:00 01:00:10:01 01:00:10:00 "
         u"01:00:10:01\nFirst half\nsecond half |C:ResolveColorBlue |M:Flare |D:5\n"_s,
         MarkerExports::Source::ResolveEdl,
         {{u"Flare", u"01:00:10:00", 5, {4, 5, 6}}}},
        {"AuditionDecimal",
         u"Name\tStart\tDuration\tTime Format\tType\tDescription\n"
         u"Intro\t0:14.125\t0:00.000\tdecimal\tCue\tfirst\n"
         u"Outro\t1:02:03.500\t0:01.000\tdecimal\tCue\t\n"_s,
         MarkerExports::Source::Audition,
         {{u"Intro", u"0:14.125", 0, {2}, 14.125}, {u"Outro", u"1:02:03.500", 0, {3}, 3723.5}}},
        {"SubRip",
         u"1\r\n00:00:02,000 --> 00:00:04,500\r\nHello\r\nthere\r\n\r\n2\r\n"
         u"00:01:00,250 --> 00:01:01,000\r\nBye\r\n"_s,
         MarkerExports::Source::SubRip,
         {{u"Hello", u"00:00:02,000", 0, {1, 2, 3, 4}, 2.0},
          {u"Bye", u"00:01:00,250", 0, {6, 7, 8}, 60.25}}},
        {"WebVtt",
         u"WEBVTT\n\nNOTE made by hand\n\n00:02.000 --> 00:04.000 align:start\nOne\n"_s,
         MarkerExports::Source::WebVtt,
         {{u"One", u"00:02.000", 0, {5, 6}, 2.0}}},
        {"Chapters",
         u"0:00 Intro\n1:02 - Verse\nno time here\n1:02:03 Credits\n"_s,
         MarkerExports::Source::Chapters,
         {{u"Intro", u"0:00", 0, {1}, 0},
          {u"Verse", u"1:02", 0, {2}, 62},
          {u"Credits", u"1:02:03", 0, {4}, 3723}}},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        ASSERT_EQ(MarkerExports::recognise(c.text), c.source);
        const MarkerList list = MarkerExports::read(c.text, c.source);
        ASSERT_EQ(list.markers.size(), c.markers.size());
        for (qsizetype i = 0; i < list.markers.size(); ++i) {
            EXPECT_EQ(list.markers[i].name, QString::fromUtf16(c.markers[i].name));
            EXPECT_EQ(list.markers[i].start, QString::fromUtf16(c.markers[i].start));
            EXPECT_EQ(list.markers[i].durationFrames.value_or(0), c.markers[i].frames);
            EXPECT_EQ(list.markers[i].lines, c.markers[i].lines);
            EXPECT_EQ(list.markers[i].startSeconds.value_or(-1), c.markers[i].seconds);
        }
        ImportReport report = list.report();
        for (const MarkerRecord &m : list.markers)
            report.written.append({m.lines, QString(), QString()});
        EXPECT_TRUE(report.accountsForEveryLine());
    }
}

} // namespace
