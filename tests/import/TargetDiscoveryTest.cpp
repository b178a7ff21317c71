// Adopting a target and discovering what it holds, as the window and the command line
// see it through their host.

#include "import/TargetDiscovery.h"

#include "LoggedTest.h"
#include "QtPrinters.h"
#include "RecordingHost.h"
#include "fcp7link/SimulatedFinalCutPro.h"

#include <QDir>

namespace {

class DiscoveryTest : public LoggedTest
{
protected:
    void discover(const QString &path)
    {
        ASSERT_TRUE(TargetDiscovery::openFilename(host, path)) << path.toStdString();
        host.calls.clear();
        TargetDiscovery::updateProject(host, path);
    }
    RecordingHost host;
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
        const QString path = home.copyOfData(u"sequence.xml"_qs, QLatin1StringView(c.name));
        ASSERT_TRUE(TargetDiscovery::openFilename(host, path));
        EXPECT_EQ(host.kind.isFCPX, c.fcpx) << c.name;
        EXPECT_EQ(host.kind.isXMLFile, c.xmlFile) << c.name;
        EXPECT_EQ(host.calls.last(), u"path "_qs + path);
    }
    EXPECT_FALSE(TargetDiscovery::openFilename(host, home.path() + u"/missing.xml"_qs));
    EXPECT_FALSE(TargetDiscovery::openFilename(host, QString()));
}

TEST_F(DiscoveryTest, EachKindOfFileListsWhatItHolds)
{
    const QStringList listed{u"disable"_qs, u"load start"_qs, u"item Cut 3"_qs, u"item No uuid"_qs,
                             u"enable"_qs,  u"todo off"_qs,   u"load stop"_qs};
    // Sequences without a uuid (other editors' exports) are listed by their path.
    const SequenceItem cut{u"Cut 3"_qs, u"0F2D6C31-4B1E-4C55-9C3E-2A1B8F7D0001"_qs,
                           SequenceItem::Image::Sequence};
    const SequenceItem noUuid{u"No uuid"_qs, u"/xmeml/project/children/sequence[2]"_qs,
                              SequenceItem::Image::Sequence};
    const struct
    {
        QString target;
        QList<SequenceItem> items;
        QStringList calls; ///< none: not checked
        bool sequenceOnly;
    } cases[] = {
        {home.copyOfData(u"project.xml"_qs), {cut, noUuid}, listed, false},
        {home.copyOfData(u"sequence.xml"_qs, u"bare.xml"_qs),
         {{u"Selects"_qs, u"0F2D6C31-4B1E-4C55-9C3E-2A1B8F7D0002"_qs,
           SequenceItem::Image::Sequence}},
         {},
         true},
        // Only ever set on this path: a project after a bare sequence keeps it.
        {home.copyOfData(u"project.xml"_qs, u"again.xml"_qs), {cut, noUuid}, {}, true},
        {home.file(u"junk.xml"_qs, QByteArray("\0\1\2 not xml", 12)),
         {},
         {u"disable"_qs, u"load start"_qs, u"todo off"_qs, u"load stop"_qs},
         true},
        {home.file(u"nouuid.xml"_qs, "<xmeml><sequence><name>S</name></sequence></xmeml>"),
         {{u"S"_qs, u"/xmeml/sequence"_qs, SequenceItem::Image::Sequence}},
         {u"disable"_qs, u"load start"_qs, u"item S"_qs, u"enable"_qs, u"todo off"_qs,
          u"load stop"_qs},
         true},
        {home.copyOfData(u"library.fcpxml"_qs),
         {{u"Cut 3"_qs, u"/fcpxml/library/event/project/sequence"_qs}},
         {u"disable"_qs, u"enable without menu"_qs, u"load start"_qs, u"item Cut 3"_qs,
          u"enable"_qs, u"todo on"_qs, u"load stop"_qs},
         false},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.target.toStdString());
        discover(c.target);
        EXPECT_EQ(host.items, c.items);
        if (!c.calls.isEmpty()) {
            EXPECT_EQ(host.calls, c.calls);
        }
        EXPECT_EQ(host.kind.isSequenceOnly, c.sequenceOnly);
    }
}

TEST_F(DiscoveryTest, ABundleWithoutFcpxmlIsReported)
{
    const QString bundle = home.filePath(u"Empty.fcpxmld"_qs);
    home.file(u"Empty.fcpxmld/Info.plist"_qs, "<plist/>");
    discover(bundle);
    EXPECT_EQ(
        host.alerts,
        QStringList(u"Failed to open file / Could not locate any XML files inside bundle."_qs));
    EXPECT_EQ(host.calls.mid(3),
              QStringList({u"enable"_qs, u"load stop"_qs, u"alert Failed to open file"_qs}));
    EXPECT_TRUE(log().contains(u"Could not locate any FCPXML files inside bundle "_qs + bundle));

    home.copyOfData(u"library.fcpxml"_qs, u"Empty.fcpxmld/Info.fcpxml"_qs);
    host.alerts.clear();
    discover(bundle);
    EXPECT_TRUE(host.alerts.isEmpty());
    EXPECT_EQ(host.items.size(), 1);
}

TEST_F(DiscoveryTest, AProjectInTheEditorListsTheSequencesItReports)
{
    SimulatedFinalCutPro editor;
    const QString path = home.copyOfData(u"sequence.xml"_qs, u"Review.fcp"_qs);
    SimulatedFinalCutPro::Project contents;
    contents.tableOfContents = "<xmeml><bin><children><sequence><name>A</name><uuid>U-A</uuid>"
                               "</sequence><sequence><name>B</name></sequence></children></bin>"
                               "</xmeml>";
    editor.projects.insert(path, contents);
    editor.openProjects << path;
    discover(path);
    EXPECT_EQ(host.items,
              QList<SequenceItem>({{u"A"_qs, u"U-A"_qs, SequenceItem::Image::Sequence}}));
    EXPECT_TRUE(host.calls.contains(u"enable"_qs));
}

} // namespace
