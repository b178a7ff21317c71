// The Final Cut Pro X import, run in-process through a recording front end. Every
// document it writes is checked against the DTD of its version.

#include "import/FCPXImport.h"
#include "import/ImportSettings.h"
#include "xml/QFXMLParser.h"
#include "xml/XmlDocument.h"

#include "FcpxmlDtd.h"
#include "HandOffTest.h"
#include "QtPrinters.h"

#include <QDir>
#include <QFile>

#include <functional>

namespace {

const QString sequencePath = u"/fcpxml/library/event/project/sequence"_s;

/// A library-form document (FCPXML 1.8) with the spine's content given.
QByteArray library(const QString &spine, const QString &frameDuration = u"100/2500s"_s,
                   const QString &tcFormat = u"tcFormat=\"NDF\""_s)
{
    return uR"(<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE fcpxml>
<fcpxml version="1.8">
  <resources>
    <format id="r1" name="FFVideoFormat1080p" frameDuration="%1" width="1920" height="1080"/>
    <asset id="r2" name="Media" src="file:///media.mov" start="0s" duration="7200s" hasVideo="1" hasAudio="1" format="r1"/>
    <effect id="r3" name="Basic Title" uid=".../Titles.localized/Basic Title.moti"/>
    <effect id="r4" name="Cross Dissolve" uid="FxPlug:4731E73A-8DAC-4113-9A30-AE85B1761265"/>
  </resources>
  <library location="file:///Review.fcpbundle/">
    <event name="Dailies">
      <project name="Cut">
        <sequence format="r1" duration="60s" tcStart="0s" %3>
          <spine>%2</spine>
        </sequence>
      </project>
      <asset-clip name="Event clip" ref="r2" duration="60s" format="r1"/>
    </event>
  </library>
</fcpxml>
)"_s.arg(frameDuration, spine, tcFormat)
        .toUtf8();
}

/// Four storyline elements at 25 fps: A [0, 10 s), B [10, 20 s) whose media starts at
/// 3600 s, a gap [20, 25 s) and a title [25, 30 s).
const QString fourClips = uR"(<asset-clip name="A" ref="r2" offset="0s" duration="10s" format="r1"/>
       <asset-clip name="B" ref="r2" offset="10s" start="3600s" duration="10s" format="r1"/>
       <gap name="G" offset="20s" duration="5s"/>
       <title name="T" ref="r3" offset="25s" duration="5s"/>)"_s;

/// The alert an outcome ends with: "message / informative text", or nothing.
QString alertOf(const ImportOutcome &outcome)
{
    return outcome.hasAlert() ? outcome.messageText + u" / "_s + outcome.informativeText
                              : QString();
}

/// A marker list with one line per (name, comment, start) and a header line.
QByteArray markerList(std::initializer_list<std::array<const char *, 3>> records)
{
    QByteArray text = "#\tTrack\tName\tComment\tStart\tDuration\tColor\n";
    int index = 1;
    for (const auto &[name, comment, start] : records)
        text += QByteArray::number(index++) + "\tV1\t" + name + '\t' + comment + '\t' + start +
                "\t00:00:00:00\tRed\n";
    return text;
}

using Adjust = std::function<void(ImportSettings &, TargetKind &)>;

class FCPXImportTest : public HandOffTest
{
protected:
    /// Imports the marker list into the target (a document written to "cut.fcpxml", or
    /// the path given by adjust), checks that the target is left as it was and that
    /// a written result validates whenever the target did. The result's path.
    QString importInto(const QByteArray &document, const QByteArray &markers,
                       const Adjust &adjust = {})
    {
        const QString list = home.file(u"markers.txt"_s, markers);
        TargetKind kind{.isFCPX = true, .isXMLFile = true};
        ImportSettings settings;
        settings.filename = home.file(u"cut.fcpxml"_s, document);
        settings.sequenceXPath = sequencePath;
        if (adjust)
            adjust(settings, kind);
        const QByteArray before = TempHome::read(settings.filename);
        outcome = FCPXImport::startProcessingFCPXWithSettings(kind, list, settings);
        result = outcome.resultPath;
        EXPECT_EQ(TempHome::read(settings.filename), before) << "the user's file was written";
        output.clear();
        if (!result.isNull()) {
            output =
                TempHome::read(QFileInfo(result).isDir() ? result + u"/Info.fcpxml"_s : result);
            if (checkDtd && !before.isEmpty() && FcpxmlDtd::problems(before).isEmpty()) {
                EXPECT_EQ(FcpxmlDtd::problems(output), QString()) << output.toStdString();
            }
        }
        return result;
    }

    /// The markers of the result in document order: "<clip> <start> <value>", with
    /// " todo" for a to-do marker.
    QStringList markers() const
    {
        const auto document = XmlDocument::fromBytes(output);
        QStringList found;
        if (!document)
            return found;
        for (const XmlNode &marker :
             QFXMLParser::nodesForQuery(u"//marker"_s, document->rootElement())) {
            const auto attribute = [&marker](const char *name) {
                return marker.attributeForName(QLatin1StringView(name)).stringValue();
            };
            found << u"%1 %2 %3%4"_s.arg(marker.parent().attributeForName(u"name"_s).stringValue(),
                                         attribute("start"), attribute("value"),
                                         attribute("completed") == u"0" ? u" todo"_s : u""_s);
        }
        return found;
    }

    /// The element names of the named clip's children, with marker values.
    QStringList children(const QString &clipName) const
    {
        const auto document = XmlDocument::fromBytes(output);
        const XmlNode clip = QFXMLParser::nodeForQuery(u"//*[@name=\"%1\"]"_s.arg(clipName),
                                                       document->rootElement());
        QStringList names;
        for (XmlNode child = clip.childAt(0); child; child = child.nextSibling())
            names << (child.name() == u"marker" ? child.attributeForName(u"value"_s).stringValue()
                                                : child.name());
        return names;
    }

    /// Files left in the temporary folder.
    QStringList temporaryFiles() const
    {
        return QDir(home.tempPath()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot);
    }

    /// Whether a result must validate whenever its target did.
    bool checkDtd = true;
    ImportOutcome outcome;
    QString result;
    QByteArray output;
};

// --- Where markers land ---------------------------------------------------------

Adjust offset(qint64 frames, int unit = 0)
{
    return [frames, unit](ImportSettings &s, TargetKind &) {
        s.frameOffset = frames;
        s.frameOffsetUnit = offsetUnitForIndex(unit);
    };
}

TEST_F(FCPXImportTest, MarkersLandOnTheClipUnderThePositionInItsOwnTime)
{
    const struct
    {
        const char *name;
        QByteArray markers;
        Adjust adjust;
        QStringList expected;
        bool allPlaced = true;
    } cases[] = {
        {"OnTheClipsOwnTimeOnCutsTheLaterClipGapsAndTitlesToo",
         markerList({{"a", "", "00:00:00:00"},
                     {"cut", "", "00:00:10:00"},
                     {"b", "", "00:00:12:00"},
                     {"g", "", "00:00:21:00"},
                     {"t", "", "00:00:29:24"}}),
         {},
         {u"A 0/2500s a"_s, u"B 9000000/2500s cut"_s, u"B 9005000/2500s b"_s, u"G 2500/2500s g"_s,
          u"T 12400/2500s t"_s}},
        {"ANegativePositionClampsToZero",
         markerList({{"early", "", "00:00:01:00"}}),
         offset(-100),
         {u"A 0/2500s early"_s}},
        {"OffsetInSeconds",
         markerList({{"s", "", "00:00:01:00"}}),
         offset(2, 1),
         {u"A 7500/2500s s"_s}},
        // Past the end of the last clip, or of everything: logged, and the rest sent.
        {"AtTheEndOfTheLastClipNone",
         markerList(
             {{"in", "", "00:00:01:00"}, {"end", "", "00:00:30:00"}, {"late", "", "01:00:00:00"}}),
         {},
         {u"A 2500/2500s in"_s},
         false},
        {"ToDoMarkersAndValues",
         markerList({{"a", "b", "00:00:01:00"}, {"Tom & Jerry", "", "00:00:02:00"}}),
         [](ImportSettings &s, TargetKind &) { s.todoMarkersEnabled = true; },
         {u"A 2500/2500s a -  b todo"_s, u"A 5000/2500s Tom & Jerry todo"_s}},
        {"AnEventClipAlone",
         markerList({{"e", "", "00:00:05:00"}, {"past", "", "00:01:00:00"}}),
         [](ImportSettings &s, TargetKind &kind) {
             s.sequenceXPath = u"/fcpxml/library/event/asset-clip"_s;
             kind.isEvent = true;
         },
         {u"Event clip 12500/2500s e"_s},
         false}};
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        ASSERT_FALSE(importInto(library(fourClips), c.markers, c.adjust).isNull());
        EXPECT_EQ(markers(), c.expected);
        EXPECT_EQ(workspace.opened().size(), &c - cases + 1);
        const QString alert = alertOf(outcome);
        if (c.allPlaced)
            EXPECT_EQ(alert, u"Markers successfully imported / A copy of your project was sent to "
                             u"Final Cut Pro."_s);
        else
            EXPECT_TRUE(alert.startsWith(u"Some markers failed to import / 1 marker imported") &&
                        alert.contains(u"outside every clip: ") &&
                        alert.contains(u"use the Offset field to compensate."))
                << alert.toStdString();
    }
    EXPECT_TRUE(log().contains(u"Clip not found for marker late at 90000"));
}

// Editors put markers on cuts: at fractional rates frames times the rate misses a cut
// by a rounding, so every marker on a cut must still land at the start of the later clip.
TEST_F(FCPXImportTest, AMarkerOnACutLandsInTheLaterClipAtEveryRate)
{
    for (const auto &[frameDuration, timebase] :
         {std::pair{1001, 24000}, std::pair{1001, 30000}, std::pair{100, 2500}}) {
        SCOPED_TRACE(timebase);
        const int fps = (timebase + frameDuration - 1) / frameDuration;
        QString spine;
        QByteArray list = "#\tTrack\tName\tComment\tStart\tDuration\tColor\n";
        qint64 cut = 0;
        for (int clip = 0; clip < 60; ++clip) {
            const qint64 length = 24 + (clip * 37) % 113; // frames
            spine += u"<asset-clip name=\"C%1\" ref=\"r2\" offset=\"%2/%3s\" "
                     u"duration=\"%4/%3s\" format=\"r1\"/>"_s.arg(clip)
                         .arg(cut * frameDuration)
                         .arg(timebase)
                         .arg(length * frameDuration);
            list += QStringLiteral("%1\tV1\tC%1\t\t%2:%3:%4:%5\t00:00:00:00\tRed\n")
                        .arg(clip)
                        .arg(cut / (3600 * fps), 2, 10, QChar(u'0'))
                        .arg(cut / (60 * fps) % 60, 2, 10, QChar(u'0'))
                        .arg(cut / fps % 60, 2, 10, QChar(u'0'))
                        .arg(cut % fps, 2, 10, QChar(u'0'))
                        .toUtf8();
            cut += length;
        }
        importInto(library(spine, u"%1/%2s"_s.arg(frameDuration).arg(timebase)), list);
        const QStringList placed = markers();
        ASSERT_EQ(placed.size(), 60) << alertOf(outcome).toStdString();
        for (int clip = 0; clip < 60; ++clip)
            EXPECT_EQ(placed[clip], u"C%1 0/%2s C%1"_s.arg(clip).arg(timebase));
    }
}

// The list's second column may name a kind: chapters become chapter markers where the
// version has them, to-do and done items markers with their completion.
TEST_F(FCPXImportTest, KindsBecomeChapterMarkersAndToDoItems)
{
    const QByteArray list = "#\tType\tName\tComment\tStart\tDuration\tColor\n"
                            "1\tChapter\tc\t\t00:00:01:00\t00:00:00:00\tRed\n"
                            "2\tTO DO\tt\t\t00:00:02:00\t00:00:00:00\tRed\n"
                            "3\tDone\td\t\t00:00:03:00\t00:00:00:00\tRed\n";
    importInto(library(fourClips), list);
    EXPECT_TRUE(
        output.contains(R"(<chapter-marker start="2500/2500s" duration="100/2500s" value="c"/>)"))
        << output.toStdString();
    EXPECT_EQ(markers(), QStringList({u"A 5000/2500s t todo"_s, u"A 7500/2500s d"_s}));
    EXPECT_TRUE(output.contains(R"(value="d" completed="1")"));

    QByteArray older = library(fourClips);
    importInto(older.replace("version=\"1.8\"", "version=\"1.1\""), list);
    EXPECT_EQ(markers().value(0), u"A 2500/2500s c");
    EXPECT_EQ(outcome.report.lineTexts(),
              QStringList(u"Line 2: FCPXML 1.1 has no chapter markers: a plain marker"_s));
}

TEST_F(FCPXImportTest, At2997OnlyDFReadsTimecodesAsDropFrameAndOffsetsCountWholeFrames)
{
    const QString clip = u"<asset-clip name=\"A\" ref=\"r2\" offset=\"0s\" duration=\"300s\" "
                         u"format=\"r1\"/>"_s;
    const struct
    {
        QString tcFormat;
        const char *start;
        Adjust adjust;
        QString expected;
    } cases[] = {{u"tcFormat=\"DF\""_s, "00:01:00;02", {}, u"1801800/30000s"_s},
                 {u"tcFormat=\"NDF\""_s, "00:01:00;02", {}, u"1803802/30000s"_s},
                 {u"tcFormat=\"df\""_s, "00:01:00;02", {}, u"1803802/30000s"_s},
                 {u""_s, "00:01:00;02", {}, u"1803802/30000s"_s},
                 // Two minutes of offset are 3600 frames.
                 {u""_s, "00:00:00:00", offset(2, 2), u"3603600/30000s"_s}};
    for (const auto &c : cases) {
        importInto(library(clip, u"1001/30000s"_s, c.tcFormat), markerList({{"m", "", c.start}}),
                   c.adjust);
        EXPECT_EQ(markers(), QStringList{u"A "_s + c.expected + u" m"_s})
            << c.tcFormat.toStdString();
    }
    EXPECT_TRUE(log().contains(u"Marker start pos: 3600"));
}

// Timing is read from the chosen element, so only a transition carrying a format
// (which the DTD does not allow) can take markers at all.
TEST_F(FCPXImportTest, ATransitionTargetTakesTheTimelineFrameAsSecondsAfterItsFilters)
{
    const QByteArray document =
        library(uR"(<asset-clip name="A" ref="r2" offset="0s" duration="10s" format="r1"/>
           <transition name="X" offset="9s" duration="2s" format="r1">
             <filter-video ref="r4" name="Cross Dissolve"/>
             <filter-audio ref="r4" name="Audio Crossfade"/>
           </transition>
           <asset-clip name="B" ref="r2" offset="10s" duration="10s" format="r1"/>)"_s);
    importInto(document, markerList({{"x", "", "00:00:09:10"}}),
               [](ImportSettings &s, TargetKind &kind) {
                   s.sequenceXPath = sequencePath + u"/spine/transition"_s;
                   kind.isEvent = true;
               });
    // Frame 235 of the timeline, scaled by the frame rate, is 235 s.
    EXPECT_EQ(markers(), QStringList{u"X 587500/2500s x"_s}) << alertOf(outcome).toStdString();
    EXPECT_EQ(children(u"X"_s), (QStringList{u"filter-video"_s, u"filter-audio"_s, u"x"_s}));
    EXPECT_TRUE(log().contains(u"orig marker start pos: 235.000000"));
}

// A result its version's DTD refuses is not written, unless the document broke the
// DTD before the import: the editor has always received those.
TEST_F(FCPXImportTest, AnInvalidDocumentIsWrittenAsBefore)
{
    const Adjust intoTheSequence = [](ImportSettings &, TargetKind &kind) { kind.isEvent = true; };
    const QByteArray invalid = library(fourClips).replace("<spine>", "<spine bogus=\"1\">");
    importInto(invalid, markerList({{"m", "", "00:00:01:00"}}), intoTheSequence);
    EXPECT_FALSE(result.isNull()) << alertOf(outcome).toStdString();
    EXPECT_TRUE(log().contains(u"Result does not follow the FCPXML 1.8 DTD: "));
}

TEST_F(FCPXImportTest, ClearingRemovesNestedMarkersButNotChapterMarkers)
{
    const QByteArray document = library(uR"(<clip name="C" offset="0s" duration="10s">
             <video ref="r2" offset="0s" duration="10s"/>
             <spine lane="1" offset="2s">
               <asset-clip name="Nested" ref="r2" offset="0s" duration="2s">
                 <marker start="1s" duration="100/2500s" value="deep"/>
               </asset-clip>
             </spine>
             <marker start="1s" duration="100/2500s" value="old"/>
             <chapter-marker start="3s" duration="100/2500s" value="Chapter"/>
           </clip>)"_s);
    importInto(document, markerList({{"new", "", "00:00:01:00"}}),
               [](ImportSettings &s, TargetKind &) { s.clearExistingMarkers = true; });
    EXPECT_EQ(markers(), QStringList{u"C 2500/2500s new"_s});
    EXPECT_EQ(children(u"C"_s),
              (QStringList{u"video"_s, u"spine"_s, u"new"_s, u"chapter-marker"_s}));
}

// --- Output and hand-off ------------------------------------------------------------

TEST_F(FCPXImportTest, AProjectIsSentRenamedAsANewFileAndTheUsersFileIsKept)
{
    const QByteArray project =
        TempHome::read(QStringLiteral(CUEBRIDGE_TEST_DATA "/project.fcpxml"));
    const QString path = importInto(
        project, markerList({{"m", "", "00:00:01:00"}}),
        [](ImportSettings &s, TargetKind &) { s.sequenceXPath = u"/fcpxml/project/sequence"_s; });
    ASSERT_TRUE(path.endsWith(u".fcpxml"));
    EXPECT_EQ(QFileInfo(path).path(), home.tempPath());
    EXPECT_TRUE(output.contains("<project name=\"Cut 3-Cuebridge\""));
    EXPECT_TRUE(output.contains("uid=\"5A1E7C2D-0000-4000-8000-000000000002\""));
    EXPECT_EQ(workspace.opened(),
              QStringList{path + u" with 'com.apple.FinalCut', asynchronously"_s});
    EXPECT_EQ(outcome.messageText, u"Markers successfully imported");
    EXPECT_TRUE(log().contains(u"Writing data to temp file %1..."_s.arg(path)));
}

TEST_F(FCPXImportTest, ABundleGivesANewBundleHoldingOnlyInfoFcpxml)
{
    const QString bundle = QDir(home.path()).filePath(u"Cut.fcpxmld"_s);
    home.file(u"Cut.fcpxmld/b.fcpxml"_s, "not even XML");
    home.file(u"Cut.fcpxmld/a.fcpxml"_s, library(fourClips));
    home.file(u"Cut.fcpxmld/Assets/notes.txt"_s, "kept out");
    const QString path =
        importInto(library(fourClips), markerList({{"m", "", "00:00:01:00"}}),
                   [&bundle](ImportSettings &s, TargetKind &) { s.filename = bundle; });

    ASSERT_TRUE(path.endsWith(u".fcpxmld")) << path.toStdString();
    EXPECT_EQ(QDir(path).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
              QStringList{u"Info.fcpxml"_s});
    EXPECT_EQ(markers(), QStringList{u"A 2500/2500s m"_s});
    EXPECT_EQ(temporaryFiles().size(), 1) << "written once, inside the bundle";
    EXPECT_EQ(workspace.opened(),
              QStringList{path + u" with 'com.apple.FinalCut', asynchronously"_s});

    // Asked for elsewhere, it is made there alone.
    const QString elsewhere = home.filePath(u"Out.fcpxmld"_s);
    importInto(library(fourClips), markerList({{"m", "", "00:00:01:00"}}),
               [&](ImportSettings &s, TargetKind &) {
                   s.filename = bundle;
                   s.outputPath = elsewhere;
               });
    EXPECT_EQ(result, elsewhere);
    EXPECT_EQ(QDir(elsewhere).entryList(QDir::Files), QStringList{u"Info.fcpxml"_s});
    EXPECT_EQ(temporaryFiles().size(), 1);
}

TEST_F(FCPXImportTest, WithoutHandOffNothingIsOpenedAndTheMessageSaysSo)
{
    importInto(library(fourClips), markerList({{"m", "", "00:00:01:00"}}),
               [](ImportSettings &s, TargetKind &) { s.handOffResult = false; });
    EXPECT_TRUE(workspace.opened().isEmpty());
    EXPECT_TRUE(output.contains("<project name=\"Cut\">")) << "a library keeps its project name";
    EXPECT_EQ(alertOf(outcome), u"Markers successfully imported / A copy of your project was "
                                u"written for Final Cut Pro to import.");
}

// --- Ends that write nothing -----------------------------------------------------------

/// Settings that look the sequence up at the path given.
Adjust xpath(const QString &path)
{
    return [path](ImportSettings &s, TargetKind &) { s.sequenceXPath = path; };
}

TEST_F(FCPXImportTest, EndsWriteNothingAndSayWhy)
{
    // Each case changes the target document, the marker list or the settings of an
    // import that would succeed.
    const struct
    {
        const char *name;
        QByteArray document = library(fourClips);
        QByteArray markers = markerList({{"m", "", "00:00:01:00"}});
        Adjust adjust = {};
        QString alert = {};
    } cases[] = {
        {.name = "ABundleWithoutFcpxml",
         .adjust =
             [](ImportSettings &s, TargetKind &) {
                 s.filename = QFileInfo(s.filename).path() + u"/Empty.fcpxmld"_s;
                 QDir().mkpath(s.filename + u"/Assets"_s);
             },
         .alert = u"Failed to open file / Could not locate any XML files inside bundle."_s},
        {.name = "AFolderInsteadOfAFile",
         .adjust =
             [](ImportSettings &s, TargetKind &) {
                 s.filename = QFileInfo(s.filename).path() + u"/folder.fcpxml"_s;
                 QDir().mkpath(s.filename);
             },
         .alert = u"Unable to get data for project / "_s},
        {.name = "NotXml",
         .document = QByteArray("\x89PNG\r\n\x1a\n\0\0", 10),
         .alert = u"Unable to find sequence / "_s},
        {.name = "AnXPathMatchingNothing",
         .adjust = xpath(u"/fcpxml/library/event/project[2]/sequence"_s),
         .alert = u"Unable to find sequence / "_s},
        {.name = "AMalformedXPath",
         .adjust = xpath(u"/fcpxml/library[["_s),
         .alert = u"Unable to find sequence / Invalid expression"_s},
        {.name = "AnEmptyMarkerList",
         .markers = "",
         .alert = u"Unable to read marker list / The file may be corrupt, empty or in an invalid "
                  u"format."_s},
        {.name = "AnEmptyStoryline",
         .document = library(QString()),
         .alert = u"Unable to locate clips / No video clips could be found in the timeline."_s},
        {.name = "OnlyAHeaderIsSilent",
         .markers = "#\tTrack\tName\tComment\tStart\tDuration\tColor\n\n"},
        {.name = "CancelledAfterTheLastMarkerIsSilent",
         .adjust =
             [](ImportSettings &s, TargetKind &) {
                 s.progress = [](qsizetype done, qsizetype total) { return done < total; };
             }},
        {.name = "AMarkerThatIsNoXml",
         .markers = markerList({{"ok", "", "00:00:01:00"}, {"bell\x07", "", "00:00:02:00"}}),
         .alert = u"Unable to create marker / "_s},
        // The sequence itself as the clip: a sequence takes no markers.
        {.name = "AResultThatBreaksItsDtd",
         .adjust = [](ImportSettings &, TargetKind &kind) { kind.isEvent = true; },
         .alert = u"Unable to create marker / line 13: Element sequence content does not follow "
                  u"the DTD"_s}};
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        importInto(c.document, c.markers, c.adjust);

        EXPECT_TRUE(alertOf(outcome).startsWith(c.alert)) << alertOf(outcome).toStdString();
        EXPECT_TRUE(result.isNull());
        EXPECT_EQ(temporaryFiles(), QStringList());
        EXPECT_TRUE(workspace.opened().isEmpty());
    }
}

TEST_F(FCPXImportTest, UnreadableFrameDurationsAndClipTimesPlaceNothingAndWriteNothing)
{
    for (const QByteArray &document :
         {library(fourClips, u"0s"_s), library(fourClips, u"abc"_s), library(fourClips, u"1/0s"_s),
          library(fourClips, u"0/0s"_s), library(fourClips, u"0/1s"_s),
          library(u"<gap name=\"G\"/>"_s)}) {
        importInto(document, markerList({{"m", "", "00:00:01:00"}}));
        EXPECT_TRUE(result.isNull()) << document.toStdString();
        EXPECT_EQ(outcome.messageText, u"Nothing imported");
    }
}

} // namespace
