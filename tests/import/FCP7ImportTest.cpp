// The Final Cut Pro 7 import procedure and its helpers, run in-process through a
// recording front end; the command-line tests cover the written files.

#include "import/FCP7Import.h"
#include "fcp7link/QFAppleEvents.h"
#include "import/ImportSettings.h"
#include "import/UserTextEscaping.h"
#include "xml/XmlDocument.h"

#include "LoggedTest.h"
#include "QtPrinters.h"
#include "fcp7link/SimulatedFinalCutPro.h"

#include <QDir>

#include <QFile>
#include <algorithm>
#include <future>

#include <sys/stat.h>

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

/// The alert an outcome ends with: "message / informative text", or nothing.
QString alertOf(const ImportOutcome &outcome)
{
    return outcome.hasAlert() ? outcome.messageText + u" / "_s + outcome.informativeText
                              : QString();
}

class ImportTest : public LoggedTest
{
public:
    /// Imports the marker list into the target of the settings, an XMEML file unless
    /// the kind says otherwise.
    static ImportOutcome import(const QString &markers, const ImportSettings &s,
                                TargetKind kind = {.isXMLFile = true})
    {
        return FCP7Import::startProcessingWithSettings(kind, markers, s);
    }

    ImportSettings settings(const QString &target, std::optional<QString> uuid = u"U-1"_s)
    {
        ImportSettings s;
        s.filename = target;
        s.uuid = uuid;
        return s;
    }
};

TEST_F(ImportTest, LogsEveryStepAndImportsARecordWithExtraColumns)
{
    const ImportOutcome outcome =
        import(home.file(u"markers.txt"_s, markerList), settings(home.file(u"cut.xml"_s, project)));
    EXPECT_EQ(outcome.messageText, u"Markers successfully imported");
    const QString text = log();
    qsizetype at = 0;
    for (const char *line :
         {"Sequence UUID: U-1", "Project filename: ", "Start frame: 90000", "Timebase: 25",
          "Marker text: #", "Line count: 4", "Tab count: 7", "Marker name: Ten", "Comment: In ten",
          "Start timecode: 01:00:10:00", "Duration timecode: 00:00:05:00", "Color name: Red",
          "Marker start pos: 250", "Marker duration: 125", "Marker out pos: 375", "Tab count: 8",
          "Marker name: Eight"}) {
        at = text.indexOf(QLatin1StringView(line), at);
        ASSERT_GE(at, 0) << line << " missing or out of order in\n" << text.toStdString();
    }
}

TEST_F(ImportTest, SilentAndFailingEndsLeaveTheTargetAsItWas)
{
    const struct
    {
        const char *name;
        /// Changes the marker list path or the settings of an import that would succeed.
        std::function<void(QString &, ImportSettings &)> arrange;
        const char *message; ///< empty: a silent end
        const char *logged;
    } cases[] = {
        {"NoUuid", [](QString &, ImportSettings &s) { s.uuid.reset(); }, "",
         "Sequence UUID: (null)"},
        {"OnlyAHeader",
         [this](QString &markers, ImportSettings &) {
             markers = home.file(u"h.txt"_s, "#\tT\tName\tC\tS\tD\tColour\n\n");
         },
         "", "Line count: 3"},
        {"NoLineGivesAMarker",
         [this](QString &markers, ImportSettings &) {
             markers = home.file(u"bad.txt"_s, "#\tT\tName\tC\tS\tD\tColour\n"
                                               "1\tV1\tA\tB\t00:00:11\t00:00:00:00\tRed\n");
         },
         "Nothing imported", "Line 2 skipped: start timecode \"00:00:11\" is not HH:MM:SS:FF"},
        {"NoListOfAnyForm",
         [this](QString &markers, ImportSettings &) {
             markers = home.file(u"prose.txt"_s, "Dear editor,\nplease cut the flare.\n");
         },
         "Unable to read marker list", "Error: unable to load marker list"},
        {"MissingMarkerList",
         [](QString &markers, ImportSettings &) { markers = u"/nonexistent/markers.txt"_s; },
         "Unable to read marker list", "Error: unable to load marker list"},
        {"MarkerListTooLarge",
         [this](QString &markers, ImportSettings &) {
             markers = home.file(u"huge.txt"_s, markerList);
             QFile(markers).resize(17 * 1024 * 1024);
         },
         "Unable to read marker list", "Line count: 0"},
        {"NotXml",
         [this](QString &, ImportSettings &s) {
             s.filename = home.file(u"junk.xml"_s, "\x89PNG\r\n\x1a\n\0\0");
         },
         "Unable to find the sequence", "Unable to parse XML"},
        {"UnwritableOutput",
         [](QString &, ImportSettings &s) { s.outputPath = u"/proc/cuebridge-cannot-write.xml"_s; },
         "Failed to write marker data to disk.", "Marker out pos: 375"}};
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        QString markers = home.file(u"markers.txt"_s, markerList);
        ImportSettings s = settings(home.file(u"cut.xml"_s, project));
        c.arrange(markers, s);
        const QByteArray before = TempHome::read(s.filename);
        const qsizetype loggedBefore = log().size();
        const ImportOutcome outcome = import(markers, s);
        EXPECT_EQ(outcome.messageText, QLatin1StringView(c.message))
            << outcome.informativeText.toStdString();
        EXPECT_EQ(TempHome::read(s.filename), before);
        const QString logged = log().mid(loggedBefore);
        EXPECT_TRUE(logged.contains(QLatin1StringView(c.logged))) << logged.toStdString();
    }
}

// Two sequences, the second at 29.97 drop frame; and a third as other editors export
// it, with neither uuid nor id.
const QByteArray twoSequences = R"(<?xml version="1.0" encoding="UTF-8"?>
<xmeml version="5"><project><name>P</name><children>
<sequence id="first"><uuid>U-1</uuid><name>First</name>
<timecode><rate><timebase>25</timebase></rate><frame>0</frame></timecode></sequence>
<sequence id="second"><uuid>U-2</uuid><name>Second</name>
<timecode><rate><ntsc>TRUE</ntsc><timebase>30</timebase></rate><frame>107892</frame>
<displayformat>DF</displayformat></timecode></sequence>
<sequence><name>Exported</name>
<timecode><rate><timebase>25</timebase></rate><frame>0</frame></timecode></sequence>
</children></project></xmeml>)";

TEST_F(ImportTest, EveryLineIsWrittenIntoTheChosenSequenceOrSkippedWithItsReason)
{
    const struct
    {
        const char *line;
        const char *skipped; ///< the reason's start; none: written
    } lines[] = {
        {"#\tTrack\tName\tComment\tStart\tDuration\tColor", nullptr},
        {"1\tV1\tGreen\t\t01:00:10;00\t00:00:00;00\tgreen", nullptr},
        {"2\tV1\tNo colour\tc\t01:00:11;00\t00:00:01;00\t", nullptr},
        {"3\tV1\tShort\tc\t00:00:11\t00:00:00;00\tRed", "start timecode \"00:00:11\" is not"},
        {"4\tV1\tFrame 30\tc\t01:00:05:30\t00:00:00:00\tRed", "start timecode \"01:00:05:30\" has"},
        {"5\tV1\tDropped\tc\t01:01:00;01\t00:00:00;00\tRed", "start timecode \"01:01:00;01\" does"},
        {"6\tV1\tDay\tc\t24:00:00;00\t00:00:00;00\tRed", "start timecode \"24:00:00;00\" has"},
        {"7\tV1\tLong\tc\t01:00:00;00\t00:60:00;00\tRed", "duration timecode \"00:60:00;00\""},
        {"8\tV1\tcut short", "seven columns expected, found 3"},
        {"9\tV1\tMauve\tc\t01:00:12;00\t00:00:00;00\tMauve", nullptr},
        {"10\tV1\tNotes\tc\t01:00:13;00\t00:00:00;00\tRed\tan eighth column", nullptr},
    };
    QByteArray list;
    for (const auto &line : lines)
        list += QByteArray(line.line) + "\r\n";
    const QString target = home.file(u"two.xml"_s, twoSequences);
    const ImportOutcome outcome =
        import(home.file(u"markers.txt"_s, list), settings(target, u"U-2"_s));

    const ImportReport &report = outcome.report;
    EXPECT_TRUE(report.accountsForEveryLine());
    EXPECT_EQ(report.headerLines, QList<qsizetype>({1}));
    EXPECT_EQ(outcome.messageText, u"Some markers failed to import");
    QList<qsizetype> written;
    for (const ImportReport::Marker &marker : report.written)
        written += marker.lines;
    for (qsizetype i = 1; i < qsizetype(std::size(lines)); ++i) {
        SCOPED_TRACE(lines[i].line);
        const auto skipped = std::find_if(report.skipped.begin(), report.skipped.end(),
                                          [i](const SkippedLine &s) { return s.line == i + 1; });
        if (lines[i].skipped)
            EXPECT_TRUE(skipped != report.skipped.end() &&
                        skipped->why.startsWith(QLatin1StringView(lines[i].skipped)))
                << (skipped == report.skipped.end() ? "written" : skipped->why.toStdString());
        else
            EXPECT_TRUE(written.contains(i + 1));
    }
    EXPECT_EQ(report.written.value(2).note, u"colour \"Mauve\" is none of ours: the marker is red");

    const auto doc = XmlDocument::fromFile(target);
    ASSERT_TRUE(doc);
    const auto markersOf = [&doc](const char *id) {
        return doc->rootElement()
            .nodesForXPath(
                u"project/children/sequence[@id='%1']/marker/name"_s.arg(QLatin1StringView(id)))
            .size();
    };
    EXPECT_EQ(markersOf("first"), 0);
    EXPECT_EQ(markersOf("second-Cuebridge"), 4);
    // 01:00:10;00 at 29.97 drop frame is frame 107892 + 300, and green is Green.
    const XmlNode first =
        doc->rootElement()
            .nodesForXPath(u"project/children/sequence[@id='second-Cuebridge']/marker"_s)
            .value(0);
    EXPECT_EQ(first.nodesForXPath(u"in"_s).value(0).stringValue(), u"300");
    EXPECT_EQ(first.nodesForXPath(u"color/green"_s).value(0).stringValue(), u"191");
}

TEST_F(ImportTest, AListWithoutHeaderOrAFileChangedMeanwhileIsNotTakenForSuccess)
{
    const QString target = home.file(u"two.xml"_s, twoSequences);
    // A sequence without a uuid is chosen by its path.
    ImportSettings byPath = settings(target, u"/xmeml/project/children/sequence[3]"_s);
    const ImportOutcome partly =
        import(home.file(u"markers.txt"_s, "1\tV1\tA\t\t00:00:01:00\t00:00:00:00\tRed\n"
                                           "2\tV1\tB\t\t00:00:02:00\t00:00:00:00\tRed\n"),
               byPath);
    EXPECT_EQ(partly.status, ImportOutcome::Status::SomeMarkersFailed);
    EXPECT_EQ(partly.report.lineTexts(),
              QStringList(u"Line 1: line 1 holds a marker, not a column header: skipped"_s));
    EXPECT_TRUE(TempHome::read(target).contains("<sequence id=\"Exported-Cuebridge\">"));

    // Another import replaces the file after this one read it: its markers stay. The
    // list is a pipe, so this import waits on it after reading the target.
    const QString changed = home.file(u"changed.xml"_s, project);
    const QString pipe = home.filePath(u"markers.fifo"_s);
    ASSERT_EQ(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    auto running = std::async(std::launch::async, [&] { return import(pipe, settings(changed)); });
    QFile list(pipe);
    ASSERT_TRUE(list.open(QIODevice::WriteOnly)); // returns once the import opens it
    TempHome::write(changed, "<xmeml version=\"5\"/>");
    list.write(markerList);
    list.close();
    const ImportOutcome lost = running.get();
    EXPECT_EQ(lost.messageText, u"Failed to write marker data to disk.");
    EXPECT_TRUE(lost.informativeText.contains(u"changed during the import"));
    EXPECT_EQ(TempHome::read(changed), "<xmeml version=\"5\"/>");
}

// Times from the timeline's start (subtitles, chapters) count from the sequence's first
// frame, to the nearest frame at its rate.
TEST_F(ImportTest, TimesFromTheTimelinesStartLandFromItsFirstFrame)
{
    const QString target = home.file(u"cut.xml"_s, project);
    const ImportOutcome outcome = import(
        home.file(u"chapters.txt"_s, "0:00 Intro\n0:02 Two\n1:00:00 Late\n"), settings(target));
    EXPECT_EQ(outcome.status, ImportOutcome::Status::Imported)
        << outcome.informativeText.toStdString();
    const auto doc = XmlDocument::fromFile(target);
    ASSERT_TRUE(doc);
    QStringList ins;
    for (const XmlNode &in : doc->rootElement().nodesForXPath(
             u"project/children/sequence[@id='seq1-Cuebridge']/marker/in"_s))
        ins << in.stringValue();
    EXPECT_EQ(ins, QStringList({u"1"_s, u"0"_s, u"50"_s, u"90000"_s}));
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
        {u"Tom & Jerry’s <cut>"_s, true, u"Tom &amp; Jerry&apos;s &lt;cut&gt;"_s},
        {u"“quoted” ‘single’ \"plain\""_s, true,
         u"&quot;quoted&quot; &apos;single&apos; &quot;plain&quot;"_s},
        {u"A &amp; B &lt; C"_s, true, u"A &amp; B &amp;lt; C"_s},
        {u" \ttwo\r\nlines\t "_s, true, u"twolines"_s},
        {u" \ttwo\r\nlines\t "_s, false, u" \ttwolines\t "_s},
        {u"é"_s, true, u"é"_s},
    };
    for (const EscapeCase &c : cases)
        EXPECT_EQ(UserTextEscaping::escapeUserInputForXML(c.input, c.strip), c.escaped)
            << c.input.toStdString();
}

TEST(ImportSettings, DictionaryKeysAndOffsetUnits)
{
    ImportSettings s;
    s.filename = u"/a/b.xml"_s;
    s.clearExistingMarkers = true;
    s.frameOffset = -2;
    s.frameOffsetUnit = OffsetUnit::Seconds;
    s.uuid = u"U"_s;
    const QVariantMap map = s.toVariantMap();
    EXPECT_EQ(map.keys(), QStringList({u"clearExistingMarkers"_s, u"filename"_s, u"frameOffset"_s,
                                       u"frameOffsetUnitIndex"_s, u"uuid"_s}));
    const ImportSettings back = ImportSettings::fromVariantMap(map);
    EXPECT_EQ(back.toVariantMap(), map);
    EXPECT_FALSE(back.sequenceXPath);

    const std::tuple<int, qint64, qint64> units[] = {{0, 30, -2},      {1, 30, -60}, {2, 30, -3600},
                                                     {3, 25, -180000}, {7, 30, -2},  {1, 0, 0}};
    for (const auto &[unit, timebase, frames] : units) {
        s.frameOffsetUnit = offsetUnitForIndex(unit);
        EXPECT_EQ(s.offsetInFrames(timebase), frames) << "unit " << unit;
    }
}

class LiveImport : public ImportTest
{
protected:
    void SetUp() override
    {
        ImportTest::SetUp();
        projectPath = home.file(u"Review.fcp"_s, "FCP project");
        SimulatedFinalCutPro::Project contents;
        QByteArray item = project;
        contents.items.insert(u"U-1"_s, item.replace("<xmeml version=\"5\">", "<xmeml>"));
        editor.projects.insert(projectPath, contents);
        editor.openProjects << projectPath;
    }
    SimulatedFinalCutPro editor;
    QString projectPath;
};

TEST_F(LiveImport, SendsTheSequenceBackInABinAndOpensItsNewUuid)
{
    const ImportOutcome outcome =
        import(home.file(u"markers.txt"_s, markerList), settings(projectPath), {});
    EXPECT_EQ(alertOf(outcome), u"Markers successfully imported / The markers were imported into "
                                u"a copy of the sequence inside the Imported Markers bin.");
    ASSERT_EQ(editor.imported.size(), 1);
    const QString sent = QString::fromUtf8(editor.imported.first());
    const QString head = QStringLiteral("<?xml version=\"1.0\" encoding=\"UTF-8\"?><!DOCTYPE "
                                        "xmeml><xmeml version=\"%1\"><bin><uuid>")
                             .arg(QFAppleEvents::maximumXMEMLVersion());
    EXPECT_TRUE(sent.startsWith(head)) << sent.toStdString();
    const auto doc = XmlDocument::fromBytes(editor.imported.first());
    ASSERT_TRUE(doc);
    const XmlNode sequence = doc->rootElement().nodesForXPath(u"bin/children/sequence"_s).value(0);
    EXPECT_EQ(sequence.nodesForXPath(u"marker/in"_s).value(1).stringValue(), u"250");
    EXPECT_EQ(editor.openedItems,
              QStringList(sequence.nodesForXPath(u"uuid"_s).value(0).stringValue()));
    EXPECT_NE(editor.openedItems.value(0), u"U-1");
}

TEST_F(LiveImport, FailuresOfTheEditorAreReported)
{
    const QString markers = home.file(u"markers.txt"_s, markerList);
    EXPECT_EQ(alertOf(import(markers, settings(projectPath, u"U-2"_s), {})),
              u"Unable to get data for UUID U-2 / Cuebridge has been aborted.");

    editor.fault = [](const AppleEvent &event) -> std::optional<AESendResult> {
        if (event.eventID != fourCharCode("iXML"))
            return std::nullopt;
        AESendResult result;
        result.status = AEStatus::errAETimeout;
        result.stage = AESendStage::Send;
        return result;
    };
    EXPECT_EQ(alertOf(import(markers, settings(projectPath), {})),
              u"Failed to send marker data to Final Cut Pro / Please report this error to "
              u"Quillfen.");
    EXPECT_TRUE(editor.openedItems.isEmpty());
}

} // namespace
