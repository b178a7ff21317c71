#include "xml/XmlDocument.h"

#include "XmlErrors.h"
#include "XmlOutput.h"

#include "support/QFLog.h"

#include <QBuffer>
#include <QFile>

#include <libxml/parser.h>
#include <libxml/parserInternals.h>
#include <libxml/tree.h>
#include <libxml/xmlsave.h>
#include <libxml/xpath.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <mutex>

namespace {

// No network, no entity substitution (XML_PARSE_NOENT would load external entities),
// no external DTD (no XML_PARSE_DTDLOAD), no XML_PARSE_HUGE: libxml2's default limits on
// depth, text size and entity expansion stay on.
constexpr int safeOptions = XML_PARSE_NONET | XML_PARSE_NOBLANKS | XML_PARSE_NOCDATA;

int optionsFor(XmlDocument::Parsing parsing)
{
    return safeOptions | (parsing == XmlDocument::Parsing::Repairing ? XML_PARSE_RECOVER : 0);
}

} // namespace

XmlDocument::XmlDocument(xmlDocPtr doc) : m_doc(doc)
{
    m_doc->_private = this;
}

XmlDocument::~XmlDocument()
{
    xmlXPathFreeContext(m_xpathContext);
    // Detached nodes first: they use the document's name dictionary.
    for (xmlNodePtr node : m_detached)
        xmlFreeNode(node);
    xmlFreeDoc(m_doc);
}

std::unique_ptr<XmlDocument> XmlDocument::adopt(xmlDocPtr doc, const XmlErrors &errors,
                                                QString *error)
{
    if (doc && !xmlDocGetRootElement(doc)) {
        xmlFreeDoc(doc);
        doc = nullptr;
    }
    if (!doc) {
        const QString description =
            errors.any() ? errors.description() : QStringLiteral("The document holds no element.");
        QFLog::appendLog(u"Unable to parse XML: %@", description);
        if (error)
            *error = description;
        return nullptr;
    }
    if (errors.any())
        QFLog::appendLog(u"XML repaired: %@", errors.description());
    std::unique_ptr<XmlDocument> document(new XmlDocument(doc));
    document->m_parsedCleanly = !errors.any();
    return document;
}

std::unique_ptr<XmlDocument> XmlDocument::fromBytes(const QByteArray &bytes, Parsing parsing,
                                                    QString *error)
{
    if (bytes.size() > INT_MAX) {
        if (error)
            *error = QStringLiteral("The document is too large to be read.");
        return nullptr;
    }
    ensureLibxmlInitialised();
    XmlErrors errors;
    xmlDocPtr doc =
        xmlReadMemory(bytes.constData(), int(bytes.size()), nullptr, nullptr, optionsFor(parsing));
    return adopt(doc, errors, error);
}

std::unique_ptr<XmlDocument> XmlDocument::fromDevice(QIODevice &device, Parsing parsing,
                                                     QString *error,
                                                     QFFileContents::Fingerprint *fingerprint)
{
    ensureLibxmlInitialised();
    // The device is read in blocks of the fingerprint's size, so that its blocks are
    // hashed where they lie; libxml2 takes a few thousand bytes at a time from them.
    struct Source
    {
        QIODevice &device;
        QFFileContents::Fingerprint *fingerprint;
        QByteArray block = QByteArray(QFFileContents::Fingerprint::blockSize, Qt::Uninitialized);
        qsizetype at = 0;
        qsizetype filled = 0;
        bool failed = false;
    } source{device, fingerprint};
    const auto read = [](void *context, char *buffer, int length) -> int {
        auto *from = static_cast<Source *>(context);
        if (from->at == from->filled) {
            const qint64 got = from->device.read(from->block.data(), from->block.size());
            if (got < 0) {
                from->failed = true;
                return -1;
            }
            if (from->fingerprint)
                from->fingerprint->add(from->block.constData(), got);
            from->at = 0;
            from->filled = got;
        }
        const qsizetype given = std::min<qsizetype>(length, from->filled - from->at);
        std::memcpy(buffer, from->block.constData() + from->at, size_t(given));
        from->at += given;
        return int(given);
    };
    XmlErrors errors;
    xmlDocPtr doc = xmlReadIO(read, nullptr, &source, nullptr, nullptr, optionsFor(parsing));
    if (source.failed) {
        xmlFreeDoc(doc);
        const QString description = device.errorString();
        QFLog::appendLog(u"Unable to parse XML: %@", description);
        if (error)
            *error = description;
        return nullptr;
    }
    return adopt(doc, errors, error);
}

bool XmlDocument::isWellFormed(const QByteArray &bytes, QString *error)
{
    ensureLibxmlInitialised();
    XmlErrors errors;
    bool wellFormed = false;
    xmlParserCtxtPtr context = bytes.size() <= INT_MAX
                                   ? xmlCreateMemoryParserCtxt(bytes.constData(), int(bytes.size()))
                                   : nullptr;
    if (context) {
        // The parser's own checks without a tree: declarations are still kept, as entity
        // references need them, but no element or text is built.
        xmlSAXHandler checks;
        xmlSAXVersion(&checks, 2);
        checks.startElement = nullptr;
        checks.endElement = nullptr;
        checks.startElementNs = nullptr;
        checks.endElementNs = nullptr;
        checks.characters = nullptr;
        checks.ignorableWhitespace = nullptr;
        checks.cdataBlock = nullptr;
        checks.comment = nullptr;
        checks.processingInstruction = nullptr;
        checks.reference = nullptr;
        xmlSAXHandlerPtr own = context->sax;
        context->sax = &checks;
        xmlCtxtUseOptions(context, safeOptions & ~XML_PARSE_NOBLANKS);
        wellFormed = xmlParseDocument(context) == 0 && context->wellFormed;
        context->sax = own;
        xmlFreeDoc(context->myDoc);
        xmlFreeParserCtxt(context);
    }
    if (!wellFormed && error)
        *error =
            errors.any() ? errors.description() : QStringLiteral("The document could not be read.");
    return wellFormed;
}

std::unique_ptr<XmlDocument> XmlDocument::fromFile(const QString &path, Parsing parsing,
                                                   QString *error)
{
    // Read here rather than by libxml2, which would open "-" as standard input and
    // inflate compressed files.
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        if (error)
            *error = file.errorString();
        return nullptr;
    }
    return fromDevice(file, parsing, error);
}

std::unique_ptr<XmlDocument> XmlDocument::fromElementString(const QString &text, QString *error)
{
    return fromBytes(text.toUtf8(), Parsing::Strict, error);
}

XmlNode XmlDocument::node() const
{
    return XmlNode(reinterpret_cast<xmlNodePtr>(m_doc));
}

XmlNode XmlDocument::rootElement() const
{
    return XmlNode(xmlDocGetRootElement(m_doc));
}

QByteArray XmlDocument::toPrettyXml(qsizetype expectedSize) const
{
    QByteArray bytes;
    bytes.reserve(expectedSize);
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    writePrettyXml(buffer);
    return bytes;
}

bool XmlDocument::writePrettyXml(QIODevice &device) const
{
    xmlOutputBufferPtr output = xmlOutputTo(device);
    if (!output)
        return false;
    XmlErrors errors; // a repaired document may hold characters that cannot be written
    const bool written = xmlSaveFormatFileTo(output, m_doc, "UTF-8", 1) >= 0;
    if (errors.any())
        QFLog::appendLog(u"XML output error: %@", errors.description());
    return written;
}

void XmlDocument::leaveToExit(std::unique_ptr<XmlDocument> document)
{
    // Reachable to the end, so that leak checkers do not count it.
    static std::mutex keeping;
    static auto *kept = new std::vector<std::unique_ptr<XmlDocument>>;
    const std::lock_guard lock(keeping);
    kept->push_back(std::move(document));
}

QString XmlDocument::internalSubsetDeclaration() const
{
    xmlDtdPtr subset = m_doc->intSubset;
    if (!subset || !subset->children)
        return QString();
    xmlBufferPtr buffer = xmlBufferCreate();
    xmlNodeDump(buffer, m_doc, reinterpret_cast<xmlNodePtr>(subset), 0, 0);
    QString text = QString::fromUtf8(reinterpret_cast<const char *>(xmlBufferContent(buffer)),
                                     xmlBufferLength(buffer));
    xmlBufferFree(buffer);
    return text;
}

void XmlDocument::keepDetached(xmlNodePtr node)
{
    m_detached.push_back(node);
}

xmlXPathContextPtr XmlDocument::xpathContext()
{
    if (!m_xpathContext)
        m_xpathContext = xmlXPathNewContext(m_doc);
    return m_xpathContext;
}
