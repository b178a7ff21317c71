// Every query form the import and the marker reader search documents with, evaluated
// through the query helpers on the documents of tests/data.

#include "xml/QFXMLParser.h"

#include "LoggedTest.h"
#include "QtPrinters.h"
#include "XmlTestSupport.h"

#include <ostream>

namespace {

struct QueryCase
{
    const char *label;
    const char *document;
    const char *context; ///< evaluated on the document node; empty: the document node
    const char *query;
    QStringList expected;

    friend void PrintTo(const QueryCase &c, std::ostream *os) { *os << c.label; }
};

const char *const sequenceInLibrary = "./fcpxml[1]/library[1]//project[1]/sequence[1]";
const char *const interviewClip = "./fcpxml[1]/library[1]//spine[1]/clip[1]";

class QueryForms : public LoggedTest, public testing::WithParamInterface<QueryCase>
{
};

TEST_P(QueryForms, FindTheExpectedNodesInDocumentOrderWithoutLoggingAnError)
{
    const QueryCase &c = GetParam();
    const auto document = loadTestDocument(c.document);
    ASSERT_TRUE(document);
    XmlNode context = document->node();
    if (*c.context)
        context = QFXMLParser::nodeForQuery(QString::fromUtf8(c.context), context);
    ASSERT_FALSE(context.isNull()) << c.context;

    EXPECT_EQ(describe(QFXMLParser::nodesForQuery(QString::fromUtf8(c.query), context)),
              c.expected);
    EXPECT_FALSE(log().contains(u"XML parsing error")) << log().toStdString();
}

INSTANTIATE_TEST_SUITE_P(
    , QueryForms,
    testing::Values(
        QueryCase{"PositionalPredicatesOnEveryStepAndOnTheAttribute",
                  "library.fcpxml",
                  "",
                  "./fcpxml[1]/library[1]/event[1]/project[1]/@name[1]",
                  {"@name=Cut 3"}},
        QueryCase{"ProjectFormAttribute",
                  "project.fcpxml",
                  "",
                  "./fcpxml[1]/project[1]/@name[1]",
                  {"@name=Cut 3"}},
        QueryCase{"ProjectFormAttributeAbsentInLibraryForm",
                  "library.fcpxml",
                  "",
                  "./fcpxml[1]/project[1]/@name[1]",
                  {}},
        QueryCase{"AttributeWithoutPredicate",
                  "library.fcpxml",
                  sequenceInLibrary,
                  "./@tcStart",
                  {"@tcStart=0s"}},
        QueryCase{"AttributeEqualityPredicate",
                  "library.fcpxml",
                  "",
                  "./fcpxml[1]/resources[1]/format[@id=\"r1\"]/@frameDuration[1]",
                  {"@frameDuration=100/2500s"}},
        QueryCase{"AttributeEqualityPredicateWithoutMatch",
                  "library.fcpxml",
                  "",
                  "./fcpxml[1]/resources[1]/format[@id=\"r9\"]/@frameDuration[1]",
                  {}},
        QueryCase{"TextAfterAnAttributeStepYieldsTheAttribute",
                  "library.fcpxml",
                  sequenceInLibrary,
                  "./@tcFormat[1]/text()",
                  {"@tcFormat=NDF"}},
        QueryCase{"TextAfterAnElementStep",
                  "project.xml",
                  "./xmeml[1]//sequence[1]",
                  "./name[1]/text()",
                  {"text:Cut 3"}},
        QueryCase{"TextAfterADescendantStep",
                  "project.xml",
                  "./xmeml[1]/project[1]",
                  ".//uuid[1]/text()",
                  {"text:0F2D6C31-4B1E-4C55-9C3E-2A1B8F7D0001"}},
        QueryCase{"DescendantsAtAnyDepth",
                  "project.xml",
                  "./xmeml[1]//sequence[1]",
                  ".//marker",
                  {"marker", "marker"}},
        QueryCase{"StringLiteralPredicateThenParentStep",
                  "project.xml",
                  "",
                  "./xmeml[1]//sequence/uuid[\"any uuid at all\"]/..",
                  {"sequence:Cut 3 "}},
        QueryCase{"TopLevelUnionInLibraryForm",
                  "library.fcpxml",
                  "./fcpxml[1]",
                  "(./project[1]/sequence[1] | ./library[1]/event[1]/project/sequence[1])",
                  {"sequence"}},
        QueryCase{"TopLevelUnionInProjectForm",
                  "project.fcpxml",
                  "./fcpxml[1]",
                  "(./project[1]/sequence[1] | ./library[1]/event[1]/project/sequence[1])",
                  {"sequence"}},
        QueryCase{"TopLevelUnionKeepsDocumentOrderAndDropsDuplicates",
                  "library.fcpxml",
                  sequenceInLibrary,
                  "(./spine[1]/gap | ./spine[1]/asset-clip | .//gap)",
                  {"asset-clip:Opening", "gap:Gap"}},
        QueryCase{"UnionStepAfterAPath",
                  "library.fcpxml",
                  sequenceInLibrary,
                  "./spine[1]/(clip | mc-clip | asset-clip | sync-clip | gap | title | ref-clip "
                  "| video)",
                  {"asset-clip:Opening", "clip:Interview", "gap:Gap", "clip:Closing"}},
        QueryCase{"UnionStepFollowedByAStep",
                  "library.fcpxml",
                  "",
                  "./fcpxml[1]/library[1]//project[1]/sequence[1]/spine[1]/(clip | ref-clip | "
                  "video | mc-clip | title | transition | gap)/marker",
                  {"marker:Ten", "marker:Too early", "marker:At the end", "marker:Ten again",
                   "marker:In the gap", "marker:An hour in"}},
        QueryCase{"UnionStepUnderDescendantsFollowedByAStep",
                  "library.fcpxml",
                  "",
                  "./fcpxml[1]/library[1]//project[1]/sequence[1]/spine[1]//(clip | ref-clip | "
                  "video | mc-clip | title | transition | gap)/marker",
                  {"marker:Connected", "marker:Ten", "marker:Too early", "marker:At the end",
                   "marker:Ten again", "marker:In the gap", "marker:An hour in"}},
        QueryCase{"ChildNameListOfAClip",
                  "library.fcpxml",
                  interviewClip,
                  "./(note | conform-rate | timeMap | adjust-corners | adjust-conform | "
                  "adjust-transform | adjust-blend | adjust-stabilization | adjust-rollingShutter "
                  "| adjust-volume | adjust-panner | audio | video | clip | title | caption | "
                  "mc-clip | ref-clip | sync-clip | asset-clip | audition | spine | transition | "
                  "mc-source | gap)",
                  {"video", "clip:Cutaway"}},
        QueryCase{"ChildNameListAfterTheMarkers",
                  "library.fcpxml",
                  interviewClip,
                  "./(chapter-marker | rating | keyword | analysis-marker | audio-channel-source | "
                  "metadata | filter-video-mask | filter-video | filter-audio)",
                  {"chapter-marker:Chapter"}},
        QueryCase{"UnionStepWithBlanksAroundTheNames",
                  "library.fcpxml",
                  sequenceInLibrary,
                  "./spine[1]/( gap|asset-clip )",
                  {"asset-clip:Opening", "gap:Gap"}},
        QueryCase{"ParenthesesInsideALiteralAreLeftAlone",
                  "library.fcpxml",
                  sequenceInLibrary,
                  "./spine[1]/*[@name=\"/(clip | gap)\"]",
                  {}},
        QueryCase{"NodePathOfAnElement",
                  "library.fcpxml",
                  "",
                  "/fcpxml/library/event/project/sequence/spine/clip[2]",
                  {"clip:Closing"}}),
    [](const testing::TestParamInfo<QueryCase> &param) { return std::string(param.param.label); });

TEST_F(LoggedTest, AMalformedQueryIsLoggedAndMatchesNothingTheShortcutsLogNothing)
{
    const auto document = loadTestDocument("library.fcpxml");
    ASSERT_TRUE(document);
    EXPECT_TRUE(QFXMLParser::stringValueForQuery(u"./fcpxml[[1]"_qs, document->node()).isNull());
    EXPECT_FALSE(QFXMLParser::stringValuesForQuery(u"./fcpxml[[1]"_qs, document->node()));
    EXPECT_FALSE(log().contains(u"XML parsing error")) << "the shortcuts count it as no match";
    EXPECT_TRUE(
        QFXMLParser::nodesForQuery(u"./fcpxml[1]/(clip | )"_qs, document->node()).isEmpty());
    EXPECT_TRUE(QFXMLParser::nodesForQuery(u"./fcpxml[[1]"_qs, document->node()).isEmpty());
    EXPECT_EQ(log().count(u"XML parsing error: "_qs), 2) << log().toStdString();
    EXPECT_TRUE(log().contains(u"./fcpxml[[1]"_qs)) << "the description names the query";
}

} // namespace
