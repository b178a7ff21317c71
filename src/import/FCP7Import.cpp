#include "FCP7Import.h"

#include "diagnostics/QFLog.h"
#include "fcp7link/QFAppleEvents.h"
#include "import/MarkerListText.h"
#include "import/QFFCP7MarkerListParser.h"
#include "import/UserTextEscaping.h"
#include "support/QFFileContents.h"
#include "time/QFNumberReader.h"
#include "time/QFTimecode.h"
#include "xml/QFXMLParser.h"
#include "xml/XmlDocument.h"

#include <QFileInfo>

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

const MarkerColor &markerColor(const QString &name)
{
    const auto *found = std::find_if(std::begin(markerColors), std::end(markerColors),
                                     [&name](const MarkerColor &c) { return name == c.name; });
    return found == std::end(markerColors) ? otherColor : *found;
}

int int32Value(const QString &text)
{
    return int(std::clamp<qint64>(QFNumberReader::leadingInteger(text),
                                  std::numeric_limits<int>::min(),
                                  std::numeric_limits<int>::max()));
}

struct TimecodeSettings
{
    bool ntsc = false;
    bool dropFrame = false;
    int timebase = 0;
    int startFrame = 0;
};

TimecodeSettings readTimecodeSettings(const XmlNode &sequence)
{
    const auto value = [&sequence](const char16_t *query) {
        return FCP7Import::valueForXPath(QString::fromUtf16(query), sequence);
    };
    TimecodeSettings settings;
    settings.ntsc = value(u"./timecode/rate/ntsc").toLower() == u"true";
    settings.dropFrame = value(u"./timecode/displayformat").toLower() == u"df";
    settings.timebase = int32Value(value(u"./timecode/rate/timebase"));
    settings.startFrame = int32Value(value(u"./timecode/frame"));
    return settings;
}

QString bin(const QString &uuid, const QString &sequence)
{
    return QFFormat::format(u"<bin><uuid>%@</uuid><updatebehavior>add</updatebehavior>"
                            u"<name>Imported Markers</name><children>%@</children></bin>",
                            uuid, sequence);
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

void FCP7Import::startProcessingWithSettings(ImportHost &host, const ImportSettings &settings)
{
    const auto window = ImportHost::AlertParent::DocumentWindow;
    const auto freeStanding = ImportHost::AlertParent::None;
    const auto stop = [&host] { host.setProcessSpinnerRunning(false); };
    const TargetKind &kind = host.targetKind();

    host.setProcessSpinnerRunning(true);
    const QString filename = settings.filename;
    const QString uuid = settings.uuid.value_or(QString());
    QFLog::appendLog(u"Sequence UUID: %@", uuid);
    if (!settings.uuid)
        return stop();
    QFLog::appendLog(u"Project filename: %@", filename);

    const std::optional<QByteArray> data =
        kind.isXMLFile ? QFFileContents::read(filename)
                       : QFAppleEvents::getItemXMLData(uuid, filename, true);
    if (!data) {
        host.showAlert(QFFormat::format(u"Unable to get data for UUID %@", uuid),
                       QStringLiteral("Cuebridge has been aborted."), window);
        return stop();
    }

    // Strict: a document that is not well-formed finds no sequence below.
    const std::unique_ptr<XmlDocument> document = XmlDocument::fromBytes(*data);
    const XmlNode top = document ? document->node() : XmlNode();
    QString version = QFXMLParser::stringValueForQuery(QStringLiteral("./xmeml[1]/@version"), top);
    if (version.isEmpty())
        version = QFFormat::format(u"%li", QFAppleEvents::maximumXMEMLVersion());

    // A string literal predicate holds for any uuid, so this is the first sequence
    // that has one; the editor's own data holds only the chosen sequence anyway.
    XmlNode sequence =
        kind.isSequenceOnly
            ? QFXMLParser::nodeForQuery(QStringLiteral("./xmeml[1]/sequence[1]"), top)
            : QFXMLParser::nodeForQuery(
                  QFFormat::format(u"./xmeml[1]//sequence/uuid[\"%@\"]/..", uuid), top);
    const auto sequenceNotFound = [&] {
        host.showAlert(QStringLiteral("Unable to find the sequence"),
                       QStringLiteral("An error occurred getting the data from Final Cut Pro."),
                       window);
        stop();
    };
    if (!sequence)
        return sequenceNotFound();

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

    if (settings.clearExistingMarkers) {
        for (XmlNode marker : QFXMLParser::nodesForQuery(QStringLiteral(".//marker"), sequence))
            marker.detach();
    }

    const TimecodeSettings timecode = readTimecodeSettings(sequence);
    QFLog::appendLog(u"Start frame: %li", timecode.startFrame);
    QFLog::appendLog(u"Timebase: %li", timecode.timebase);

    // One error slot for the marker list reads and the final write: an earlier
    // failure is still there after a successful write, and is reported.
    QFError errorSlot;
    const auto keep = [&errorSlot](const QFError &error) { errorSlot = error; };
    const MarkerListText::ImportText markerText =
        MarkerListText::readForImport(host.markerListPath(), keep, keep);
    QFLog::appendLog(u"Line count: %li", markerText.lineCount);
    if (markerText.lineCount < 2) {
        MarkerListText::reportUnreadable(host);
        return stop();
    }

    const qint64 offset = settings.offsetInFrames(timecode.timebase);
    const QList<QFMarkerRecord> records =
        QFFCP7MarkerListParser::parseMarkersFromText(markerText.text);
    if (records.size() < 2)
        return stop();

    const bool stripWhitespace = UserTextEscaping::stripWhitespaceEnabled();
    for (qsizetype i = 1; i < records.size(); ++i) {
        const QFMarkerRecord &record = records[i];
        QFLog::appendLog(u"Tab count: %i", record.size());
        if (record.size() != 7)
            continue;
        const QString name = UserTextEscaping::escapeUserInputForXML(record[2], stripWhitespace);
        const QString comment = UserTextEscaping::escapeUserInputForXML(record[3], stripWhitespace);
        const QString &start = record[4];
        const QString &duration = record[5];
        const QString colorName = record[6].trimmed();

        // Unsigned as the timecode arithmetic is: a marker before the sequence start
        // wraps and reads negative below.
        const quint64 startFrames = QFTimecode::frameCountFromTimecode(
            start, timecode.timebase, timecode.ntsc, timecode.dropFrame,
            quint64(qint64(timecode.startFrame)));
        const quint64 durationFrames = QFTimecode::frameCountFromTimecode(
            duration, timecode.timebase, timecode.ntsc, timecode.dropFrame, 0);
        const qint64 in = std::max<qint64>(qint64(startFrames + quint64(offset)), 0);
        qint64 out = -1;
        if (durationFrames != 0) {
            const qint64 end = qint64(startFrames + durationFrames);
            out = end < 0 ? end : qint64(quint64(end) + quint64(offset));
        }
        if (out < 0)
            out = -1;

        QFLog::appendLog(u"Marker name: %@", name);
        QFLog::appendLog(u"Comment: %@", comment);
        QFLog::appendLog(u"Start timecode: %@", start);
        QFLog::appendLog(u"Duration timecode: %@", duration);
        QFLog::appendLog(u"Color name: %@", colorName);
        QFLog::appendLog(u"Marker start pos: %li", in);
        QFLog::appendLog(u"Marker duration: %li", durationFrames);
        QFLog::appendLog(u"Marker out pos: %li", out);

        QString error;
        const auto marker = XmlDocument::fromElementString(
            markerElementText(name, comment, colorName, in, out), &error);
        if (!marker) {
            host.showAlert(QStringLiteral("Unable to create marker"), error, freeStanding);
            return stop();
        }
        sequence.addChild(marker->rootElement());
    }

    QString output;
    if (kind.isSequenceOnly) {
        output = QFFormat::format(u"<?xml version=\"1.0\" encoding=\"UTF-8\"?><!DOCTYPE xmeml>"
                                  u"<xmeml version=\"%@\">%@</xmeml>",
                                  version, sequence.toPrettyString());
    } else if (kind.isXMLFile) {
        const QString whole = QString::fromUtf8(document->toPrettyXml());
        const QLatin1StringView children("<children>");
        const qsizetype at = whole.indexOf(children);
        if (at < 0) {
            host.showAlert(QStringLiteral("Unable to find child element"),
                           QStringLiteral("The XML format is invalid."), freeStanding);
            return stop();
        }
        const qsizetype split = at + children.size();
        const QString copy = bin(QFAppleEvents::generateUUID(), sequence.toPrettyString());
        output.reserve(whole.size() + copy.size());
        output += QStringView(whole).left(split);
        output += copy;
        output += QStringView(whole).mid(split);
    } else {
        output = QFFormat::format(u"<?xml version=\"1.0\" encoding=\"UTF-8\"?><!DOCTYPE xmeml>"
                                  u"<xmeml version=\"%@\">%@</xmeml>",
                                  version,
                                  bin(QFAppleEvents::generateUUID(), sequence.toPrettyString()));
    }
    output = QFAppleEvents::escapeCharactersInXMLString(output);

    if (QFileInfo(filename).suffix().toLower() == u"xml") {
        QFFileContents::writeAtomically(settings.outputPath.value_or(filename), output.toUtf8(),
                                        &errorSlot);
        stop();
        if (!errorSlot.domain.isEmpty()) {
            host.showAlert(QStringLiteral("Failed to write marker data to disk."),
                           errorSlot.localizedDescription(), window);
        } else {
            host.showAlert(
                QStringLiteral("Markers successfully imported"),
                kind.isSequenceOnly
                    ? QStringLiteral("The markers were imported into the XML file.\n\nPlease "
                                     "reimport the XML file into your editing application.")
                    : QStringLiteral("The markers were imported into a copy of the sequence "
                                     "inside the Imported Markers bin.\n\nPlease reimport the "
                                     "XML file into your editing application."),
                window);
        }
        return;
    }

    if (QFAppleEvents::sendXMLToFCP(output, filename)) {
        QFAppleEvents::openItem(newUUID, filename, true);
        stop();
        host.showAlert(QStringLiteral("Markers successfully imported"),
                       QStringLiteral("The markers were imported into a copy of the sequence "
                                      "inside the Imported Markers bin."),
                       window);
    } else {
        stop();
        host.showAlert(QStringLiteral("Failed to send marker data to Final Cut Pro"),
                       QStringLiteral("Please report this error to Quillfen."), window);
    }
}
