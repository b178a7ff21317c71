// Every query form the import and the marker reader search documents with, evaluated
// through the query helpers on the documents of tests/data.

#include "xml/QFXMLParser.h"

#include "LoggedTest.h"
#include "QtPrinters.h"
#include "XmlTestSupport.h"

namespace {

TEST_F(LoggedTest, QueryFormsFindTheExpectedNodesInDocumentOrderWithoutLoggingAnError)
{
    const char *const sequenceInLibrary = "./fcpxml[1]/library[1]//project[1]/sequence[1]";
    const char *const interviewClip = "./fcpxml[1]/library[1]//spine[1]/clip[1]";
    const char *const topLevelUnion =
        "(./project[1]/sequence[1] | ./library[1]/event[1]/project/sequence[1])";
    const struct
    {
        const char *document;
        const char *context; ///< evaluated on the document node; empty: the document node
        const char *query;
        QStringList expected;
    } cases[] = {
        // Positional predicates on every step and on the attribute, in both forms.
        {"library.fcpxml",
         "",
         "./fcpxml[1]/library[1]/event[1]/project[1]/@name[1]",
         {"@name=Cut 3"}},
        {"library.fcpxml", sequenceInLibrary, "./@tcStart", {"@tcStart=0s"}},
        {"library.fcpxml",
         "",
         "./fcpxml[1]/resources[1]/format[@id=\"r1\"]/@frameDuration[1]",
         {"@frameDuration=100/2500s"}},
        // Text after an attribute step yields the attribute.
        {"library.fcpxml", sequenceInLibrary, "./@tcFormat[1]/text()", {"@tcFormat=NDF"}},
        {"project.xml", "./xmeml[1]//sequence[1]", "./name[1]/text()", {"text:Cut 3"}},
        {"project.xml", "./xmeml[1]//sequence[1]", ".//marker", {"marker", "marker"}},
        // A string literal as predicate, then the parent step.
        {"project.xml",
         "",
         "./xmeml[1]//sequence/uuid[\"any uuid at all\"]/..",
         {"sequence:Cut 3 "}},
        {"library.fcpxml", "./fcpxml[1]", topLevelUnion, {"sequence"}},
        // Unions keep document order and drop duplicates.
        {"library.fcpxml",
         sequenceInLibrary,
         "(./spine[1]/gap | ./spine[1]/asset-clip | .//gap)",
         {"asset-clip:Opening", "gap:Gap"}},
        {"library.fcpxml",
         sequenceInLibrary,
         "./spine[1]/(clip | mc-clip | asset-clip | sync-clip | gap | title | ref-clip | video)",
         {"asset-clip:Opening", "clip:Interview", "gap:Gap", "clip:Closing"}},
        {"library.fcpxml",
         "",
         "./fcpxml[1]/library[1]//project[1]/sequence[1]/spine[1]/(clip | ref-clip | video | "
         "mc-clip | title | transition | gap)/marker",
         {"marker:Ten", "marker:Too early", "marker:At the end", "marker:Ten again",
          "marker:In the gap", "marker:An hour in"}},
        {"library.fcpxml",
         "",
         "./fcpxml[1]/library[1]//project[1]/sequence[1]/spine[1]//(clip | ref-clip | video | "
         "mc-clip | title | transition | gap)/marker",
         {"marker:Connected", "marker:Ten", "marker:Too early", "marker:At the end",
          "marker:Ten again", "marker:In the gap", "marker:An hour in"}},
        // The name lists of a clip's children before and after its markers.
        {"library.fcpxml",
         interviewClip,
         "./(note | conform-rate | timeMap | adjust-corners | adjust-conform | adjust-transform | "
         "adjust-blend | adjust-stabilization | adjust-rollingShutter | adjust-volume | "
         "adjust-panner | audio | video | clip | title | caption | mc-clip | ref-clip | sync-clip "
         "| asset-clip | audition | spine | transition | mc-source | gap)",
         {"video", "clip:Cutaway"}},
        {"library.fcpxml",
         interviewClip,
         "./(chapter-marker | rating | keyword | analysis-marker | audio-channel-source | metadata "
         "| filter-video-mask | filter-video | filter-audio)",
         {"chapter-marker:Chapter"}},
        // Parentheses inside a literal are left alone.
        {"library.fcpxml", sequenceInLibrary, "./spine[1]/*[@name=\"/(clip | gap)\"]", {}},
        // The node path of an element.
        {"library.fcpxml",
         "",
         "/fcpxml/library/event/project/sequence/spine/clip[2]",
         {"clip:Closing"}}};
    for (const auto &c : cases) {
        SCOPED_TRACE(c.query);
        const auto document = loadTestDocument(c.document);
        ASSERT_TRUE(document);
        XmlNode context = document->node();
        if (*c.context)
            context = QFXMLParser::nodeForQuery(QString::fromUtf8(c.context), context);
        ASSERT_FALSE(context.isNull()) << c.context;
        EXPECT_EQ(describe(QFXMLParser::nodesForQuery(QString::fromUtf8(c.query), context)),
                  c.expected);
    }
    EXPECT_FALSE(log().contains(u"XML parsing error")) << log().toStdString();
}

TEST_F(LoggedTest, AMalformedQueryIsLoggedAndMatchesNothingTheShortcutsLogNothing)
{
    const auto document = loadTestDocument("library.fcpxml");
    ASSERT_TRUE(document);
    EXPECT_TRUE(QFXMLParser::stringValueForQuery(u"./fcpxml[[1]"_s, document->node()).isNull());
    EXPECT_FALSE(QFXMLParser::stringValuesForQuery(u"./fcpxml[[1]"_s, document->node()));
    EXPECT_FALSE(log().contains(u"XML parsing error")) << "the shortcuts count it as no match";
    EXPECT_TRUE(QFXMLParser::nodesForQuery(u"./fcpxml[1]/(clip | )"_s, document->node()).isEmpty());
    EXPECT_TRUE(QFXMLParser::nodesForQuery(u"./fcpxml[[1]"_s, document->node()).isEmpty());
    EXPECT_EQ(log().count(u"XML parsing error: "_s), 2) << log().toStdString();
    EXPECT_TRUE(log().contains(u"./fcpxml[[1]"_s)) << "the description names the query";
}

} // namespace
