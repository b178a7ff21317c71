#include "FCPXImport.h"

#include "diagnostics/QFLog.h"
#include "import/FCPXPlacement.h"
#include "import/MarkerListText.h"
#include "import/QFFCP7MarkerListParser.h"
#include "import/TargetDiscovery.h"
#include "import/UserTextEscaping.h"
#include "support/QFFileContents.h"
#include "support/QFFileManager.h"
#include "support/QFLocalPaths.h"
#include "support/QFWorkspace.h"
#include "time/QFFCPXMLParser.h"
#include "time/QFNumberReader.h"
#include "time/QFTimecode.h"
#include "xml/QFXMLParser.h"
#include "xml/XmlDocument.h"

#include <QDir>
#include <QFile>
#include <QSet>

#include <algorithm>
#include <cmath>
#include <memory>

namespace {

const auto window = ImportHost::AlertParent::DocumentWindow;

/// The project becomes "<name>-Cuebridge", so the editor imports it beside the
/// user's own. A project inside a library has no such attribute and keeps its name.
void renameProject(const XmlNode &document)
{
    XmlNode name =
        QFXMLParser::nodeForQuery(QStringLiteral("./fcpxml[1]/project[1]/@name[1]"), document);
    if (name)
        name.setStringValue(QFFormat::format(u"%@-Cuebridge", name.stringValue()));
}

/// The sequence's timing, from its format resource and its own attributes.
struct Timing
{
    QString frameDuration;
    double fps = 0;
    qint64 multiplier = 0;
    int timebase = 0;
    bool ntsc = false;
    bool dropFrame = false;
};

Timing readTiming(const XmlNode &document, const XmlNode &sequence)
{
    const QString formatId = sequence.attributeForName(QStringLiteral("format")).stringValue();
    Timing timing;
    // The resources of a project-form document are inside the project.
    timing.frameDuration = QFXMLParser::stringValueForQuery(
        QFFormat::format(
            u"./fcpxml[1]/project[1]/resources[1]/format[@id=\"%@\"]/@frameDuration[1]", formatId),
        document);
    if (timing.frameDuration.isNull())
        timing.frameDuration = QFXMLParser::stringValueForQuery(
            QFFormat::format(u"./fcpxml[1]/resources[1]/format[@id=\"%@\"]/@frameDuration[1]",
                             formatId),
            document);
    QFLog::appendLog(u"format: %@", formatId);
    QFLog::appendLog(u"dur: %@", timing.frameDuration);

    timing.fps = QFFCPXMLParser::fpsFromFrameDuration(timing.frameDuration);
    timing.multiplier = QFFCPXMLParser::multiplierFromFrameDuration(timing.frameDuration);
    timing.timebase = QFNumberReader::toInt32(std::ceil(timing.fps));
    timing.ntsc = timing.timebase > timing.fps;
    timing.dropFrame = QFXMLParser::stringValueForQuery(QStringLiteral("./@tcFormat[1]/text()"),
                                                        sequence) == u"DF";
    // Logged only: the list's timecodes are absolute, like the clips' offsets.
    const double startFrame =
        QFFCPXMLParser::secondsFromTimeString(
            QFXMLParser::stringValueForQuery(QStringLiteral("./@tcStart"), sequence)) *
        timing.fps;
    QFLog::appendLog(u"FPS: %f", timing.fps);
    QFLog::appendLog(u"Timebase: %i", timing.timebase);
    QFLog::appendLog(u"NTSC: %i", int(timing.ntsc));
    QFLog::appendLog(u"Start frame: %li", QFNumberReader::toInt64(startFrame));
    return timing;
}

/// The elements of the primary storyline (the first spine) that take markers, in
/// timeline order; transitions, auditions and connected clips do not. Walked
/// directly: as the equivalent query it cost more than placing all the markers.
QList<XmlNode> storylineClips(const XmlNode &sequence, bool isEvent)
{
    if (isEvent)
        return {sequence};
    static const QSet<QString> clipNames = {
        QStringLiteral("clip"),      QStringLiteral("mc-clip"), QStringLiteral("asset-clip"),
        QStringLiteral("sync-clip"), QStringLiteral("gap"),     QStringLiteral("title"),
        QStringLiteral("ref-clip"),  QStringLiteral("video")};
    XmlNode spine = sequence.childAt(0);
    while (spine && spine.name() != u"spine")
        spine = spine.nextSibling();
    QList<XmlNode> clips;
    for (XmlNode child = spine.childAt(0); child; child = child.nextSibling()) {
        if (clipNames.contains(child.name()))
            clips << child;
    }
    return clips;
}

/// The marker element's attributes as written. The duration is always one frame,
/// whatever the list says.
QList<XmlNode::AttributeText> markerAttributes(const QString &start, const QString &frameDuration,
                                               const QString &name, const QString &comment,
                                               bool todo)
{
    const auto text = [](const QString &value) {
        return value.isNull() ? QStringLiteral("(null)") : value;
    };
    QList<XmlNode::AttributeText> attributes = {
        {QStringLiteral("start"), text(start)},
        {QStringLiteral("duration"), text(frameDuration)},
        {QStringLiteral("value"),
         comment.isEmpty() ? text(name) : text(name) + QStringLiteral(" -  ") + comment}};
    if (todo)
        attributes.append({QStringLiteral("completed"), QStringLiteral("0")});
    return attributes;
}

/// The marker element written out, for the parse that says what is wrong with it.
QString markerElementText(const QList<XmlNode::AttributeText> &attributes)
{
    QString text = QStringLiteral("<marker");
    for (const XmlNode::AttributeText &attribute : attributes)
        text += QStringLiteral(" %1=\"%2\"").arg(attribute.name, attribute.text);
    return text + QStringLiteral(" />");
}

/// Writes the changed document to the temporary folder (a bundle holding it for
/// bundle input) and hands it to the editor when asked. Answers what was handed over.
QString writeResult(const XmlDocument &document, bool package, bool handOff)
{
    const QString resultPath = QFLocalPaths::tempFile() + QStringLiteral(".fcpxml");
    QFLog::appendLog(u"Writing data to temp file %@...", resultPath);
    // Not atomic, and a failure is not reported: the file is a new one in the
    // temporary folder, and the editor says so when it cannot read it.
    QFile result(resultPath);
    if (result.open(QIODevice::WriteOnly))
        result.write(document.toPrettyXml());
    result.close();

    QString opened = resultPath;
    if (package) {
        const QString bundlePath = QFLocalPaths::tempFile() + QStringLiteral(".fcpxmld");
        if (QFFileManager::createDirectory(bundlePath)) {
            QFFileManager::copyFile(resultPath,
                                    QDir(bundlePath).filePath(QStringLiteral("Info.fcpxml")));
            opened = bundlePath;
        } else {
            QFLog::appendLog(u"Failed to create folder %@", bundlePath);
        }
    }
    if (handOff)
        QFWorkspace::shared().openFile(opened, FCPXImport::finalCutProBundleIdentifier,
                                       QFWorkspace::Asynchronous);
    return opened;
}

} // namespace

QString FCPXImport::startProcessingFCPXWithSettings(ImportHost &host,
                                                    const ImportSettings &settings)
{
    const auto stop = [&host] {
        host.setProcessSpinnerRunning(false);
        return QString();
    };
    host.setProcessSpinnerRunning(true);
    const QString filename = settings.filename;
    const QString sequenceXPath = settings.sequenceXPath.value_or(QString());

    // The two bundle failures give up as discovery does, leaving this spinner turning.
    const bool package = QFFileManager::isPackageAtPath(filename);
    const QString documentPath = TargetDiscovery::fcpxmlDocumentPath(host, filename);
    if (documentPath.isNull())
        return QString();

    QFError readError;
    const std::optional<QByteArray> data = QFFileContents::read(documentPath, &readError);
    if (!data) {
        host.showAlert(QStringLiteral("Unable to get data for project"),
                       readError.localizedDescription(), window);
        return stop();
    }
    // Strict: a document that is not well-formed finds no sequence below.
    const std::unique_ptr<XmlDocument> document = XmlDocument::fromBytes(*data);
    const XmlNode top = document ? document->node() : XmlNode();
    renameProject(top);

    QString xpathError;
    const QList<XmlNode> matches = top.nodesForXPath(sequenceXPath, &xpathError);
    if (matches.isEmpty()) {
        host.showAlert(QStringLiteral("Unable to find sequence"),
                       xpathError.isNull() ? QStringLiteral("") : xpathError, window);
        return stop();
    }
    const XmlNode sequence = matches.first();
    if (settings.clearExistingMarkers) {
        for (XmlNode marker : QFXMLParser::nodesForQuery(QStringLiteral(".//marker"), sequence))
            marker.detach();
    }

    const Timing timing = readTiming(top, sequence);

    const auto logReadError = [](const QFError &error) {
        QFLog::appendLog(u"Error importing markers: %@", error.localizedDescription());
    };
    const MarkerListText::ImportText markerText =
        MarkerListText::readForImport(host.markerListPath(), logReadError, nullptr);
    if (markerText.lineCount < 2) {
        MarkerListText::reportUnreadable(host);
        return stop();
    }
    QFLog::appendLog(u"Line count: %li", markerText.lineCount);
    const QList<QFMarkerRecord> records =
        QFFCP7MarkerListParser::parseMarkersFromText(markerText.text);

    const qint64 offsetFrames = settings.offsetInFrames(timing.timebase);
    const QList<XmlNode> clips = storylineClips(sequence, host.targetKind().isEvent);
    if (clips.isEmpty()) {
        QFLog::appendLog(u"Error: no clips found");
        host.showAlert(QStringLiteral("Unable to locate clips"),
                       QStringLiteral("No video clips could be found in the timeline."), window);
        return stop();
    }
    if (records.size() < 2)
        return stop();

    const FCPXClipRanges ranges(clips, timing.fps);
    FCPXMarkerInsertion insertion;
    const bool stripWhitespace = UserTextEscaping::stripWhitespaceEnabled();
    const bool todo = settings.todoMarkersEnabled.value_or(false);
    const double timeScale = timing.fps * double(timing.multiplier);
    bool someFailed = false;
    for (qsizetype i = 1; i < records.size(); ++i) {
        const QFMarkerRecord &record = records[i];
        const QString name = UserTextEscaping::escapeUserInputForXML(record[2], stripWhitespace);
        const QString comment = UserTextEscaping::escapeUserInputForXML(record[3], stripWhitespace);
        const auto frames = [&timing](const QString &timecode) {
            return double(QFTimecode::frameCountFromTimecode(timecode, timing.timebase, timing.ntsc,
                                                             timing.dropFrame, 0));
        };
        const double startFrames = frames(record[4]);
        const double durationFrames = frames(record[5]);
        const double position = std::max(0.0, startFrames + double(offsetFrames));
        const double out =
            durationFrames == 0 ? -1.0 : startFrames + durationFrames + double(offsetFrames);

        QFLog::appendLog(u"Marker name: %@", name);
        QFLog::appendLog(u"Comment: %@", comment);
        QFLog::appendLog(u"Start timecode: %@", record[4]);
        QFLog::appendLog(u"Duration timecode: %@", record[5]);
        QFLog::appendLog(u"Color name: %@", record[6]);
        QFLog::appendLog(u"Marker start pos: %0.0f", position);
        QFLog::appendLog(u"Marker duration: %li", QFNumberReader::toInt64(durationFrames));
        QFLog::appendLog(u"Marker out pos: %li", QFNumberReader::toInt64(out));

        const FCPXClipRanges::Clip *clip = ranges.clipAt(position);
        if (!clip) {
            QFLog::appendLog(u"Clip not found for marker %@ at %0.0f", name, position);
            someFailed = true;
            continue;
        }
        const double local = position - clip->offset + clip->start * timing.fps;
        QString start;
        if (clip->element.name() == u"transition") {
            // Kept as the editor has always received it: the timeline frame number,
            // unmapped, as the start in seconds.
            QFLog::appendLog(u"new marker start pos: %f", local);
            QFLog::appendLog(u"orig marker start pos: %f", position);
            start = QFFormat::format(u"%0.0f/%0.0fs", position * timeScale, timeScale);
        } else {
            start = QFFormat::format(u"%0.0f/%0.0fs", local * double(timing.multiplier), timeScale);
        }

        // Built in place when the texts allow; otherwise the parse of the written-out
        // element decides, and names what is wrong.
        const auto attributes = markerAttributes(start, timing.frameDuration, name, comment, todo);
        if (insertion.insertNew(clip->element, attributes))
            continue;
        QString error;
        const auto marker = XmlDocument::fromElementString(markerElementText(attributes), &error);
        if (!marker) {
            host.showAlert(QStringLiteral("Unable to create marker"), error,
                           ImportHost::AlertParent::None);
            return stop();
        }
        insertion.insert(clip->element, marker->rootElement());
    }

    const QString result = writeResult(*document, package, settings.handOffResult);
    host.setProcessSpinnerRunning(false);
    if (someFailed) {
        host.showAlert(QStringLiteral("Some markers failed to import"),
                       QStringLiteral("Make sure the starting timecode of the marker list matches "
                                      "that of your timeline or use the Offset field to "
                                      "compensate."),
                       window);
    } else {
        host.showAlert(QStringLiteral("Markers successfully imported"),
                       settings.handOffResult
                           ? QStringLiteral("A copy of your project was sent to Final Cut Pro.")
                           : QStringLiteral("A copy of your project was written for Final Cut "
                                            "Pro to import."),
                       window);
    }
    host.setProcessSpinnerRunning(false);
    return result;
}
