// Any bytes as an XML document, parsed strictly and with repairs, then searched with
// every query the import and the marker reader use and walked with the tree helpers.
// The input's first line is also tried as a query of its own.

#include "FuzzInput.h"
#include "support/QFLog.h"
#include "time/QFFCPXMLParser.h"
#include "xml/QFFCPXMLMarkerReader.h"
#include "xml/QFXMLParser.h"
#include "xml/XmlDocument.h"

#include <QDir>
#include <QFile>
#include <QSet>
#include <QTemporaryDir>

#include <unistd.h>

namespace {

// Evaluated on the document node.
const char *const documentQueries[] = {
    "./xmeml[1]/@version",
    "./xmeml[1]/sequence[1]",
    "./xmeml[1]//sequence/uuid[\"0F2D6C31\"]/..",
    "./fcpxml[1]/project[1]/@name[1]",
    "./fcpxml[1]/resources[1]/format[@id=\"r1\"]/@frameDuration[1]",
    "./fcpxml[1]/project[1]/resources[1]/format[@id=\"r1\"]/@frameDuration[1]",
    "./fcpxml[1]/resources[1]/format/@frameDuration[1]",
    "./fcpxml[1]/library[1]//project[1]/sequence[1]/@tcFormat[1]",
    "./fcpxml[1]/library[1]//project[1]/sequence[1]/@tcStart",
    ("./fcpxml[1]/library[1]//project[1]/sequence[1]/spine[1]/(clip | ref-clip | video | mc-clip | "
     "title | transition | gap)/marker"),
    ("./fcpxml[1]/library[1]//project[1]/sequence[1]/spine[1]//(clip | ref-clip | video | mc-clip "
     "| "
     "title | transition | gap)/marker"),
};

// Evaluated on every element found by the queries above and on the root element.
const char *const elementQueries[] = {
    "./project",
    ".//sequence",
    ".//sequence/name[1]/..",
    "(./project[1]/sequence[1] | ./library[1]/event[1]/project/sequence[1])",
    "(./project/clip | ./library[1]/event[1]/project/clip)",
    "../@name[1]",
    "./@name[1]",
    "./@tcFormat[1]/text()",
    "./uuid[1]",
    ".//marker",
    "./timecode/rate/ntsc",
    "./timecode/displayformat",
    "./timecode/rate/timebase",
    "./timecode/frame",
    "./spine[1]/(clip | mc-clip | asset-clip | sync-clip | gap | title | ref-clip | video)",
    ("./(note | conform-rate | timeMap | adjust-corners | adjust-conform | adjust-transform | "
     "adjust-blend | adjust-stabilization | adjust-rollingShutter | adjust-volume | adjust-panner "
     "| "
     "audio | video | clip | title | caption | mc-clip | ref-clip | sync-clip | asset-clip | "
     "audition | spine | transition | mc-source | gap | filter-video | filter-audio)"),
    ("./(chapter-marker | rating | keyword | analysis-marker | audio-channel-source | metadata | "
     "filter-video-mask | filter-video | filter-audio)"),
};

void checkMatches(const QList<XmlNode> &nodes)
{
    QSet<XmlNode> seen;
    for (const XmlNode &node : nodes) {
        FUZZ_CHECK(!node.isNull());
        FUZZ_CHECK(!seen.contains(node));
        seen.insert(node);
        FUZZ_CHECK(!node.stringValue().isNull());
    }
}

void walk(const XmlNode &node, XmlDocument &document, bool wellFormed)
{
    QStringList all;
    for (const char *query : elementQueries) {
        checkMatches(QFXMLParser::nodesForQuery(QString::fromUtf8(query), node));
        all << QString::fromUtf8(query);
    }
    checkMatches(QFXMLParser::node(node, all));
    QFXMLParser::nameForNode(node);
    QFXMLParser::uuidForNode(node, true);
    QFXMLParser::idAttributeForNode(node);
    QFXMLParser::node(node, QStringLiteral("sequence"), {QStringLiteral("bin")});
    QFXMLParser::nextSiblingForNode(node);
    qint64 start = 0;
    qint64 end = 0;
    FUZZ_CHECK(QFXMLParser::affectedNodesForClip(node, &start, &end).contains(node));

    if (node.kind() == XmlNode::Kind::Element) {
        // The node's own path finds it again, where its names are plain XPath names: a
        // repaired document may hold anything, and prefixes would need their namespaces.
        const QString path = node.xPath();
        if (wellFormed && !path.contains(u':'))
            FUZZ_CHECK(document.node().nodesForXPath(path).contains(node));
        node.toPrettyString();
    }
}

void exercise(XmlDocument &document, const QString &ownQuery, bool wellFormed)
{
    const XmlNode root = document.node();
    QList<XmlNode> found{document.rootElement()};
    for (const char *query : documentQueries) {
        const QList<XmlNode> matches = QFXMLParser::nodesForQuery(QString::fromUtf8(query), root);
        checkMatches(matches);
        found << matches.mid(0, 8);
    }
    checkMatches(QFXMLParser::nodesForQuery(ownQuery, root));
    checkMatches(QFXMLParser::nodesForQuery(ownQuery, document.rootElement()));
    for (const XmlNode &node : found.mid(0, 32))
        walk(node, document, wellFormed);

    // Editing as the import does: clear markers, insert one, rename, print.
    for (XmlNode marker :
         QFXMLParser::nodesForQuery(QStringLiteral(".//marker"), document.rootElement()))
        marker.detach();
    const auto fragment = XmlDocument::fromElementString(
        QStringLiteral("<marker start=\"1/25s\" duration=\"1/25s\" value=\"A &amp; B\"/>"));
    FUZZ_CHECK(fragment);
    XmlNode target = document.rootElement();
    FUZZ_CHECK(!target.insertChild(fragment->rootElement(), target.childCount() / 2).isNull());
    if (XmlNode id = target.attributeForName(QStringLiteral("id")))
        id.setStringValue(id.stringValue() + QStringLiteral("-Cuebridge"));
    const QByteArray printed = document.toPrettyXml();
    FUZZ_CHECK(!printed.isEmpty());
}

QString scratchPath()
{
    static const QString path =
        QDir::temp().filePath(QStringLiteral("fuzz_xml_%1.fcpxml").arg(qint64(::getpid())));
    return path;
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    // Query errors are logged: into a log of a private state folder.
    static QTemporaryDir state;
    qputenv("XDG_STATE_HOME", QFile::encodeName(state.path()));
    QFLog::createNewLog(QString(), true);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char *>(data), qsizetype(size));
    const QString ownQuery = QString::fromUtf8(bytes.left(bytes.indexOf('\n')).left(200));

    for (auto parsing : {XmlDocument::Parsing::Strict, XmlDocument::Parsing::Repairing}) {
        QString error;
        const auto document = XmlDocument::fromBytes(bytes, parsing, &error);
        FUZZ_CHECK(document || !error.isEmpty());
        if (document)
            exercise(*document, ownQuery, parsing == XmlDocument::Parsing::Strict);
    }

    QFile scratch(scratchPath());
    if (scratch.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
        scratch.write(bytes);
        scratch.close();
        for (const QVariantMap &record :
             QFFCPXMLMarkerReader::markersFromXMLFile(scratch.fileName(), true, true, false, 1))
            FUZZ_CHECK(record.isEmpty() || record.contains(QStringLiteral("startTimecode")));
        QFFCPXMLMarkerReader::markersFromXMLFile(scratch.fileName(), false);
    }
    // Written entries are freed by the log's writer; waiting for it here keeps each run's
    // allocations balanced, so the fuzzer need not hunt for leaks after every input.
    QFLog::finishWriting();
    return 0;
}
