#include "import/FCP7Import.h"

#include "fcp7link/QFAppleEvents.h"
#include "import/MarkerListText.h"
#include "import/QFFCP7MarkerListParser.h"
#include "import/TimelineMarker.h"
#include "import/UserTextEscaping.h"
#include "support/QFFileContents.h"
#include "support/QFLog.h"
#include "time/FrameRate.h"
#include "time/QFNumberReader.h"
#include "xml/QFXMLParser.h"
#include "xml/XmlDocument.h"

#include <QFileInfo>
#include <QMutex>

#include <algorithm>
#include <limits>
#include <memory>
#include <optional>

namespace {

struct MarkerColor
{
    const char16_t *name;
    int red;
    int green;
    int blue;
    std::optional<quint32> pproColor; // alpha, blue, green, red from the top byte down
};

// Kept exactly as the editors have always received it: Green and Pink carry no
// pproColor, and White is drawn red with a white pproColor.
constexpr MarkerColor markerColors[] = {
    {u"Orange", 255, 127, 0, 0xFF246FE9u}, {u"Yellow", 255, 255, 0, 0xFF2BA1D0u},
    {u"Green", 48, 191, 72, std::nullopt}, {u"Turquoise", 48, 191, 191, 0xFFD6F419u},
    {u"Blue", 0, 128, 255, 0xFFFC8D42u},   {u"Purple", 127, 0, 255, 0xFFB18BAFu},
    {u"Pink", 255, 0, 127, std::nullopt},  {u"White", 255, 0, 0, 0xFFFFFFFFu},
    {u"Red", 255, 0, 0, 0xFF362CD2u},
};
constexpr MarkerColor otherColor{u"", 255, 0, 0, std::nullopt};

/// The colour of a name, in any case; nullptr for a name not in the table.
const MarkerColor *knownColor(const QString &name)
{
    const auto *found = std::find_if(
        std::begin(markerColors), std::end(markerColors), [&name](const MarkerColor &c) {
            return name.compare(QStringView(c.name), Qt::CaseInsensitive) == 0;
        });
    return found == std::end(markerColors) ? nullptr : found;
}

const MarkerColor &markerColor(const QString &name)
{
    const MarkerColor *color = knownColor(name);
    return color ? *color : otherColor;
}

/// The sequence of an XMEML file that the item stands for: the XPath of a sequence
/// without a uuid, or else the first sequence whose uuid is the item's.
XmlNode sequenceOfFile(const XmlNode &top, const QString &item)
{
    if (item.startsWith(u'/')) {
        const XmlNode found = top.nodesForXPath(item).value(0);
        return found.name() == u"sequence" ? found : XmlNode();
    }
    for (const XmlNode &sequence :
         QFXMLParser::nodesForQuery(QStringLiteral("./xmeml[1]//sequence"), top)) {
        if (QFXMLParser::stringValueForQuery(QStringLiteral("./uuid[1]"), sequence) == item)
            return sequence;
    }
    return XmlNode();
}

/// Whether the file still holds the bytes the import read: two imports into one file
/// must not drop each other's markers.
bool unchangedSince(const QString &path, const QFFileContents::Fingerprint &read)
{
    const std::optional<QFFileContents::Fingerprint> now = QFFileContents::fingerprint(path);
    return now && *now == read;
}

int int32Value(const QString &text)
{
    return int(std::clamp<qint64>(QFNumberReader::leadingInteger(text),
                                  std::numeric_limits<int>::min(),
                                  std::numeric_limits<int>::max()));
}

/// The sequence's rate and start, from its timecode element.
FrameRate readFrameRate(const XmlNode &sequence)
{
    const auto value = [&sequence](const char16_t *query) {
        return FCP7Import::valueForXPath(QString::fromUtf16(query), sequence);
    };
    FrameRate rate;
    rate.ntsc = value(u"./timecode/rate/ntsc").toLower() == u"true";
    rate.dropFrame = value(u"./timecode/displayformat").toLower() == u"df";
    rate.timebase = int32Value(value(u"./timecode/rate/timebase"));
    // Signed in the document: a negative start wraps as the timecode arithmetic does.
    rate.startFrame = quint64(qint64(int32Value(value(u"./timecode/frame"))));
    return rate;
}

/// The output, with the internal subset of the user's document when it has one: the
/// sequence may refer to the entities declared there.
QByteArray bareSequenceDocument(const QString &version, const QString &doctype,
                                const QByteArray &content)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>" +
           (doctype.isNull() ? QByteArray("<!DOCTYPE xmeml>") : doctype.toUtf8()) +
           "<xmeml version=\"" + version.toUtf8() + "\">" + content + "</xmeml>";
}

/// The bin "Imported Markers" holding the sequence, in pieces around it (a sequence may
/// be most of the document: it is not copied again).
QList<QByteArray> bin(const QString &uuid, const QByteArray &sequence)
{
    return {"<bin><uuid>" + uuid.toUtf8() +
                "</uuid><updatebehavior>add</updatebehavior><name>Imported Markers</name>"
                "<children>",
            sequence, "</children></bin>"};
}

/// Whether the text before a splice is tags and text alone, so that the "<children>"
/// found there is a start tag and not part of a comment, an instruction or the
/// declarations of an internal subset.
bool onlyTagsBefore(QByteArrayView prefix)
{
    return !prefix.contains("<!--") && !prefix.contains('[') && prefix.indexOf("<?", 1) < 0;
}

/// Replaces the XMEML file at the end of a successful run, and only with a document
/// that parses, so that the user's file is never left unreadable. An earlier failure
/// in the error slot is reported as a failed write.
ImportOutcome writeXMEMLFile(bool isSequenceOnly, const QList<QByteArray> &pieces, bool wellFormed,
                             const QString &path, QFError &errorSlot, const ImportReport &report,
                             const std::optional<QFFileContents::Fingerprint> &read)
{
    // Compared and replaced under one lock, so that two windows of this process never
    // interleave.
    static QMutex writing;
    QMutexLocker lock(&writing);
    QString parseError;
    if (read && !unchangedSince(path, *read))
        errorSlot = QFError::make(
            QStringLiteral("com.quillfen"), 3, QStringLiteral("NSLocalizedDescription"),
            QStringLiteral("The file changed during the import, so nothing was written; import "
                           "again to add the markers to its new contents."));
    else if (!wellFormed && !XmlDocument::isWellFormed(pieces.join(), &parseError))
        errorSlot = QFError::make(QStringLiteral("com.quillfen"), 2,
                                  QStringLiteral("NSLocalizedDescription"),
                                  QStringLiteral("The changed sequence is not well-formed XML, so "
                                                 "the file was left as it was. ") +
                                      parseError);
    else
        QFFileContents::writeAtomically(path, pieces, &errorSlot);
    lock.unlock();
    if (!errorSlot.domain.isEmpty()) {
        ImportOutcome failure =
            ImportOutcome::failed(QStringLiteral("Failed to write marker data to disk."),
                                  errorSlot.localizedDescription());
        failure.report = report;
        return (failure);
    }
    return (ImportOutcome::written(
        report, path,
        isSequenceOnly
            ? QStringLiteral("The markers were imported into the XML file.\n\nPlease reimport "
                             "the XML file into your editing application.")
            : QStringLiteral("The markers were imported into a copy of the sequence inside the "
                             "Imported Markers bin.\n\nPlease reimport the XML file into your "
                             "editing application.")));
}

} // namespace

XmlNode FCP7Import::nodeForXPath(const QString &query, const XmlNode &parentNode)
{
    const QList<XmlNode> nodes = parentNode.nodesForXPath(query);
    return nodes.isEmpty() ? XmlNode() : nodes.first();
}

QString FCP7Import::valueForXPath(const QString &query, const XmlNode &parentNode)
{
    return nodeForXPath(query, parentNode).stringValue();
}

XmlNode FCP7Import::renameSequence(const XmlNode &sequence)
{
    XmlNode id = sequence.attributeForName(QStringLiteral("id"));
    if (!id)
        return XmlNode();
    const QString newName = QFFormat::format(u"%@-Cuebridge", id.stringValue());
    id.setStringValue(newName);
    for (XmlNode attribute : sequence.attributes()) {
        if (attribute != id)
            attribute.detach();
    }
    QFXMLParser::nodeForQuery(QStringLiteral("./name[1]"), sequence).setStringValue(newName);
    return sequence;
}

QString FCP7Import::markerElementText(const QString &name, const QString &comment,
                                      const QString &colorName, qint64 in, qint64 out)
{
    const MarkerColor &color = markerColor(colorName);
    const QString ppro = color.pproColor
                             ? QFFormat::format(u"<pproColor>%llu</pproColor>", *color.pproColor)
                             : QStringLiteral("");
    return QFFormat::format(
        u"<marker><name>%@</name><comment>%@</comment><color><alpha>%li</alpha><red>%i</red>"
        u"<green>%i</green><blue>%i</blue></color><in>%i</in><out>%i</out>%@</marker>",
        name, comment, 0, color.red, color.green, color.blue, qint32(in), qint32(out), ppro);
}

ImportOutcome FCP7Import::startProcessingWithSettings(const TargetKind &kind,
                                                      const QString &markerListPath,
                                                      const ImportSettings &settings,
                                                      ParsedTarget *parsed)
{
    using Parent = ImportOutcome::AlertParent;
    const QString filename = settings.filename;
    const QString uuid = settings.uuid.value_or(QString());
    QFLog::appendLog(u"Sequence UUID: %@", uuid);
    if (!settings.uuid)
        return ImportOutcome();
    QFLog::appendLog(u"Project filename: %@", filename);

    // Strict: a document that is not well-formed finds no sequence below.
    std::unique_ptr<XmlDocument> document;
    std::optional<QFFileContents::Fingerprint> read; // of the file, as the import read it
    if (kind.isXMLFile) {
        std::optional<ParsedTarget::ForImport> target =
            ParsedTarget::forImport(parsed, filename, nullptr);
        if (target) {
            document = std::move(target->document);
            read = target->fingerprint;
        }
    } else if (const std::optional<QByteArray> data =
                   QFAppleEvents::getItemXMLData(uuid, filename, true)) {
        document = XmlDocument::fromBytes(*data);
        read.emplace();
    }
    if (!read)
        return ImportOutcome::failed(QFFormat::format(u"Unable to get data for UUID %@", uuid),
                                     QStringLiteral("Cuebridge has been aborted."));
    const XmlNode top = document ? document->node() : XmlNode();
    QString version = QFXMLParser::stringValueForQuery(QStringLiteral("./xmeml[1]/@version"), top);
    if (version.isEmpty())
        version = QFFormat::format(u"%li", QFAppleEvents::maximumXMEMLVersion());

    // The editor's own data holds only the chosen sequence: there a string literal
    // predicate, which holds for any uuid, finds it. A file may hold many.
    XmlNode sequence =
        kind.isSequenceOnly
            ? QFXMLParser::nodeForQuery(QStringLiteral("./xmeml[1]/sequence[1]"), top)
        : kind.isXMLFile
            ? sequenceOfFile(top, uuid)
            : QFXMLParser::nodeForQuery(
                  QFFormat::format(u"./xmeml[1]//sequence/uuid[\"%@\"]/..", uuid), top);
    const auto sequenceNotFound = [] {
        return ImportOutcome::failed(
            QStringLiteral("Unable to find the sequence"),
            QStringLiteral("An error occurred getting the data from Final Cut Pro."));
    };
    if (!sequence)
        return sequenceNotFound();

    // Other editors' exports may leave out the id that the new name is made from: their
    // sequence's own name serves instead.
    if (kind.isXMLFile && !sequence.attributeForName(QStringLiteral("id"))) {
        const QString name =
            QFXMLParser::stringValueForQuery(QStringLiteral("./name[1]"), sequence);
        sequence.setAttribute("id", name.isEmpty() ? QStringLiteral("Sequence") : name);
    }
    const QString newUUID = QFAppleEvents::generateUUID();
    if (XmlNode uuidNode = QFXMLParser::nodeForQuery(QStringLiteral("./uuid[1]"), sequence)) {
        uuidNode.setStringValue(newUUID);
    } else {
        XmlNode added = sequence.addChild(
            XmlDocument::fromElementString(QStringLiteral("<uuid/>"))->rootElement());
        added.setStringValue(newUUID);
    }
    if (!renameSequence(sequence))
        return sequenceNotFound();

    if (settings.clearExistingMarkers)
        TimelineMarker::clearAll(sequence);

    const FrameRate rate = readFrameRate(sequence);
    QFLog::appendLog(u"Start frame: %li", qint64(rate.startFrame));
    QFLog::appendLog(u"Timebase: %li", rate.timebase);

    // One error slot for the marker list reads and the final write: an earlier
    // failure is still there after a successful write, and is reported.
    QFError errorSlot;
    const auto keep = [&errorSlot](const QFError &error) { errorSlot = error; };
    const MarkerListText::ImportText markerText = MarkerListText::readForImport(
        markerListPath, keep, keep, settings.markerListEncoding, settings.markerListReadAhead());
    QFLog::appendLog(u"Line count: %li", markerText.lineCount);
    if (markerText.lineCount < 2)
        return MarkerListText::unreadable();

    const qint64 offset = settings.offsetInFrames(rate.timebase);
    ImportReport report = markerText.list.report();
    if (const auto end = MarkerListText::endWithoutMarkers(markerText))
        return *end;

    const QString sequenceName =
        QFXMLParser::stringValueForQuery(QStringLiteral("./name[1]"), sequence);
    const bool stripWhitespace = UserTextEscaping::stripWhitespaceEnabled();
    const qsizetype total = markerText.list.markers.size();
    for (qsizetype done = 0; done < total; ++done) {
        if (settings.cancelled(done, total))
            return ImportOutcome::cancelled(report);
        const MarkerRecord &record = markerText.list.markers.at(done);
        QFLog::appendLog(u"Tab count: %i", record.columns);
        if (!TimelineMarker::timecodesExist(record, rate, report))
            continue;
        const TimelineMarker marker = TimelineMarker::make(record, rate, offset, stripWhitespace,
                                                           TimelineMarker::Arithmetic::WholeFrames);
        if (!settings.dryRun) {
            QString error;
            const auto element = XmlDocument::fromElementString(
                markerElementText(marker.name, marker.comment, record.color, marker.in, marker.out),
                &error);
            if (!element)
                return ImportOutcome::failed(QStringLiteral("Unable to create marker"), error,
                                             Parent::None);
            sequence.addChild(element->rootElement());
        }
        report.written.append(
            {record.lines,
             QStringLiteral("sequence “%1” at frame %2").arg(sequenceName).arg(marker.in),
             record.color.isEmpty() || knownColor(record.color)
                 ? QString()
                 : QStringLiteral("colour \"%1\" is none of ours: the marker is red")
                       .arg(record.color)});
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

    // Whole documents stay UTF-8 from the serialiser to the disk, in pieces that are
    // joined only where a whole is needed.
    QByteArray whole;
    QList<QByteArray> output;
    // A document that libxml2 wrote from a strict parse is well-formed, and so is one
    // with the copy spliced in as an element: the output is checked unless that holds
    // and the escaping below touched nothing.
    bool wellFormed = false;
    if (kind.isSequenceOnly) {
        output = {bareSequenceDocument(version, document->internalSubsetDeclaration(),
                                       sequence.toPrettyUtf8())};
    } else if (kind.isXMLFile) {
        whole = document->toPrettyXml(read->size() + read->size() / 8);
        const QByteArrayView children("<children>");
        const qsizetype at = whole.indexOf(children);
        if (at < 0)
            return ImportOutcome::failed(QStringLiteral("Unable to find child element"),
                                         QStringLiteral("The XML format is invalid."),
                                         Parent::None);
        const qsizetype split = at + children.size();
        output = bin(QFAppleEvents::generateUUID(), sequence.toPrettyUtf8(whole.size()));
        output.prepend(QByteArray::fromRawData(whole.constData(), split));
        output.append(QByteArray::fromRawData(whole.constData() + split, whole.size() - split));
        wellFormed = onlyTagsBefore(QByteArrayView(whole).first(at));
    } else {
        output = bin(QFAppleEvents::generateUUID(), sequence.toPrettyUtf8());
        output.prepend(
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?><!DOCTYPE xmeml><xmeml version=\"" +
            version.toUtf8() + "\">");
        output.append("</xmeml>");
    }
    for (QByteArray &piece : output) {
        QByteArray escaped = QFAppleEvents::escapeCharactersInXMLString(piece);
        if (escaped.constData() != piece.constData()) {
            wellFormed = false;
            piece = std::move(escaped);
        }
    }

    if (targetFormatForPath(filename) == TargetFormat::XMEMLFile) {
        const QString path = settings.outputPath.value_or(filename);
        // Only the target itself can have been changed by another import meanwhile.
        const bool inPlace = QFileInfo(path) == QFileInfo(filename);
        ImportOutcome outcome = writeXMEMLFile(kind.isSequenceOnly, output, wellFormed, path,
                                               errorSlot, report, inPlace ? read : std::nullopt);
        if (settings.leaveDocumentToExit)
            XmlDocument::leaveToExit(std::move(document));
        return outcome;
    }

    if (QFAppleEvents::sendXMLToFCP(QString::fromUtf8(output.join()), filename)) {
        QFAppleEvents::openItem(newUUID, filename, true);
        return (ImportOutcome::written(
            report, QString(),
            QStringLiteral("The markers were imported into a copy of the sequence "
                           "inside the Imported Markers bin.")));
    }
    return (ImportOutcome::failed(QStringLiteral("Failed to send marker data to Final Cut Pro"),
                                  QStringLiteral("Please report this error to Quillfen.")));
}
