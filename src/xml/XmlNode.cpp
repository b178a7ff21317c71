#include "xml/XmlNode.h"

#include "XPathRewrite.h"
#include "XmlErrors.h"
#include "XmlOutput.h"
#include "xml/XmlDocument.h"

#include "support/QFLog.h"

#include <QBuffer>

#include <libxml/tree.h>
#include <libxml/xpath.h>

#include <algorithm>
#include <memory>
#include <optional>

namespace {

const xmlChar *xmlText(const QByteArray &utf8)
{
    return reinterpret_cast<const xmlChar *>(utf8.constData());
}

/// Takes ownership of a libxml2 string; null stays null, empty stays empty (not null).
QString adoptString(xmlChar *text)
{
    if (!text)
        return QString();
    QString result = QString::fromUtf8(reinterpret_cast<const char *>(text));
    xmlFree(text);
    return result.isNull() ? QString(QLatin1StringView("")) : result;
}

/// An attribute's value. The usual one is a single text node, read in place rather
/// than through a copy.
QString valueOf(xmlAttrPtr attribute)
{
    const xmlNode *text = attribute->children;
    if (text && !text->next && text->type == XML_TEXT_NODE && text->content)
        return QString::fromUtf8(reinterpret_cast<const char *>(text->content));
    return adoptString(xmlNodeGetContent(reinterpret_cast<xmlNodePtr>(attribute)));
}

bool isDocument(const xmlNode *node)
{
    return node->type == XML_DOCUMENT_NODE || node->type == XML_HTML_DOCUMENT_NODE;
}

XmlDocument *owner(const xmlNode *node)
{
    return node->doc ? static_cast<XmlDocument *>(node->doc->_private) : nullptr;
}

struct XPathObjectDeleter
{
    void operator()(xmlXPathObjectPtr object) const { xmlXPathFreeObject(object); }
};

/// Whether the UTF-16 unit at i (with its pair) is a character XML allows in an
/// attribute written between double quotes, '&' aside. Steps over a surrogate pair.
bool isLiteralUnit(QStringView text, qsizetype &i)
{
    const char16_t c = text[i].unicode();
    if (c == u'<' || c == u'"' || c < 0x20 || c == 0xFFFE || c == 0xFFFF ||
        QChar::isLowSurrogate(c))
        return false;
    if (QChar::isHighSurrogate(c)) {
        if (i + 1 >= text.size() || !QChar::isLowSurrogate(text[i + 1].unicode()))
            return false;
        ++i;
    }
    return true;
}

/// The value an attribute text stands for; nothing unless it is one the parse reads
/// literally apart from the predefined entities.
std::optional<QString> literalAttributeValue(const QString &text)
{
    static const std::pair<QStringView, QChar> entities[] = {
        {u"&amp;", u'&'}, {u"&lt;", u'<'}, {u"&gt;", u'>'}, {u"&quot;", u'"'}, {u"&apos;", u'\''}};
    const QStringView view(text);
    QString value;
    qsizetype copied = 0; // the text before this is in value
    for (qsizetype i = 0; i < view.size(); ++i) {
        if (view[i] != u'&') {
            if (!isLiteralUnit(view, i))
                return std::nullopt;
            continue;
        }
        const auto *entity =
            std::find_if(std::begin(entities), std::end(entities),
                         [&](const auto &e) { return view.sliced(i).startsWith(e.first); });
        if (entity == std::end(entities))
            return std::nullopt;
        value += view.sliced(copied, i - copied);
        value += entity->second;
        i += entity->first.size() - 1;
        copied = i + 1;
    }
    if (copied == 0)
        return text; // no reference: the text is the value
    value += view.sliced(copied);
    return value;
}

} // namespace

XmlNode::Kind XmlNode::kind() const
{
    if (!m_node)
        return Kind::None;
    switch (m_node->type) {
    case XML_DOCUMENT_NODE:
    case XML_HTML_DOCUMENT_NODE:
        return Kind::Document;
    case XML_ELEMENT_NODE:
        return Kind::Element;
    case XML_ATTRIBUTE_NODE:
        return Kind::Attribute;
    case XML_TEXT_NODE:
    case XML_CDATA_SECTION_NODE:
        return Kind::Text;
    default:
        return Kind::Other;
    }
}

QString XmlNode::name() const
{
    const Kind k = kind();
    if ((k != Kind::Element && k != Kind::Attribute) || !m_node->name)
        return QString();
    return QString::fromUtf8(reinterpret_cast<const char *>(m_node->name));
}

QString XmlNode::stringValue() const
{
    if (!m_node)
        return QString();
    return adoptString(xmlNodeGetContent(m_node));
}

bool XmlNode::setStringValue(const QString &value)
{
    const QByteArray utf8 = value.toUtf8();
    switch (kind()) {
    case Kind::Attribute: {
        auto *attribute = reinterpret_cast<xmlAttrPtr>(m_node);
        if (attribute->parent) // keeps the same attribute node, and the id table right
            return xmlSetNsProp(attribute->parent, attribute->ns, attribute->name, xmlText(utf8)) !=
                   nullptr;
        xmlFreeNodeList(attribute->children);
        attribute->children = attribute->last = xmlNewDocText(attribute->doc, xmlText(utf8));
        if (attribute->children)
            attribute->children->parent = m_node;
        return true;
    }
    case Kind::Text:
        xmlNodeSetContent(m_node, xmlText(utf8));
        return true;
    case Kind::Element: {
        while (m_node->children)
            XmlNode(m_node->children).detach();
        if (!value.isEmpty())
            xmlAddChild(m_node, xmlNewDocText(m_node->doc, xmlText(utf8)));
        return true;
    }
    default:
        return false;
    }
}

XmlNode XmlNode::parent() const
{
    return XmlNode(m_node ? m_node->parent : nullptr);
}

XmlNode XmlNode::previousSibling() const
{
    const Kind k = kind();
    if (k == Kind::None || k == Kind::Attribute || k == Kind::Document)
        return XmlNode();
    return XmlNode(m_node->prev);
}

XmlNode XmlNode::nextSibling() const
{
    const Kind k = kind();
    if (k == Kind::None || k == Kind::Attribute || k == Kind::Document)
        return XmlNode();
    return XmlNode(m_node->next);
}

int XmlNode::index() const
{
    int index = 0;
    for (XmlNode sibling = previousSibling(); sibling; sibling = sibling.previousSibling())
        ++index;
    return index;
}

int XmlNode::childCount() const
{
    const Kind k = kind();
    if (k != Kind::Element && k != Kind::Document)
        return 0;
    int count = 0;
    for (xmlNodePtr child = m_node->children; child; child = child->next)
        ++count;
    return count;
}

XmlNode XmlNode::childAt(int index) const
{
    const Kind k = kind();
    if ((k != Kind::Element && k != Kind::Document) || index < 0)
        return XmlNode();
    xmlNodePtr child = m_node->children;
    for (; child && index > 0; child = child->next)
        --index;
    return XmlNode(child);
}

XmlNode XmlNode::attributeForName(const QString &name) const
{
    if (kind() != Kind::Element)
        return XmlNode();
    const QByteArray utf8 = name.toUtf8();
    return XmlNode(reinterpret_cast<xmlNodePtr>(xmlHasProp(m_node, xmlText(utf8))));
}

bool XmlNode::setAttribute(const char *name, const QString &value)
{
    if (kind() != Kind::Element)
        return false;
    const QByteArray utf8 = value.toUtf8();
    return xmlSetProp(m_node, reinterpret_cast<const xmlChar *>(name), xmlText(utf8)) != nullptr;
}

QString XmlNode::attributeValue(const char *name) const
{
    if (kind() != Kind::Element)
        return QString();
    const xmlAttrPtr attribute = xmlHasProp(m_node, reinterpret_cast<const xmlChar *>(name));
    return attribute ? valueOf(attribute) : QString();
}

void XmlNode::attributeValues(
    std::initializer_list<std::pair<const char *, QString *>> wanted) const
{
    for (const auto &[name, value] : wanted)
        *value = QString();
    if (kind() != Kind::Element)
        return;
    for (xmlAttrPtr attribute = m_node->properties; attribute; attribute = attribute->next) {
        for (const auto &[name, value] : wanted) {
            // By name, whatever the namespace, as xmlHasProp finds them.
            if (value->isNull() &&
                xmlStrEqual(attribute->name, reinterpret_cast<const xmlChar *>(name))) {
                *value = valueOf(attribute);
                break;
            }
        }
    }
    // One the element lacks may have a default in the document's declarations.
    for (const auto &[name, value] : wanted)
        if (value->isNull())
            *value = attributeValue(name);
}

QList<XmlNode> XmlNode::attributes() const
{
    if (kind() != Kind::Element)
        return {};
    QList<XmlNode> list;
    for (xmlAttrPtr attribute = m_node->properties; attribute; attribute = attribute->next)
        list.append(XmlNode(reinterpret_cast<xmlNodePtr>(attribute)));
    return list;
}

QList<XmlNode> XmlNode::nodesForXPath(const QString &query, QString *error) const
{
    if (!m_node || !m_node->doc)
        return {};
    const QByteArray expression = rewriteXPathForLibxml(query).toUtf8();

    XmlDocument *document = owner(m_node);
    xmlXPathContextPtr context = document ? document->xpathContext() : nullptr;
    if (!context)
        return {};
    context->node = m_node;
    context->contextSize = -1;
    context->proximityPosition = -1;

    XmlErrors errors;
    std::unique_ptr<xmlXPathObject, XPathObjectDeleter> result(
        xmlXPathEvalExpression(xmlText(expression), context));
    if (!result || result->type != XPATH_NODESET) {
        if (error)
            *error = errors.any()
                         ? errors.description()
                         : QStringLiteral("The query \"%1\" does not select nodes.").arg(query);
        return {};
    }

    QList<XmlNode> nodes;
    if (xmlNodeSetPtr set = result->nodesetval) {
        nodes.reserve(set->nodeNr);
        for (int i = 0; i < set->nodeNr; ++i) {
            // Namespace nodes are copies that die with the result; nothing here asks for them.
            if (set->nodeTab[i]->type != XML_NAMESPACE_DECL)
                nodes.append(XmlNode(set->nodeTab[i]));
        }
    }
    return nodes;
}

void XmlNode::detach()
{
    if (!m_node || isDocument(m_node) || !m_node->parent)
        return;
    xmlUnlinkNode(m_node);
    if (XmlDocument *document = owner(m_node))
        document->keepDetached(m_node);
}

XmlNode XmlNode::insertChild(const XmlNode &element, int index)
{
    if (kind() != Kind::Element || element.kind() != Kind::Element || index < 0)
        return XmlNode();
    const XmlNode before = childAt(index);
    if (!before && index != childCount())
        return XmlNode();
    xmlNodePtr copy = xmlDocCopyNode(element.m_node, m_node->doc, 1);
    if (!copy)
        return XmlNode();
    xmlNodePtr inserted =
        before ? xmlAddPrevSibling(before.m_node, copy) : xmlAddChild(m_node, copy);
    if (!inserted)
        xmlFreeNode(copy);
    return XmlNode(inserted);
}

XmlNode XmlNode::addChild(const XmlNode &element)
{
    // Not insertChild(element, childCount()): counting the children would make
    // appending many elements quadratic.
    if (kind() != Kind::Element || element.kind() != Kind::Element)
        return XmlNode();
    xmlNodePtr copy = xmlDocCopyNode(element.m_node, m_node->doc, 1);
    if (!copy)
        return XmlNode();
    xmlNodePtr added = xmlAddChild(m_node, copy);
    if (!added)
        xmlFreeNode(copy);
    return XmlNode(added);
}

XmlNode XmlNode::insertSiblingBefore(const XmlNode &element)
{
    return insertSibling(element, xmlAddPrevSibling);
}

XmlNode XmlNode::insertSiblingAfter(const XmlNode &element)
{
    return insertSibling(element, xmlAddNextSibling);
}

XmlNode XmlNode::insertSibling(const XmlNode &element, _xmlNode *(*add)(_xmlNode *, _xmlNode *))
{
    if (kind() != Kind::Element || element.kind() != Kind::Element || !m_node->parent)
        return XmlNode();
    xmlNodePtr copy = xmlDocCopyNode(element.m_node, m_node->doc, 1);
    if (!copy)
        return XmlNode();
    xmlNodePtr inserted = add(m_node, copy);
    if (!inserted)
        xmlFreeNode(copy);
    return XmlNode(inserted);
}

XmlNode XmlNode::insertNewElement(Place place, const QString &name,
                                  const QList<AttributeText> &attributes)
{
    const bool asChild = place == Place::LastChild;
    if (!m_node || !m_node->doc || (asChild ? kind() != Kind::Element : !m_node->parent) ||
        kind() == Kind::Attribute)
        return XmlNode();
    QList<QByteArray> values;
    values.reserve(attributes.size());
    for (const AttributeText &attribute : attributes) {
        const std::optional<QString> value = literalAttributeValue(attribute.text);
        if (!value)
            return XmlNode();
        values << value->toUtf8();
    }
    xmlNodePtr element = xmlNewDocNode(m_node->doc, nullptr, xmlText(name.toUtf8()), nullptr);
    if (!element)
        return XmlNode();
    for (qsizetype i = 0; i < attributes.size(); ++i) {
        if (!xmlNewProp(element, xmlText(attributes[i].name.toUtf8()), xmlText(values[i]))) {
            xmlFreeNode(element);
            return XmlNode();
        }
    }
    xmlNodePtr inserted = asChild                  ? xmlAddChild(m_node, element)
                          : place == Place::Before ? xmlAddPrevSibling(m_node, element)
                                                   : xmlAddNextSibling(m_node, element);
    if (!inserted)
        xmlFreeNode(element);
    return XmlNode(inserted);
}

QString XmlNode::xPath() const
{
    if (!m_node)
        return QString();
    return adoptString(xmlGetNodePath(m_node));
}

QString XmlNode::toPrettyString() const
{
    return QString::fromUtf8(toPrettyUtf8());
}

QByteArray XmlNode::toPrettyUtf8(qsizetype expectedSize) const
{
    QByteArray text;
    if (!m_node || !m_node->doc)
        return text;
    text.reserve(expectedSize);
    QBuffer buffer(&text);
    buffer.open(QIODevice::WriteOnly);
    xmlOutputBufferPtr output = xmlOutputTo(buffer);
    if (!output)
        return text;
    XmlErrors errors; // a repaired document may hold characters that cannot be written
    xmlNodeDumpOutput(output, m_node->doc, m_node, 0, 1, nullptr);
    if (xmlOutputBufferClose(output) >= 0 && text.isNull())
        text = QByteArray(""); // an empty dump, not a failed one
    if (errors.any())
        QFLog::appendLog(u"XML output error: %@", errors.description());
    return text;
}
