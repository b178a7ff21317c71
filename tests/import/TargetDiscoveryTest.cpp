// Adopting a target and discovering what it holds, as the window and the command line
// see it through their host.

#include "import/TargetDiscovery.h"

#include "LoggedTest.h"
#include "QtPrinters.h"
#include "RecordingHost.h"
#include "fcp7link/SimulatedFinalCutPro.h"

#include <QDir>

namespace {

const QString data = QStringLiteral(CUEBRIDGE_TEST_DATA);

class DiscoveryTest : public LoggedTest
{
protected:
    QString copy(const QString &dataFile, const QString &as)
    {
        const QString path = QDir(home.path()).filePath(as);
        TempHome::write(path, TempHome::read(data + u'/' + dataFile));
        return path;
    }
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
        const QString path = copy(u"sequence.xml"_qs, QLatin1StringView(c.name));
        ASSERT_TRUE(TargetDiscovery::openFilename(host, path));
        EXPECT_EQ(host.kind.isFCPX, c.fcpx) << c.name;
        EXPECT_EQ(host.kind.isXMLFile, c.xmlFile) << c.name;
        EXPECT_EQ(host.calls.last(), QStringLiteral("path ") + path);
    }
    EXPECT_FALSE(TargetDiscovery::openFilename(host, home.path() + QStringLiteral("/missing.xml")));
    EXPECT_FALSE(TargetDiscovery::openFilename(host, QString()));
}

TEST_F(DiscoveryTest, AnXmemlProjectListsItsSequencesWithNameAndUuid)
{
    discover(copy(u"project.xml"_qs, u"project.xml"_qs));
    EXPECT_EQ(host.items,
              QList<SequenceItem>({{u"Cut 3"_qs, u"0F2D6C31-4B1E-4C55-9C3E-2A1B8F7D0001"_qs,
                                    SequenceItem::Image::Sequence}}));
    EXPECT_EQ(host.calls, QStringList({u"disable"_qs, u"load start"_qs, u"item Cut 3"_qs,
                                       u"enable"_qs, u"todo off"_qs, u"load stop"_qs}));
    EXPECT_FALSE(host.kind.isSequenceOnly);
}

TEST_F(DiscoveryTest, ABareSequenceSetsSequenceOnlyUntilAnFcpxTarget)
{
    discover(copy(u"sequence.xml"_qs, u"bare.xml"_qs));
    EXPECT_EQ(host.items.size(), 1);
    EXPECT_TRUE(host.kind.isSequenceOnly);

    discover(copy(u"project.xml"_qs, u"project.xml"_qs));
    EXPECT_TRUE(host.kind.isSequenceOnly) << "only ever set on this path";

    ASSERT_TRUE(TargetDiscovery::openFilename(host, copy(u"library.fcpxml"_qs, u"l.fcpxml"_qs)));
    EXPECT_FALSE(host.kind.isSequenceOnly);
}

TEST_F(DiscoveryTest, AnUnreadableXmemlFileYieldsNothingAndCountsAsSequenceOnly)
{
    const QString path = QDir(home.path()).filePath(u"junk.xml"_qs);
    TempHome::write(path, QByteArray("\0\1\2 not xml", 12));
    discover(path);
    EXPECT_TRUE(host.items.isEmpty());
    EXPECT_EQ(host.calls,
              QStringList({u"disable"_qs, u"load start"_qs, u"todo off"_qs, u"load stop"_qs}));
    EXPECT_TRUE(host.kind.isSequenceOnly);
}

TEST_F(DiscoveryTest, ASequenceWithoutUuidIsNotListedButStillEnables)
{
    const QString path = QDir(home.path()).filePath(u"nouuid.xml"_qs);
    TempHome::write(path, "<xmeml><sequence><name>S</name></sequence></xmeml>");
    discover(path);
    EXPECT_TRUE(host.items.isEmpty());
    EXPECT_TRUE(host.calls.contains(u"enable"_qs));
}

TEST_F(DiscoveryTest, AnFcpxLibraryListsItsProjectsWithoutImage)
{
    discover(copy(u"library.fcpxml"_qs, u"library.fcpxml"_qs));
    EXPECT_EQ(host.items,
              QList<SequenceItem>({{u"Cut 3"_qs, u"/fcpxml/library/event/project/sequence"_qs}}));
    EXPECT_EQ(host.calls,
              QStringList({u"disable"_qs, u"enable without menu"_qs, u"load start"_qs,
                           u"item Cut 3"_qs, u"enable"_qs, u"todo on"_qs, u"load stop"_qs}));
}

TEST_F(DiscoveryTest, ABundleWithoutFcpxmlIsReported)
{
    const QString bundle = QDir(home.path()).filePath(u"Empty.fcpxmld"_qs);
    TempHome::write(bundle + QStringLiteral("/Info.plist"), "<plist/>");
    discover(bundle);
    EXPECT_EQ(
        host.alerts,
        QStringList(u"Failed to open file / Could not locate any XML files inside bundle."_qs));
    EXPECT_EQ(host.calls.mid(3),
              QStringList({u"enable"_qs, u"load stop"_qs, u"alert Failed to open file"_qs}));
    EXPECT_TRUE(log().contains(QStringLiteral("Could not locate any FCPXML files inside bundle ") +
                               bundle));

    TempHome::write(bundle + QStringLiteral("/Info.fcpxml"),
                    TempHome::read(data + QStringLiteral("/library.fcpxml")));
    host.alerts.clear();
    discover(bundle);
    EXPECT_TRUE(host.alerts.isEmpty());
    EXPECT_EQ(host.items.size(), 1);
}

TEST_F(DiscoveryTest, AProjectInTheEditorListsTheSequencesItReports)
{
    SimulatedFinalCutPro editor;
    const QString path = copy(u"sequence.xml"_qs, u"Review.fcp"_qs);
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
