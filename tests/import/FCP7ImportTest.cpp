// The Final Cut Pro 7 import procedure and its helpers, run in-process through a
// recording front end; the command-line tests cover the written files.

#include "import/FCP7Import.h"
#include "fcp7link/QFAppleEvents.h"
#include "import/ImportSettings.h"
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
        {"CancelledAfterTheFirstMarker",
         [](QString &, ImportSettings &s) {
             s.progress = [](qsizetype done, qsizetype) { return done < 1; };
         },
         "", "Import cancelled"},
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

using InOut = std::pair<int, int>;

/// The in and out of each marker of the sequence the import wrote: the one in place of
/// a bare sequence, the copy in the bin of a project. Markers already there are left out.
QList<InOut> writtenInOut(const QString &file)
{
    const auto doc = XmlDocument::fromFile(file);
    QList<InOut> inOut;
    if (!doc)
        return inOut;
    for (const XmlNode &marker : doc->rootElement().nodesForXPath(
             u"sequence/marker|project/children/bin/children/sequence/marker"_s)) {
        const auto at = [&](const QString &path) {
            return marker.nodesForXPath(path).value(0).stringValue();
        };
        if (at(u"name"_s) != u"Sequence marker")
            inOut.append({at(u"in"_s).toInt(), at(u"out"_s).toInt()});
    }
    return inOut;
}

QByteArray listOf(std::initializer_list<std::array<const char *, 4>> records)
{
    QByteArray text = "#\tTrack\tName\tComment\tStart\tDuration\tColor\n";
    for (const auto &[name, start, duration, colour] : records)
        text +=
            QByteArray("1\tV1\t") + name + "\tc\t" + start + '\t' + duration + '\t' + colour + '\n';
    return text;
}

// A bare sequence comes back alone; a project gains a bin with a copy of the sequence.
// Positions count from the sequence's start, clamped at it; no out without a duration.
TEST_F(ImportTest, MarkersLandOnTheirFramesInTheSequenceOrTheCopyInTheBin)
{
    const QString cut3 = u"0F2D6C31-4B1E-4C55-9C3E-2A1B8F7D0001"_s;
    const QString selects = u"0F2D6C31-4B1E-4C55-9C3E-2A1B8F7D0002"_s;
    const struct
    {
        const char *name;
        const char *data;
        QString uuid;
        QByteArray list;
        std::function<void(ImportSettings &)> options;
        QList<InOut> expected;
    } cases[] = {
        {"FromTheStartClamped",
         "project.xml",
         cut3,
         listOf({{"A", "01:00:10:00", "00:00:05:00", "Red"},
                 {"B", "01:00:10:00", "00:00:00:00", "Red"},
                 {"C", "00:59:59:00", "00:00:05:00", "Red"},
                 {"D", "00:59:59:00", "00:00:00:10", "Red"}}),
         [](ImportSettings &) {},
         {{250, 375}, {250, -1}, {0, 100}, {0, -1}}},
        {"OffsetInHours",
         "project.xml",
         cut3,
         listOf({{"A", "01:00:00:00", "00:00:01:00", "Red"},
                 {"B", "00:00:00:00", "00:00:01:00", "Red"}}),
         [](ImportSettings &s) {
             s.frameOffset = 1;
             s.frameOffsetUnit = OffsetUnit::Hours;
         },
         {{90000, 90025}, {0, -1}}},
        {"NegativeOffset",
         "project.xml",
         cut3,
         listOf({{"A", "01:00:10:00", "00:00:05:00", "Red"}}),
         [](ImportSettings &s) { s.frameOffset = -50; },
         {{200, 325}}},
        // 01:00:00;00 is frame 107892, 72 past the sequence's start at 107820; two
        // seconds are 60 frames of the timebase 30.
        {"SecondsOfTheSequencesTimebase",
         "sequence.xml",
         selects,
         listOf({{"A", "01:00:00;00", "00:00:01;00", "Red"}}),
         [](ImportSettings &s) {
             s.frameOffset = 2;
             s.frameOffsetUnit = OffsetUnit::Seconds;
         },
         {{132, 162}}},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        const QString target = home.copyOfData(QLatin1StringView(c.data));
        ImportSettings s = settings(target, c.uuid);
        c.options(s);
        const ImportOutcome outcome =
            import(home.file(u"markers.txt"_s, c.list), s,
                   {.isXMLFile = true, .isSequenceOnly = c.uuid == selects});
        EXPECT_EQ(outcome.status, ImportOutcome::Status::Imported)
            << outcome.informativeText.toStdString();
        EXPECT_EQ(writtenInOut(target), c.expected);
    }

    const QString bare = home.copyOfData(u"sequence.xml"_s);
    const ImportOutcome alone =
        import(home.file(u"markers.txt"_s, listOf({{"A", "01:00:00;00", "00:00:01;00", "Red"}})),
               settings(bare, selects), {.isXMLFile = true, .isSequenceOnly = true});
    EXPECT_EQ(alertOf(alone), u"Markers successfully imported / The markers were imported into "
                              u"the XML file.\n\nPlease reimport the XML file into your "
                              u"editing application.");
    EXPECT_TRUE(TempHome::read(bare).startsWith(
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?><!DOCTYPE xmeml><xmeml version=\"4\">"
        "<sequence id=\"Selects-Cuebridge\">"));

    // Clearing: the markers of the copy, and of its clips, are only the new ones.
    const QString withBin = home.copyOfData(u"project.xml"_s);
    ImportSettings clear = settings(withBin, cut3);
    clear.clearExistingMarkers = true;
    EXPECT_EQ(alertOf(import(
                  home.file(u"markers.txt"_s, listOf({{"A", "01:00:10:00", "00:00:05:00", "Red"}})),
                  clear)),
              u"Markers successfully imported / The markers were imported into a copy of the "
              u"sequence inside the Imported Markers bin.\n\nPlease reimport the XML file into "
              u"your editing application.");
    const auto doc = XmlDocument::fromFile(withBin);
    ASSERT_TRUE(doc);
    const XmlNode children = doc->rootElement().nodesForXPath(u"project/children"_s).value(0);
    const auto at = [&children](const QString &path) {
        return children.nodesForXPath(path).value(0).stringValue();
    };
    EXPECT_EQ(at(u"*[1]/name"_s), u"Imported Markers");
    EXPECT_EQ(at(u"sequence[uuid]/@id"_s), u"Cut 3 -Cuebridge") << "renamed in its place too";
    EXPECT_EQ(at(u"bin/children/sequence/name"_s), u"Cut 3 -Cuebridge");
    EXPECT_NE(at(u"bin/children/sequence/uuid"_s), cut3);
    EXPECT_EQ(children.nodesForXPath(u"bin/children/sequence//marker/name"_s).size(), 1);
}

// Review notes carry emoji, and so do the names editors give their work: text beyond
// the basic plane comes back whole, and user text is escaped once.
TEST_F(ImportTest, UserTextIsEscapedOnceAndColoursFollowTheirTable)
{
    const QString target = home.copyOfData(u"sequence.xml"_s);
    TempHome::write(target, TempHome::read(target).replace("id=\"Selects\"",
                                                           "id=\"Selects \xf0\x9f\x8e\x9e\""));
    const QByteArray list =
        "#\tTrack\tName\tComment\tStart\tDuration\tColor\n"
        "1\tV1\tCaf\xc3\xa9\t Tom & Jerry\xe2\x80\x99s <cut> \t01:00:00;00\t00:00:01;00\tred\n"
        "2\tV1\tClap \xf0\x9f\x8e\xac\tRetake \xf0\x9f\x98\x80\t01:00:01;00\t00:00:01;00\tGreen\n"
        "3\tV1\tW\tc\t01:00:02;00\t00:00:01;00\tWhite\n"
        "4\tV1\tO\tc\t01:00:03;00\t00:00:01;00\tOrange\n";
    ASSERT_EQ(import(home.file(u"markers.txt"_s, list),
                     settings(target, u"0F2D6C31-4B1E-4C55-9C3E-2A1B8F7D0002"_s),
                     {.isXMLFile = true, .isSequenceOnly = true})
                  .status,
              ImportOutcome::Status::Imported);
    const QByteArray bytes = TempHome::read(target);
    EXPECT_TRUE(bytes.contains("<comment>Tom &amp; Jerry's &lt;cut&gt;</comment>")) << bytes.data();
    EXPECT_TRUE(bytes.contains("<name>Caf&#233;</name>"));
    const auto doc = XmlDocument::fromBytes(bytes);
    ASSERT_TRUE(doc);
    const XmlNode root = doc->rootElement();
    EXPECT_EQ(root.nodesForXPath(u"sequence/name"_s).value(0).stringValue(),
              u"Selects \U0001F39E-Cuebridge");
    const QList<XmlNode> markers = root.nodesForXPath(u"sequence/marker"_s);
    ASSERT_EQ(markers.size(), 4);
    EXPECT_EQ(markers[1].nodesForXPath(u"comment"_s).value(0).stringValue(), u"Retake \U0001F600");
    // red green blue alpha, then Premiere's colour.
    const char *colours[] = {"25500 0 4281740498", "4819172 0 ", "25500 0 4294967295",
                             "2551270 0 4280578025"};
    for (int i = 0; i < 4; ++i) {
        QString shown;
        for (const XmlNode &n : markers[i].nodesForXPath(u"color/red|color/green|color/blue"_s))
            shown += n.stringValue();
        for (const QString &path : {u"color/alpha"_s, u"pproColor"_s})
            shown += u' ' + markers[i].nodesForXPath(path).value(0).stringValue();
        EXPECT_EQ(shown, QLatin1StringView(colours[i])) << i;
    }
}

// Times from the timeline's start (subtitles, chapters) count from the sequence's first
// frame, to the nearest frame at its rate.
// A sequence that gives no rate is read at 30 frames a second, and checked so.
TEST_F(ImportTest, ASequenceWithoutARateRefusesAFrameBeyondThirty)
{
    const QString target = home.file(
        u"norate.xml"_s, "<xmeml version=\"5\"><sequence id=\"S\"><uuid>U-1</uuid><name>S</name>"
                         "</sequence></xmeml>");
    const ImportOutcome outcome =
        import(home.file(u"m.txt"_s, listOf({{"A", "00:00:01:29", "00:00:00:00", "Red"},
                                             {"B", "00:00:01:40", "00:00:00:00", "Red"}})),
               settings(target), {.isXMLFile = true, .isSequenceOnly = true});
    EXPECT_EQ(outcome.report.lineTexts(),
              QStringList(u"Line 3: start timecode \"00:00:01:40\" has frame 40, but a second "
                          u"has 30 frames here"_s));
}

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
