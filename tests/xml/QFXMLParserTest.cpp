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
        {u""_qs, u""_qs, 0},
        {u"./xmeml[1]//sequence/uuid[\"A-1\"]/.."_qs, u"./xmeml[1]//sequence/uuid[\"A-1\"]/.."_qs,
         0},
        {u"a&amp;b"_qs, u"a&amp;b"_qs, 0},
        {u"Tom & Jerry"_qs, u"Tom &amp; Jerry"_qs, 0},
        {u"x&amp"_qs, u"x&amp;amp"_qs, 0},
        {u"x&amp;"_qs, u"x&amp;"_qs, 0},
        {u"&lt;"_qs, u"&amp;lt;"_qs, 0}, // other entities are escaped again
        {u"Caf\u00e9"_qs, u"Caf&#233;"_qs, 0},
        {u"a\u00a0b"_qs, u"a&#160;b"_qs, 0},
        {QString(QChar(159)), QString(QChar(159)), 0},
        {QString::fromUcs4(U"\U0001F3AC"), u"&#55356;&#57260;"_qs, 0}, // each half on its own
        {u"a\rb"_qs, u"a&#13;b"_qs, 0},
        {u"a\tb\nc"_qs, u"abc"_qs, 2},
        {QString(QChar(0)) + u'x', u"x"_qs, 1},
        {kept, kept, 0},
        {QString(QChar(19)), u""_qs, 1},
        {u"<\"'>"_qs, u"<\"'>"_qs, 0}};
    for (const auto &c : cases) {
        SCOPED_TRACE(c.input.toStdString());
        const qsizetype strippedBefore = log().count(u"Stripped character");
        const QString escaped = QFXMLParser::escapeQueryString(c.input);
        EXPECT_EQ(escaped, c.expected);
        EXPECT_EQ(escaped.isNull(), c.input.isNull());
        EXPECT_EQ(log().count(u"Stripped character") - strippedBefore, c.strippedCount);
        for (const QChar character : c.input) {
            // Each stripped character is logged as it is (white space is trimmed off the entry).
            if (character.unicode() < 20 && !character.isSpace()) {
                EXPECT_TRUE(log().contains(u"Stripped character "_qs + character));
            }
        }
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
        sequence = QFXMLParser::nodeForQuery(u"./xmeml[1]//sequence[1]"_qs, xmeml->node());
        ASSERT_FALSE(sequence.isNull());
    }

    XmlNode clip(const char *id) const
    {
        return QFXMLParser::nodeForQuery(u".//clipitem[@id=\"%1\"]"_qs.arg(QLatin1String(id)),
                                         sequence);
    }

    std::unique_ptr<XmlDocument> xmeml;
    XmlNode sequence;
};

TEST_F(QueryHelpers, SingleValuesAndLists)
{
    EXPECT_EQ(QFXMLParser::stringValueForQuery(u"./timecode/rate/timebase"_qs, sequence), u"25");
    EXPECT_TRUE(QFXMLParser::stringValueForQuery(u"./nothing"_qs, sequence).isNull());
    EXPECT_EQ(QFXMLParser::stringValueForQuery(u"(.//marker)[2]/comment"_qs, sequence), u"");
    EXPECT_FALSE(QFXMLParser::stringValueForQuery(u"(.//marker)[2]/comment"_qs, sequence).isNull());
    EXPECT_TRUE(QFXMLParser::nodeForQuery(u"./nothing"_qs, sequence).isNull());

    EXPECT_EQ(QFXMLParser::stringValuesForQuery(u".//marker/name"_qs, sequence),
              (QStringList{"On B", "Sequence marker"}));
    EXPECT_EQ(QFXMLParser::stringValuesForQuery(u".//nothing"_qs, sequence), std::nullopt);
    EXPECT_EQ(QFXMLParser::stringValueForQuery(u"./x"_qs, XmlNode()), QString());
}

TEST_F(QueryHelpers, QueriesOverSeveralNodesKeepTheirOrderAndSeveralQueriesGiveEachNodeOnce)
{
    const QList<XmlNode> tracks = sequence.nodesForXPath(u".//track"_qs);
    ASSERT_EQ(tracks.size(), 3);
    EXPECT_EQ(
        describe(QFXMLParser::queryNodes({tracks[2], tracks[1], tracks[2]}, u"./clipitem"_qs)),
        (QStringList{"clipitem:Y", "clipitem:Z", "clipitem:W", "clipitem:Y", "clipitem:Z"}));
    EXPECT_TRUE(QFXMLParser::queryNodes({}, u"./clipitem"_qs).isEmpty());
    const QList<XmlNode> nodes = QFXMLParser::node(
        sequence, QStringList{".//clipitem[@id=\"C\"]", "./media//clipitem[1]", "./bad[[",
                              ".//clipitem[@id=\"C\"] | .//clipitem[@id=\"A\"]"});
    EXPECT_EQ(describe(nodes),
              (QStringList{"clipitem:C", "clipitem:A", "clipitem:W", "clipitem:Y"}));
    EXPECT_EQ(log().count(u"XML parsing error: "), 1);
    EXPECT_TRUE(QFXMLParser::node(sequence, QStringList{}).isEmpty());
}

TEST_F(QueryHelpers, IdsDecodePercentEscapesNamesFallBackToTheIdUuidsDoNot)
{
    EXPECT_EQ(QFXMLParser::idAttributeForNode(clip("A")), u"A");
    EXPECT_EQ(QFXMLParser::idAttributeForNode(clip("Reel%201")), u"Reel 1");
    EXPECT_TRUE(
        QFXMLParser::idAttributeForNode(sequence.nodesForXPath(u"./name"_qs).value(0)).isNull());
    EXPECT_EQ(QFXMLParser::nameForNode(clip("A")), u"A");
    EXPECT_EQ(QFXMLParser::nameForNode(clip("C")), u"C roll.mov");
    EXPECT_TRUE(QFXMLParser::nameForNode(clip("C"), true).isNull());
    EXPECT_EQ(QFXMLParser::nameForNode(clip("Reel%201")), u"Reel 1");
    EXPECT_TRUE(QFXMLParser::nameForNode(sequence.nodesForXPath(u".//rate"_qs).value(0)).isNull());
    EXPECT_TRUE(QFXMLParser::nameForNode(XmlNode()).isNull());

    // Escapes that are not ASCII or not escapes: no id, and a name as it stands.
    const auto odd = XmlDocument::fromBytes("<r><a id=\"50%\"/><b id=\"%C3%A9\"/><c id=\"%zz\"/>"
                                            "<d><name>100%</name></d><e id=\"x%2\"/></r>");
    ASSERT_TRUE(odd);
    for (int i = 0; i < 3; ++i)
        EXPECT_TRUE(QFXMLParser::idAttributeForNode(odd->rootElement().childAt(i)).isNull()) << i;
    EXPECT_EQ(QFXMLParser::nameForNode(odd->rootElement().childAt(3)), u"100%");
    EXPECT_EQ(QFXMLParser::nameForNode(odd->rootElement().childAt(4)), u"x%2");

    EXPECT_EQ(QFXMLParser::uuidForNode(sequence), u"0F2D6C31-4B1E-4C55-9C3E-2A1B8F7D0001");
    const XmlNode project = sequence.parent().parent();
    EXPECT_TRUE(QFXMLParser::uuidForNode(project, true).isNull());
    EXPECT_EQ(QFXMLParser::uuidForNode(project), u"0F2D6C31-4B1E-4C55-9C3E-2A1B8F7D0001");
    EXPECT_TRUE(QFXMLParser::uuidForNode(clip("A")).isNull());
}

TEST(QFXMLParser, FilenamesFromFileUrls)
{
    EXPECT_EQ(
        QFXMLParser::filenameFromPathURLString(u"file://localhost/Volumes/Media/C%20roll.mov"_qs),
        u"/Volumes/Media/C roll.mov");
    EXPECT_EQ(QFXMLParser::filenameFromPathURLString(u"file:///Users/ed/Caf%C3%A9/"_qs),
              u"/Users/ed/Caf\u00e9");
    EXPECT_TRUE(QFXMLParser::filenameFromPathURLString(u"file:///a b.mov"_qs).isNull());
    EXPECT_TRUE(QFXMLParser::filenameFromPathURLString(u"file:///a%zz"_qs).isNull());
    EXPECT_TRUE(QFXMLParser::filenameFromPathURLString(QString()).isNull());
}

TEST_F(QueryHelpers, TreeWalksTheNearestAncestorStopsAtALimitTheNextSiblingClimbsOut)
{
    const XmlNode marker = clip("B").nodesForXPath(u"./marker"_qs).value(0);
    ASSERT_FALSE(marker.isNull());
    EXPECT_EQ(describe(QFXMLParser::node(marker, u"clipitem"_qs)), u"clipitem:B");
    EXPECT_EQ(describe(QFXMLParser::node(marker, u"sequence"_qs)), u"sequence:Cut 3 ");
    EXPECT_TRUE(QFXMLParser::node(marker, u"sequence"_qs, {"video", "media"}).isNull());
    EXPECT_FALSE(QFXMLParser::node(marker, u"track"_qs, {"sequence"}).isNull());
    EXPECT_TRUE(QFXMLParser::node(marker, u"marker"_qs).isNull()) << "not the node itself";
    EXPECT_TRUE(QFXMLParser::node(marker, u"nowhere"_qs).isNull());

    // The next sibling climbs out of the subtree.
    EXPECT_EQ(describe(QFXMLParser::nextSiblingForNode(clip("A"))), u"transitionitem");
    const XmlNode lastOfFirstTrack = clip("Reel%201");
    EXPECT_EQ(QFXMLParser::nextSiblingForNode(lastOfFirstTrack),
              sequence.nodesForXPath(u".//track[2]"_qs).value(0));
    const XmlNode lastElement = xmeml->node().nodesForXPath(u"(//*)[last()]"_qs).value(0);
    EXPECT_TRUE(QFXMLParser::nextSiblingForNode(lastElement).isNull());
    EXPECT_TRUE(QFXMLParser::nextSiblingForNode(XmlNode()).isNull());
}

TEST_F(QueryHelpers, AffectedNodesFollowTransitionItemsAlongTheTrack)
{
    const QStringList run{"clipitem:A", "transitionitem", "clipitem:B", "transitionitem",
                          "clipitem:C"};
    const struct
    {
        const char *clipId;
        QStringList expected;
        qint64 rangeStart;
        qint64 rangeEnd;
    } cases[] = {// Joined on both sides: the run is A, B and C, from A's start to C's end.
                 {"A", run, 0, 300},
                 {"B", run, 0, 300},
                 {"C", run, 0, 300},
                 {"Reel%201", {"clipitem:Reel%201"}, 300, 400},
                 // Transition items at both edges of the track.
                 {"W", {"transitionitem", "clipitem:W", "transitionitem"}, 0, 60},
                 // Joined edges with nothing beyond: the walk runs off the track.
                 {"Y", {"clipitem:Y"}, -1, 20},
                 {"Z", {"clipitem:Z"}, 20, -1}};
    for (const auto &c : cases) {
        SCOPED_TRACE(c.clipId);
        qint64 start = 12345;
        qint64 end = 12345;
        EXPECT_EQ(describe(QFXMLParser::affectedNodesForClip(clip(c.clipId), &start, &end)),
                  c.expected);
        EXPECT_EQ(start, c.rangeStart);
        EXPECT_EQ(end, c.rangeEnd);
        EXPECT_EQ(QFXMLParser::affectedNodesForClip(clip(c.clipId)).size(), c.expected.size());
    }
}

TEST(QFXMLParser, NilArgumentsAnswerNil)
{
    const XmlNode nil;
    EXPECT_TRUE(QFXMLParser::nodesForQuery(u"."_qs, nil).isEmpty());
    EXPECT_TRUE(QFXMLParser::affectedNodesForClip(nil).isEmpty());
    EXPECT_TRUE(QFXMLParser::node(nil, u"a"_qs).isNull());
    EXPECT_TRUE(QFXMLParser::uuidForNode(nil).isNull());
    EXPECT_TRUE(QFXMLParser::idAttributeForNode(nil).isNull());
}

} // namespace
