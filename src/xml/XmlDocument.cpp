#include "xml/XmlDocument.h"

#include "XmlErrors.h"

#include "support/QFLog.h"

#include <QFile>

#include <libxml/parser.h>
#include <libxml/parserInternals.h>
#include <libxml/tree.h>
#include <libxml/xpath.h>

#include <climits>

namespace {

// No network, no entity substitution (XML_PARSE_NOENT would load external entities),
// no external DTD (no XML_PARSE_DTDLOAD), no XML_PARSE_HUGE: libxml2's default limits on
// depth, text size and entity expansion stay on.
constexpr int safeOptions = XML_PARSE_NONET | XML_PARSE_NOBLANKS | XML_PARSE_NOCDATA;

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
    const int options = safeOptions | (parsing == Parsing::Repairing ? XML_PARSE_RECOVER : 0);
    xmlDocPtr doc = xmlReadMemory(bytes.constData(), int(bytes.size()), nullptr, nullptr, options);
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
    return fromBytes(file.readAll(), parsing, error);
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

QByteArray XmlDocument::toPrettyXml() const
{
    xmlChar *memory = nullptr;
    int size = 0;
    XmlErrors errors; // a repaired document may hold characters that cannot be written
    xmlDocDumpFormatMemoryEnc(m_doc, &memory, &size, "UTF-8", 1);
    if (errors.any())
        QFLog::appendLog(u"XML output error: %@", errors.description());
    QByteArray bytes(reinterpret_cast<const char *>(memory), size);
    xmlFree(memory);
    return bytes;
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
