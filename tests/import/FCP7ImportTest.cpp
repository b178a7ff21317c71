// The Final Cut Pro 7 import procedure and its helpers, run in-process through a
// recording front end; the command-line tests cover the written files.

#include "import/FCP7Import.h"
#include "fcp7link/QFAppleEvents.h"
#include "import/ImportSettings.h"
#include "import/UserTextEscaping.h"
#include "xml/XmlDocument.h"

#include "LoggedTest.h"
#include "QtPrinters.h"
#include "RecordingHost.h"
#include "fcp7link/SimulatedFinalCutPro.h"

#include <QDir>
#include <QFile>

namespace {

const QByteArray project = R"(<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE xmeml>
<xmeml version="5"><project><name>P</name><children>
<sequence id="seq1" explodedTracks="true"><uuid>U-1</uuid><name>Cut</name>
<timecode><rate><ntsc>FALSE</ntsc><timebase>25</timebase></rate><frame>90000</frame>
<displayformat>NDF</displayformat></timecode>
<marker><name>Old</name><in>1</in><out>-1</out></marker>
</sequence></children></project></xmeml>)";

const QByteArray markerList = "#\tTrack\tName\tComment\tStart\tDuration\tColor\n"
                              "1\tV1\tTen\tIn ten\t01:00:10:00\t00:00:05:00\tRed\n"
                              "2\tV1\tEight\tfields\t01:00:11:00\t00:00:00:00\tRed\textra\n";

class ImportTest : public LoggedTest
{
public:
    ImportSettings settings(const QString &target, std::optional<QString> uuid = u"U-1"_qs)
    {
        ImportSettings s;
        s.filename = target;
        s.uuid = uuid;
        return s;
    }
};

TEST_F(ImportTest, LogsEveryStepAndSkipsRecordsWithoutSevenFields)
{
    RecordingHost host(home.file(u"markers.txt"_qs, markerList));
    host.kind.isXMLFile = true;
    FCP7Import::startProcessingWithSettings(host, settings(home.file(u"cut.xml"_qs, project)));

    EXPECT_EQ(host.calls, QStringList({u"process start"_qs, u"process stop"_qs,
                                       u"sheet Markers successfully imported"_qs}));
    const QString text = log();
    qsizetype at = 0;
    for (const char *line :
         {"Sequence UUID: U-1", "Project filename: ", "Start frame: 90000", "Timebase: 25",
          "Marker text: #", "Line count: 4", "Tab count: 7", "Marker name: Ten", "Comment: In ten",
          "Start timecode: 01:00:10:00", "Duration timecode: 00:00:05:00", "Color name: Red",
          "Marker start pos: 250", "Marker duration: 125", "Marker out pos: 375", "Tab count: 8"}) {
        at = text.indexOf(QLatin1StringView(line), at);
        ASSERT_GE(at, 0) << line << " missing or out of order in\n" << text.toStdString();
    }
    EXPECT_FALSE(text.contains(u"Marker name: Eight"));
}

TEST_F(ImportTest, SilentAndFailingEndsStopTheSpinnerAndLeaveTheTargetAsItWas)
{
    const struct
    {
        const char *name;
        /// Changes the marker list path or the settings of an import that would succeed.
        std::function<void(QString &, ImportSettings &)> arrange;
        QStringList calls;
        const char *logged;
    } cases[] = {
        {"NoUuid",
         [](QString &, ImportSettings &s) { s.uuid.reset(); },
         {u"process start"_qs, u"process stop"_qs},
         "Sequence UUID: (null)"},
        {"OnlyAHeader",
         [this](QString &markers, ImportSettings &) {
             markers = home.file(u"h.txt"_qs, "#\tT\tName\n\n");
         },
         {u"process start"_qs, u"process stop"_qs},
         "Line count: 3"},
        {"MissingMarkerList",
         [](QString &markers, ImportSettings &) { markers = u"/nonexistent/markers.txt"_qs; },
         RecordingHost::endedWithSheet("Unable to read marker list"),
         "Error: unable to load marker list"},
        {"MarkerListTooLarge",
         [this](QString &markers, ImportSettings &) {
             markers = home.file(u"huge.txt"_qs, markerList);
             QFile(markers).resize(17 * 1024 * 1024);
         },
         RecordingHost::endedWithSheet("Unable to read marker list"), "Line count: 0"},
        {"SequenceWithoutId",
         [this](QString &, ImportSettings &s) {
             QByteArray xml = project;
             s.filename = home.file(u"noid.xml"_qs, xml.replace("id=\"seq1\"", "ident=\"seq1\""));
         },
         RecordingHost::endedWithSheet("Unable to find the sequence"), "Project filename: "},
        {"NotXml",
         [this](QString &, ImportSettings &s) {
             s.filename = home.file(u"junk.xml"_qs, "\x89PNG\r\n\x1a\n\0\0");
         },
         RecordingHost::endedWithSheet("Unable to find the sequence"), "Unable to parse XML"},
        {"UnwritableOutput",
         [](QString &, ImportSettings &s) {
             s.outputPath = u"/proc/cuebridge-cannot-write.xml"_qs;
         },
         {u"process start"_qs, u"process stop"_qs,
          u"sheet Failed to write marker data to disk."_qs},
         "Marker out pos: 375"}};
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        QString markers = home.file(u"markers.txt"_qs, markerList);
        ImportSettings s = settings(home.file(u"cut.xml"_qs, project));
        c.arrange(markers, s);
        RecordingHost host(markers);
        host.kind.isXMLFile = true;
        const QByteArray before = TempHome::read(s.filename);
        const qsizetype loggedBefore = log().size();
        FCP7Import::startProcessingWithSettings(host, s);
        EXPECT_EQ(host.calls, c.calls) << host.alerts.join(u'\n').toStdString();
        EXPECT_EQ(TempHome::read(s.filename), before);
        const QString logged = log().mid(loggedBefore);
        EXPECT_TRUE(logged.contains(QLatin1StringView(c.logged))) << logged.toStdString();
    }
}

TEST(RenameSequence, KeepsOnlyTheIdAndNamesTheSequenceAfterIt)
{
    const auto doc = XmlDocument::fromBytes(
        R"(<sequence id="seq1" a="1" b="2"><name>Old</name><name>Second</name></sequence>)");
    const XmlNode sequence = doc->rootElement();
    EXPECT_EQ(FCP7Import::renameSequence(sequence), sequence);
    ASSERT_EQ(sequence.attributes().size(), 1);
    EXPECT_EQ(sequence.attributes().first().name(), u"id");
    EXPECT_EQ(sequence.attributes().first().stringValue(), u"seq1-Cuebridge");
    EXPECT_EQ(sequence.childAt(0).stringValue(), u"seq1-Cuebridge");
    EXPECT_EQ(sequence.childAt(1).stringValue(), u"Second");

    const auto noId = XmlDocument::fromBytes(R"(<sequence a="1"><name>Old</name></sequence>)");
    EXPECT_FALSE(FCP7Import::renameSequence(noId->rootElement()));
    EXPECT_EQ(noId->rootElement().attributes().size(), 1);
}

struct EscapeCase
{
    QString input;
    bool strip;
    QString escaped;
};

TEST(EscapeUserInputForXML, EscapesOnceAndStripsOnRequest)
{
    const EscapeCase cases[] = {
        {u"Tom & Jerry’s <cut>"_qs, true, u"Tom &amp; Jerry&apos;s &lt;cut&gt;"_qs},
        {u"“quoted” ‘single’ \"plain\""_qs, true,
         u"&quot;quoted&quot; &apos;single&apos; &quot;plain&quot;"_qs},
        {u"A &amp; B &lt; C"_qs, true, u"A &amp; B &amp;lt; C"_qs},
        {u" \ttwo\r\nlines\t "_qs, true, u"twolines"_qs},
        {u" \ttwo\r\nlines\t "_qs, false, u" \ttwolines\t "_qs},
        {u"é"_qs, true, u"é"_qs},
    };
    for (const EscapeCase &c : cases)
        EXPECT_EQ(UserTextEscaping::escapeUserInputForXML(c.input, c.strip), c.escaped)
            << c.input.toStdString();
}

TEST(ImportSettings, DictionaryKeysAndOffsetUnits)
{
    ImportSettings s;
    s.filename = u"/a/b.xml"_qs;
    s.clearExistingMarkers = true;
    s.frameOffset = -2;
    s.frameOffsetUnitIndex = 1;
    s.uuid = u"U"_qs;
    const QVariantMap map = s.toVariantMap();
    EXPECT_EQ(map.keys(), QStringList({u"clearExistingMarkers"_qs, u"filename"_qs,
                                       u"frameOffset"_qs, u"frameOffsetUnitIndex"_qs, u"uuid"_qs}));
    const ImportSettings back = ImportSettings::fromVariantMap(map);
    EXPECT_EQ(back.toVariantMap(), map);
    EXPECT_FALSE(back.sequenceXPath);

    const std::tuple<int, qint64, qint64> units[] = {{0, 30, -2},      {1, 30, -60}, {2, 30, -3600},
                                                     {3, 25, -180000}, {7, 30, -2},  {1, 0, 0}};
    for (const auto &[unit, timebase, frames] : units) {
        s.frameOffsetUnitIndex = unit;
        EXPECT_EQ(s.offsetInFrames(timebase), frames) << "unit " << unit;
    }
}

class LiveImport : public ImportTest
{
protected:
    void SetUp() override
    {
        ImportTest::SetUp();
        projectPath = home.file(u"Review.fcp"_qs, "FCP project");
        SimulatedFinalCutPro::Project contents;
        QByteArray item = project;
        contents.items.insert(u"U-1"_qs, item.replace("<xmeml version=\"5\">", "<xmeml>"));
        editor.projects.insert(projectPath, contents);
        editor.openProjects << projectPath;
    }
    SimulatedFinalCutPro editor;
    QString projectPath;
};

TEST_F(LiveImport, SendsTheSequenceBackInABinAndOpensItsNewUuid)
{
    RecordingHost host(home.file(u"markers.txt"_qs, markerList));
    FCP7Import::startProcessingWithSettings(host, settings(projectPath));

    EXPECT_EQ(host.alerts, QStringList(u"Markers successfully imported / The markers were imported "
                                       u"into a copy of the sequence inside the Imported Markers "
                                       u"bin."_qs));
    ASSERT_EQ(editor.imported.size(), 1);
    const QString sent = QString::fromUtf8(editor.imported.first());
    const QString head = QStringLiteral("<?xml version=\"1.0\" encoding=\"UTF-8\"?><!DOCTYPE "
                                        "xmeml><xmeml version=\"%1\"><bin><uuid>")
                             .arg(QFAppleEvents::maximumXMEMLVersion());
    EXPECT_TRUE(sent.startsWith(head)) << sent.toStdString();
    const auto doc = XmlDocument::fromBytes(editor.imported.first());
    ASSERT_TRUE(doc);
    const XmlNode sequence = doc->rootElement().nodesForXPath(u"bin/children/sequence"_qs).value(0);
    EXPECT_EQ(sequence.nodesForXPath(u"marker/in"_qs).value(1).stringValue(), u"250");
    EXPECT_EQ(editor.openedItems,
              QStringList(sequence.nodesForXPath(u"uuid"_qs).value(0).stringValue()));
    EXPECT_NE(editor.openedItems.value(0), u"U-1");
}

TEST_F(LiveImport, FailuresOfTheEditorAreReported)
{
    RecordingHost missing(home.file(u"markers.txt"_qs, markerList));
    FCP7Import::startProcessingWithSettings(missing, settings(projectPath, u"U-2"_qs));
    EXPECT_EQ(missing.alerts,
              QStringList(u"Unable to get data for UUID U-2 / Cuebridge has been aborted."_qs));

    editor.fault = [](const AppleEvent &event) -> std::optional<AESendResult> {
        if (event.eventID != fourCharCode("iXML"))
            return std::nullopt;
        AESendResult result;
        result.status = AEStatus::errAETimeout;
        result.stage = AESendStage::Send;
        return result;
    };
    RecordingHost refused(home.file(u"markers.txt"_qs, markerList));
    FCP7Import::startProcessingWithSettings(refused, settings(projectPath));
    EXPECT_EQ(refused.alerts, QStringList(u"Failed to send marker data to Final Cut Pro / Please "
                                          u"report this error to Quillfen."_qs));
    EXPECT_TRUE(editor.openedItems.isEmpty());
}

} // namespace
