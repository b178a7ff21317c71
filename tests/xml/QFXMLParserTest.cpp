// The query helpers: escaping, the value shortcuts, names and ids, and tree walks.

#include "xml/QFXMLParser.h"

#include "LoggedTest.h"
#include "QtPrinters.h"
#include "XmlTestSupport.h"

namespace {

TEST_F(LoggedTest, EscapeQueryStringAppliesTheCharacterRules)
{
    const QString kept = QString(QChar(20)) + QChar(31);
    const struct
    {
        QString input;
        QString expected;
        int strippedCount;
    } cases[] = {
        {QString(), QString(), 0},
        {u"./xmeml[1]//sequence/uuid[\"A-1\"]/.."_s, u"./xmeml[1]//sequence/uuid[\"A-1\"]/.."_s, 0},
        {u"a&amp;b"_s, u"a&amp;b"_s, 0},
        {u"Tom & Jerry"_s, u"Tom &amp; Jerry"_s, 0},
        {u"x&amp"_s, u"x&amp;amp"_s, 0},
        {u"&lt;"_s, u"&amp;lt;"_s, 0}, // other entities are escaped again
        {u"Caf\u00e9"_s, u"Caf&#233;"_s, 0},
        {QString(QChar(159)), QString(QChar(159)), 0},
        {QString::fromUcs4(U"\U0001F3AC"), u"&#55356;&#57260;"_s, 0}, // each half on its own
        {u"a\rb"_s, u"a&#13;b"_s, 0},
        {u"a\tb\nc"_s, u"abc"_s, 2},
        {kept, kept, 0},
        {QString(QChar(19)), u""_s, 1},
        {u"<\"'>"_s, u"<\"'>"_s, 0}};
    for (const auto &c : cases) {
        SCOPED_TRACE(c.input.toStdString());
        const qsizetype strippedBefore = log().count(u"Stripped character");
        const QString escaped = QFXMLParser::escapeQueryString(c.input);
        EXPECT_EQ(escaped, c.expected);
        EXPECT_EQ(escaped.isNull(), c.input.isNull());
        EXPECT_EQ(log().count(u"Stripped character") - strippedBefore, c.strippedCount);
    }
}

class QueryHelpers : public LoggedTest
{
protected:
    void SetUp() override
    {
        LoggedTest::SetUp();
        xmeml = loadTestDocument("project.xml");
        ASSERT_TRUE(xmeml);
        sequence = QFXMLParser::nodeForQuery(u"./xmeml[1]//sequence[1]"_s, xmeml->node());
        ASSERT_FALSE(sequence.isNull());
    }

    XmlNode clip(const char *id) const
    {
        return QFXMLParser::nodeForQuery(u".//clipitem[@id=\"%1\"]"_s.arg(QLatin1String(id)),
                                         sequence);
    }

    std::unique_ptr<XmlDocument> xmeml;
    XmlNode sequence;
};

TEST_F(QueryHelpers, SingleValuesAndLists)
{
    EXPECT_EQ(QFXMLParser::stringValueForQuery(u"./timecode/rate/timebase"_s, sequence), u"25");
    EXPECT_TRUE(QFXMLParser::stringValueForQuery(u"./nothing"_s, sequence).isNull());
    EXPECT_EQ(QFXMLParser::stringValueForQuery(u"(.//marker)[2]/comment"_s, sequence), u"");
    EXPECT_FALSE(QFXMLParser::stringValueForQuery(u"(.//marker)[2]/comment"_s, sequence).isNull());
    EXPECT_TRUE(QFXMLParser::nodeForQuery(u"./nothing"_s, sequence).isNull());

    EXPECT_EQ(QFXMLParser::stringValuesForQuery(u".//marker/name"_s, sequence),
              (QStringList{"On B", "Sequence marker"}));
    EXPECT_EQ(QFXMLParser::stringValuesForQuery(u".//nothing"_s, sequence), std::nullopt);
    EXPECT_EQ(QFXMLParser::stringValueForQuery(u"./x"_s, XmlNode()), QString());
}

TEST_F(QueryHelpers, QueriesOverSeveralNodesKeepTheirOrderAndSeveralQueriesGiveEachNodeOnce)
{
    const QList<XmlNode> tracks = sequence.nodesForXPath(u".//track"_s);
    ASSERT_EQ(tracks.size(), 3);
    EXPECT_EQ(describe(QFXMLParser::queryNodes({tracks[2], tracks[1], tracks[2]}, u"./clipitem"_s)),
              (QStringList{"clipitem:Y", "clipitem:Z", "clipitem:W", "clipitem:Y", "clipitem:Z"}));
    EXPECT_TRUE(QFXMLParser::queryNodes({}, u"./clipitem"_s).isEmpty());
    const QList<XmlNode> nodes = QFXMLParser::node(
        sequence, QStringList{".//clipitem[@id=\"C\"]", "./media//clipitem[1]", "./bad[[",
                              ".//clipitem[@id=\"C\"] | .//clipitem[@id=\"A\"]"});
    EXPECT_EQ(describe(nodes),
              (QStringList{"clipitem:C", "clipitem:A", "clipitem:W", "clipitem:Y"}));
    EXPECT_EQ(log().count(u"XML parsing error: "), 1);
    EXPECT_TRUE(QFXMLParser::node(sequence, QStringList{}).isEmpty());
}

// The kit's node helpers, which this application does not call: one row each for their
// contract.
TEST_F(QueryHelpers, TheNodeHelpersKeepTheirContract)
{
    using P = QFXMLParser;
    const XmlNode marker = clip("B").nodesForXPath(u"./marker"_s).value(0);
    const XmlNode project = sequence.parent().parent();
    qint64 start = 0;
    qint64 end = 0;
    const std::pair<QString, QString> cases[] = {
        {P::idAttributeForNode(clip("Reel%201")), u"Reel 1"_s},
        {P::nameForNode(clip("C")), u"C roll.mov"_s},
        {P::uuidForNode(project), u"0F2D6C31-4B1E-4C55-9C3E-2A1B8F7D0001"_s},
        {P::filenameFromPathURLString(u"file://localhost/Volumes/Media/C%20roll.mov"_s),
         u"/Volumes/Media/C roll.mov"_s},
        {describe(P::node(marker, u"clipitem"_s)), u"clipitem:B"_s},
        {describe(P::node(marker, u"sequence"_s, {"video", "media"})), u"nil"_s},
        {describe(P::nextSiblingForNode(clip("A"))), u"transitionitem"_s},
        {describe(P::affectedNodesForClip(clip("B"), &start, &end)).join(u' '),
         u"clipitem:A transitionitem clipitem:B transitionitem clipitem:C"_s},
        {u"%1 %2"_s.arg(start).arg(end), u"0 300"_s},
        {describe(P::affectedNodesForClip(XmlNode())).join(u' '), u""_s},
    };
    for (size_t row = 0; row < std::size(cases); ++row)
        EXPECT_EQ(cases[row].first, cases[row].second) << "row " << row;
}

} // namespace
