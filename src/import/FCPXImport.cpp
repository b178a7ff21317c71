#include "import/FCPXImport.h"

#include "import/FCPXPlacement.h"
#include "import/MarkerListText.h"
#include "import/TargetDiscovery.h"
#include "import/TimelineMarker.h"
#include "import/UserTextEscaping.h"
#include "support/QFFileContents.h"
#include "support/QFFileManager.h"
#include "support/QFLocalPaths.h"
#include "support/QFLog.h"
#include "support/QFWorkspace.h"
#include "time/FrameRate.h"
#include "time/QFFCPXMLParser.h"
#include "time/QFNumberReader.h"
#include "time/RationalTime.h"
#include "xml/FCPXMLDtd.h"
#include "xml/FCPXTimelineRate.h"
#include "xml/QFXMLParser.h"
#include "xml/XmlDocument.h"

#include <QDir>
#include <QFile>
#include <QSaveFile>
#include <QSet>

#include <algorithm>
#include <cmath>
#include <memory>

namespace {

/// The project becomes "<name>-Cuebridge", so the editor imports it beside the
/// user's own. A project inside a library has no such attribute and keeps its name.
void renameProject(const XmlNode &document)
{
    XmlNode name =
        QFXMLParser::nodeForQuery(QStringLiteral("./fcpxml[1]/project[1]/@name[1]"), document);
    if (name)
        name.setStringValue(QFFormat::format(u"%@-Cuebridge", name.stringValue()));
}

/// The sequence's rate, logged; the frame duration as written there is the duration
/// of every marker.
FrameRate readFrameRate(const XmlNode &document, const XmlNode &sequence, QString *frameDuration)
{
    const FCPXTimelineRate timeline = FCPXTimelineRate::of(document, sequence);
    *frameDuration = timeline.frameDuration;
    QFLog::appendLog(u"format: %@", timeline.formatId);
    QFLog::appendLog(u"dur: %@", *frameDuration);
    FrameRate rate = timeline.rate;
    QFLog::appendLog(u"FPS: %f", rate.fps);
    QFLog::appendLog(u"Timebase: %i", rate.timebase);
    QFLog::appendLog(u"NTSC: %i", int(rate.ntsc));
    QFLog::appendLog(u"Start frame: %li", QFNumberReader::toInt64(timeline.startFrames));
    // The list's timecodes are absolute, like the clips' offsets; times counted from the
    // timeline's start (subtitles, chapters) begin here.
    rate.timelineStart = QFNumberReader::toUInt64(std::round(timeline.startFrames));
    return rate;
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
/// whatever the list says. completed: "0" for a to-do item, "1" for a done one.
QList<XmlNode::AttributeText> markerAttributes(const QString &start, const QString &frameDuration,
                                               const QString &name, const QString &comment,
                                               const QString &completed)
{
    const auto text = [](const QString &value) {
        return value.isNull() ? QStringLiteral("(null)") : value;
    };
    QList<XmlNode::AttributeText> attributes = {
        {QStringLiteral("start"), text(start)},
        {QStringLiteral("duration"), text(frameDuration)},
        {QStringLiteral("value"),
         comment.isEmpty() ? text(name) : text(name) + QStringLiteral(" -  ") + comment}};
    if (!completed.isNull())
        attributes.append({QStringLiteral("completed"), completed});
    return attributes;
}

/// The marker element written out, for the parse that says what is wrong with it.
QString markerElementText(const QString &element, const QList<XmlNode::AttributeText> &attributes)
{
    QString text = u'<' + element;
    for (const XmlNode::AttributeText &attribute : attributes)
        text += QStringLiteral(" %1=\"%2\"").arg(attribute.name, attribute.text);
    return text + QStringLiteral(" />");
}

/// Writes the changed document once, where it goes: the path asked for, else a new
/// file in the temporary folder; for bundle input a bundle holding it as Info.fcpxml.
/// Hands it to the editor when asked. Answers what was written, or a null string with
/// error set.
QString writeResult(const XmlDocument &document, bool package,
                    const std::optional<QString> &outputPath, bool handOff, QString *error,
                    bool *handedOff)
{
    QString written =
        outputPath.value_or(QFLocalPaths::tempFile() +
                            (package ? QStringLiteral(".fcpxmld") : QStringLiteral(".fcpxml")));
    QString documentPath = written;
    if (package) {
        // The temporary folder is the user's own: never a reason to ask for rights.
        if (QFFileManager::createDirectory(written, false)) {
            documentPath = QDir(written).filePath(QStringLiteral("Info.fcpxml"));
        } else if (outputPath) {
            *error = QStringLiteral("The bundle %1 could not be made.").arg(written);
            QFLog::appendLog(u"Failed to create folder %@", written);
            return QString();
        } else {
            QFLog::appendLog(u"Failed to create folder %@", written);
            written = documentPath = QFLocalPaths::tempFile() + QStringLiteral(".fcpxml");
        }
    }
    QFLog::appendLog(u"Writing data to temp file %@...", documentPath);
    // Whole or not at all where the user named the path, which may hold an earlier
    // result; a new file of the temporary folder is simply written.
    QSaveFile atomic(documentPath);
    QFile plain(documentPath);
    QFileDevice &result = outputPath ? static_cast<QFileDevice &>(atomic) : plain;
    if (!result.open(QIODevice::WriteOnly) || !document.writePrettyXml(result) ||
        !(outputPath ? atomic.commit() : plain.flush())) {
        *error = result.errorString();
        QFLog::appendLog(u"Failed to write %@: %@", documentPath, *error);
        if (documentPath != written) // no empty bundle is left behind
            QDir(written).removeRecursively();
        return QString();
    }
    plain.close();
    // Only a program that started has received the result.
    *handedOff =
        handOff && QFWorkspace::shared().openFile(written, FCPXImport::finalCutProBundleIdentifier,
                                                  QFWorkspace::Asynchronous);
    return written;
}

} // namespace

ImportOutcome FCPXImport::startProcessingFCPXWithSettings(const TargetKind &kind,
                                                          const QString &markerListPath,
                                                          const ImportSettings &settings,
                                                          ParsedTarget *parsed)
{
    const QString filename = settings.filename;
    const QString sequenceXPath = settings.sequenceXPath.value_or(QString());

    // A bundle without its document ends as its discovery does.
    const bool package = QFFileManager::isPackageAtPath(filename);
    ImportOutcome bundleFailure;
    const QString documentPath = TargetDiscovery::fcpxmlDocumentPath(filename, &bundleFailure);
    if (documentPath.isNull())
        return bundleFailure;

    QFError readError;
    std::optional<ParsedTarget::ForImport> read =
        ParsedTarget::forImport(parsed, documentPath, &readError);
    if (!read)
        return ImportOutcome::failed(QStringLiteral("Unable to get data for project"),
                                     readError.localizedDescription());
    // Strict: a document that is not well-formed finds no sequence below.
    std::unique_ptr<XmlDocument> document = std::move(read->document);
    const XmlNode top = document ? document->node() : XmlNode();
    renameProject(top);

    QString xpathError;
    const QList<XmlNode> matches = top.nodesForXPath(sequenceXPath, &xpathError);
    if (matches.isEmpty())
        return ImportOutcome::failed(QStringLiteral("Unable to find sequence"),
                                     xpathError.isNull() ? QStringLiteral("") : xpathError);
    const XmlNode sequence = matches.first();
    if (settings.clearExistingMarkers)
        TimelineMarker::clearAll(sequence);

    QString frameDuration;
    const FrameRate rate = readFrameRate(top, sequence, &frameDuration);
    const qint64 multiplier = QFFCPXMLParser::multiplierFromFrameDuration(frameDuration);

    const auto logReadError = [](const QFError &error) {
        QFLog::appendLog(u"Error importing markers: %@", error.localizedDescription());
    };
    const MarkerListText::ImportText markerText =
        MarkerListText::readForImport(markerListPath, logReadError, nullptr,
                                      settings.markerListEncoding, settings.markerListReadAhead());
    if (markerText.lineCount < 2)
        return MarkerListText::unreadable();
    QFLog::appendLog(u"Line count: %li", markerText.lineCount);

    const qint64 offsetFrames = settings.offsetInFrames(rate.timebase);
    const QList<XmlNode> clips = storylineClips(sequence, kind.isEvent);
    if (clips.isEmpty()) {
        QFLog::appendLog(u"Error: no clips found");
        return ImportOutcome::failed(
            QStringLiteral("Unable to locate clips"),
            QStringLiteral("No video clips could be found in the timeline."));
    }
    ImportReport report = markerText.list.report();
    if (const auto end = MarkerListText::endWithoutMarkers(markerText))
        return *end;

    const FCPXClipRanges ranges(clips, rate.fps);
    std::optional<RationalTime> frame = RationalTime::fromTimeString(frameDuration);
    if (frame && frame->numerator <= 0)
        frame.reset(); // no rate to place anything at
    const FCPXMLDtd &dtd = FCPXMLDtd::forDocument(*document);
    FCPXMarkerInsertion insertion(dtd);
    const bool stripWhitespace = UserTextEscaping::stripWhitespaceEnabled();
    const bool todo = settings.todoMarkersEnabled.value_or(false);
    const bool chaptersKnown = dtd.version() != u"1.0" && dtd.version() != u"1.1";
    const double timeScale = rate.fps * double(multiplier);
    bool outsideClips = false;
    const qsizetype total = markerText.list.markers.size();
    for (qsizetype done = 0; done < total; ++done) {
        if (settings.cancelled(done, total))
            return ImportOutcome::cancelled(report);
        const MarkerRecord &record = markerText.list.markers.at(done);
        if (!TimelineMarker::timecodesExist(record, rate, report))
            continue;
        const TimelineMarker marker = TimelineMarker::make(
            record, rate, offsetFrames, stripWhitespace, TimelineMarker::Arithmetic::RealFrames);
        const double position = marker.position;
        // The clip is chosen exactly: a marker on a cut belongs to the later clip at any
        // rate, where frames times a fractional rate would miss it by a rounding.
        const auto time = frame && position < 1e15 ? RationalTime::frames(qint64(position), *frame)
                                                   : std::nullopt;
        const FCPXClipRanges::Clip *clip = time ? ranges.clipAt(*time) : nullptr;
        if (!clip) {
            QFLog::appendLog(u"Clip not found for marker %@ at %0.0f", marker.name, position);
            outsideClips = true;
            report.skip(record.lines,
                        QStringLiteral("outside every clip: %1")
                            .arg(rate.timecodeFromFrames(QFNumberReader::toUInt64(position))));
            continue;
        }
        // Not below the clip's own start: the exact test has put the marker inside it.
        const double local = std::max(0.0, position - clip->offset) + clip->start * rate.fps;
        QString start;
        if (clip->element.name() == u"transition") {
            // Kept as the editor has always received it: the timeline frame number,
            // unmapped, as the start in seconds.
            QFLog::appendLog(u"new marker start pos: %f", local);
            QFLog::appendLog(u"orig marker start pos: %f", position);
            start = QFFormat::format(u"%0.0f/%0.0fs", position * timeScale, timeScale);
        } else {
            start = QFFormat::format(u"%0.0f/%0.0fs", local * double(multiplier), timeScale);
        }
        // Chapter markers came with FCPXML 1.2; before it a chapter is a plain marker.
        const bool chapter = record.kind == MarkerRecord::Kind::Chapter && chaptersKnown;
        const QString completed = chapter                                   ? QString()
                                  : record.kind == MarkerRecord::Kind::Done ? QStringLiteral("1")
                                  : todo || record.kind == MarkerRecord::Kind::ToDo
                                      ? QStringLiteral("0")
                                      : QString();
        const QString clipName = clip->element.attributeValue("name");
        report.written.append(
            {record.lines,
             QStringLiteral("%1 “%2” at %3").arg(clip->element.name(), clipName, start),
             record.kind == MarkerRecord::Kind::Chapter && !chapter
                 ? QStringLiteral("FCPXML %1 has no chapter markers: a plain marker")
                       .arg(dtd.version())
                 : QString()});
        if (settings.dryRun)
            continue;

        // Built in place when the texts allow; otherwise the parse of the written-out
        // element decides, and names what is wrong.
        const QString elementName =
            chapter ? QStringLiteral("chapter-marker") : QStringLiteral("marker");
        const auto attributes =
            markerAttributes(start, frameDuration, marker.name, marker.comment, completed);
        if (insertion.insertNew(clip->element, attributes, elementName))
            continue;
        QString error;
        const auto element =
            XmlDocument::fromElementString(markerElementText(elementName, attributes), &error);
        if (!element)
            return ImportOutcome::failed(QStringLiteral("Unable to create marker"), error,
                                         ImportOutcome::AlertParent::None);
        insertion.insert(clip->element, element->rootElement());
    }
    if (settings.dryRun)
        return ImportOutcome::previewed(report);
    // The last moment a cancel leaves the target as it was.
    if (settings.cancelled(total, total))
        return ImportOutcome::cancelled(report);
    if (report.written.isEmpty()) {
        QFLog::appendLog(u"No marker to import");
        return ImportOutcome::nothingImported(report);
    }

    // The editor refuses a whole document that breaks its DTD; one that did so before
    // the import is written as it always was.
    if (const QString problem = insertion.check(); !problem.isNull()) {
        QFLog::appendLog(u"Result does not follow the FCPXML %@ DTD: %@", dtd.version(), problem);
        const auto input = XmlDocument::fromFile(documentPath);
        if (input && dtd.checkDocument(*input).isNull())
            return ImportOutcome::failed(QStringLiteral("Unable to create marker"), problem,
                                         ImportOutcome::AlertParent::None);
    }

    // A result that cannot be written is no success, and nothing is handed over.
    QString writeError;
    bool handedOff = false;
    const QString result = writeResult(*document, package, settings.outputPath,
                                       settings.handOffResult, &writeError, &handedOff);
    if (result.isNull())
        return ImportOutcome::failed(QStringLiteral("Failed to write marker data to disk."),
                                     writeError);
    if (settings.leaveDocumentToExit)
        XmlDocument::leaveToExit(std::move(document));
    const ImportOutcome outcome = ImportOutcome::written(
        report, result,
        handedOff ? QStringLiteral("A copy of your project was sent to Final Cut Pro.")
        : settings.handOffResult
            ? QStringLiteral("A copy of your project was saved as %1, but no application "
                             "could be started to open it: import it into Final Cut Pro "
                             "yourself.")
                  .arg(result)
            : QStringLiteral("A copy of your project was written for Final Cut Pro to import."),
        outsideClips
            ? QStringLiteral("Make sure the starting timecode of the marker list matches "
                             "that of your timeline or use the Offset field to compensate.")
            : QString());
    return outcome;
}
