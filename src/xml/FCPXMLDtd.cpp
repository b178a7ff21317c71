#include "FCPXMLDtd.h"

#include "XmlErrors.h"
#include "xml/XmlDocument.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QVersionNumber>

#include <libxml/hash.h>
#include <libxml/parser.h>
#include <libxml/valid.h>

#include <map>
#include <memory>
#include <optional>

namespace {

QString text(const xmlChar *chars)
{
    return QString::fromUtf8(reinterpret_cast<const char *>(chars));
}

void collectNames(const xmlElementContent *content, QSet<QString> &names)
{
    if (!content)
        return;
    if (content->type == XML_ELEMENT_CONTENT_ELEMENT)
        names.insert(text(content->name));
    collectNames(content->c1, names);
    collectNames(content->c2, names);
}

/// The items of a content model's top sequence, in order: "(a?, (b | c)*, d)" gives
/// a?, (b | c)* and d. libxml2 chains a sequence as nested pairs that occur once.
void sequenceItems(const xmlElementContent *content, QList<const xmlElementContent *> &items)
{
    if (!content)
        return;
    if (content->type == XML_ELEMENT_CONTENT_SEQ && content->ocur == XML_ELEMENT_CONTENT_ONCE) {
        sequenceItems(content->c1, items);
        sequenceItems(content->c2, items);
    } else {
        items.append(content);
    }
}

/// Where markers stand in one element's content model; nothing when it takes none.
std::optional<FCPXMLDtd::MarkerOrder> markerOrderOf(const xmlElement &element)
{
    static const QString marker = QStringLiteral("marker");
    QList<const xmlElementContent *> items;
    sequenceItems(element.content, items);
    FCPXMLDtd::MarkerOrder order;
    bool markersSeen = false;
    for (const xmlElementContent *item : items) {
        QSet<QString> names;
        collectNames(item, names);
        markersSeen = markersSeen || names.contains(marker);
        (markersSeen ? order.after : order.before).unite(names);
    }
    if (!markersSeen)
        return std::nullopt;
    order.after.remove(marker);
    return order;
}

/// The DTD in a resource, parsed; nil when it cannot be read.
xmlDtdPtr parseResource(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return nullptr;
    const QByteArray bytes = file.readAll();
    XmlErrors errors; // shipped files: nothing to tell the user, nothing to print
    xmlParserInputBufferPtr input =
        xmlParserInputBufferCreateMem(bytes.constData(), int(bytes.size()), XML_CHAR_ENCODING_UTF8);
    return input ? xmlIOParseDTD(nullptr, input, XML_CHAR_ENCODING_UTF8) : nullptr;
}

/// Major and minor only, so that "1", "1.0" and "1.0.0" are one version.
QVersionNumber versionNumber(QStringView version)
{
    const QVersionNumber number = QVersionNumber::fromString(version);
    return QVersionNumber(number.majorVersion(), number.minorVersion());
}

/// The DTD resources by the version their names give ("FCPXMLv1_11.dtd",
/// "Final_Cut_Pro_XML_DTD_version_1.12.dtd"), each parsed when first asked for.
struct Shipped
{
    QMutex mutex;
    std::map<QVersionNumber, QString> paths;
    std::map<QVersionNumber, std::unique_ptr<FCPXMLDtd>> parsed;

    Shipped()
    {
        static const QRegularExpression name(QStringLiteral("(\\d+)[._](\\d+)\\.dtd$"));
        const QDir folder(QStringLiteral(":/dtd"));
        for (const QString &file : folder.entryList({QStringLiteral("*.dtd")}, QDir::Files)) {
            const QRegularExpressionMatch match = name.match(file);
            if (match.hasMatch())
                paths.emplace(QVersionNumber(match.captured(1).toInt(), match.captured(2).toInt()),
                              folder.filePath(file));
        }
    }
    static Shipped &instance()
    {
        static Shipped shipped;
        return shipped;
    }
};

} // namespace

FCPXMLDtd::FCPXMLDtd(_xmlDtd *dtd) : m_dtd(dtd)
{
    if (const xmlAttribute *version =
            xmlGetDtdAttrDesc(dtd, reinterpret_cast<const xmlChar *>("fcpxml"),
                              reinterpret_cast<const xmlChar *>("version")))
        m_version = text(version->defaultValue);
    if (!dtd->elements)
        return;
    xmlHashScan(
        static_cast<xmlHashTablePtr>(dtd->elements),
        [](void *payload, void *self, const xmlChar *name) {
            if (const auto order = markerOrderOf(*static_cast<xmlElement *>(payload)))
                static_cast<FCPXMLDtd *>(self)->m_markerOrders.insert(text(name), *order);
        },
        this);
}

FCPXMLDtd::~FCPXMLDtd()
{
    xmlFreeDtd(m_dtd);
}

QStringList FCPXMLDtd::versions()
{
    QStringList list;
    for (const auto &[version, path] : Shipped::instance().paths)
        list.append(version.toString());
    return list;
}

const FCPXMLDtd &FCPXMLDtd::forVersion(QStringView version)
{
    Shipped &shipped = Shipped::instance();
    Q_ASSERT(!shipped.paths.empty());
    auto path = shipped.paths.find(versionNumber(version));
    if (path == shipped.paths.end())
        path = std::prev(shipped.paths.end());
    QMutexLocker lock(&shipped.mutex);
    std::unique_ptr<FCPXMLDtd> &dtd = shipped.parsed[path->first];
    if (!dtd) {
        ensureLibxmlInitialised();
        xmlDtdPtr parsed = parseResource(path->second);
        Q_ASSERT(parsed); // the program's own files
        dtd.reset(new FCPXMLDtd(parsed ? parsed : xmlNewDtd(nullptr, nullptr, nullptr, nullptr)));
    }
    return *dtd;
}

const FCPXMLDtd &FCPXMLDtd::forDocument(const XmlDocument &document)
{
    return forVersion(document.rootElement().attributeValue("version"));
}

const FCPXMLDtd::MarkerOrder &FCPXMLDtd::markerOrder(const QString &element) const
{
    static const MarkerOrder none;
    const auto found = m_markerOrders.constFind(element);
    return found == m_markerOrders.cend() ? none : *found;
}

QString FCPXMLDtd::checkElements(const QList<XmlNode> &elements) const
{
    QMutexLocker lock(&m_validation);
    XmlErrors errors;
    xmlValidCtxtPtr context = xmlNewValidCtxt();
    QString problem;
    for (const XmlNode &element : elements) {
        xmlNodePtr node = element.raw();
        if (!node || !node->doc)
            continue;
        // The validator finds declarations through the document: lend it this DTD.
        xmlDocPtr doc = node->doc;
        xmlDtdPtr own = doc->extSubset;
        doc->extSubset = m_dtd;
        const bool valid = context && xmlValidateOneElement(context, doc, node) == 1;
        doc->extSubset = own;
        if (!valid) {
            problem =
                errors.any()
                    ? errors.description()
                    : QStringLiteral("%1 does not follow FCPXML %2").arg(element.name(), m_version);
            break;
        }
    }
    xmlFreeValidCtxt(context);
    return problem;
}

QString FCPXMLDtd::checkDocument(const XmlDocument &document) const
{
    const XmlNode top = document.node();
    auto *doc = reinterpret_cast<xmlDocPtr>(top.raw());
    QMutexLocker lock(&m_validation);
    XmlErrors errors;
    xmlValidCtxtPtr context = xmlNewValidCtxt();
    const bool valid = context && xmlValidateDtd(context, doc, m_dtd) == 1;
    xmlFreeValidCtxt(context);
    if (valid)
        return QString();
    return errors.any() ? errors.description()
                        : QStringLiteral("not valid FCPXML %1").arg(m_version);
}
