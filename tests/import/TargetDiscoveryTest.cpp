// Adopting a target and discovering what it holds, as the window and the command line
// show it.

#include "import/TargetDiscovery.h"

#include "LoggedTest.h"
#include "QtPrinters.h"
#include "fcp7link/SimulatedFinalCutPro.h"

#include <QDir>

namespace {

class DiscoveryTest : public LoggedTest
{
protected:
    TargetDiscovery::Result discover(const QString &path)
    {
        EXPECT_TRUE(TargetDiscovery::openFilename(kind, path)) << path.toStdString();
        return TargetDiscovery::updateProject(kind, path);
    }
    TargetKind kind;
};

TEST_F(DiscoveryTest, TheExtensionDecidesTheKindWhateverItsCase)
{
    struct
    {
        const char *name;
        bool fcpx, xmlFile;
    } const cases[] = {{"a.XML", false, true},   {"a.xml", false, true},
                       {"b.FCPXML", true, true}, {"b.fcpxmld", true, true},
                       {"c.fcp", false, false},  {"Project", false, false}};
    for (const auto &c : cases) {
        const QString path = home.copyOfData(u"sequence.xml"_s, QLatin1StringView(c.name));
        ASSERT_TRUE(TargetDiscovery::openFilename(kind, path));
        EXPECT_EQ(kind.isFCPX, c.fcpx) << c.name;
        EXPECT_EQ(kind.isXMLFile, c.xmlFile) << c.name;
    }
    EXPECT_FALSE(TargetDiscovery::openFilename(kind, home.path() + u"/missing.xml"_s));
    EXPECT_FALSE(TargetDiscovery::openFilename(kind, QString()));
}

/// Two events, each with a project; the second also with a clip of its own.
const QByteArray twoEvents = R"(<fcpxml version="1.8"><library>
<event name="One"><project name="First"><sequence/></project></event>
<event name="Two"><project name="Second"><sequence/></project>
<project name="P"><clip name="Clip"/></project></event></library></fcpxml>)";

TEST_F(DiscoveryTest, EachKindOfFileListsWhatItHolds)
{
    const auto sequence = [](const char16_t *title, const char16_t *object) {
        return SequenceItem{QString::fromUtf16(title), QString::fromUtf16(object),
                            SequenceItem::Image::Sequence};
    };
    const struct
    {
        QString target;
        QList<SequenceItem> items;
        bool menuEnabled;
        bool sequenceOnly;
    } cases[] = {
        // Sequences without a uuid (other editors' exports) are listed by their path.
        {home.copyOfData(u"project.xml"_s),
         {sequence(u"Cut 3", u"0F2D6C31-4B1E-4C55-9C3E-2A1B8F7D0001"),
          sequence(u"No uuid", u"/xmeml/project/children/sequence[2]")},
         true,
         false},
        {home.copyOfData(u"sequence.xml"_s, u"bare.xml"_s),
         {sequence(u"Selects", u"0F2D6C31-4B1E-4C55-9C3E-2A1B8F7D0002")},
         true,
         true},
        {home.file(u"junk.xml"_s, QByteArray("\0\1\2 not xml", 12)), {}, false, true},
        {home.file(u"nouuid.xml"_s, "<xmeml><sequence><name>S</name></sequence></xmeml>"),
         {sequence(u"S", u"/xmeml/sequence")},
         true,
         true},
        {home.copyOfData(u"library.fcpxml"_s),
         {{u"Cut 3"_s, u"/fcpxml/library/event/project/sequence"_s}},
         true,
         false},
        // Every event of a library.
        {home.file(u"events.fcpxml"_s, twoEvents),
         {{u"First"_s, u"/fcpxml/library/event[1]/project/sequence"_s},
          {u"Second"_s, u"/fcpxml/library/event[2]/project[1]/sequence"_s},
          {u"Clip"_s, u"/fcpxml/library/event[2]/project[2]/clip"_s,
           SequenceItem::Image::FCPXEvent}},
         true,
         false},
        {home.file(u"junk.fcpxml"_s, "not xml"), {}, false, false},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.target.toStdString());
        const TargetDiscovery::Result result = discover(c.target);
        EXPECT_EQ(result.found.items, c.items);
        EXPECT_EQ(result.found.menuEnabled, c.menuEnabled);
        EXPECT_EQ(result.found.todoEnabled, kind.isFCPX);
        EXPECT_EQ(result.sequenceOnly, c.sequenceOnly);
    }
}

TEST_F(DiscoveryTest, AProjectInTheEditorListsTheSequencesItReports)
{
    SimulatedFinalCutPro editor;
    const QString path = home.copyOfData(u"sequence.xml"_s, u"Review.fcp"_s);
    SimulatedFinalCutPro::Project contents;
    contents.tableOfContents = "<xmeml><bin><children><sequence><name>A</name><uuid>U-A</uuid>"
                               "</sequence><sequence><name>B</name></sequence></children></bin>"
                               "</xmeml>";
    editor.projects.insert(path, contents);
    editor.openProjects << path;
    const TargetDiscovery::Result result = discover(path);
    EXPECT_EQ(result.found.items,
              QList<SequenceItem>({{u"A"_s, u"U-A"_s, SequenceItem::Image::Sequence}}));
    EXPECT_TRUE(result.found.controlsEnabled);
}

} // namespace
