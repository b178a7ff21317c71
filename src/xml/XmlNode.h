#pragma once

#include <QList>
#include <QString>

#include <QtGlobal>
#include <initializer_list>
#include <utility>

#include <cstddef>

struct _xmlNode;

/// A handle on one node of a parsed document: the document node itself, an element, an
/// attribute, a text node or another kind. It stays valid while its XmlDocument lives,
/// even after the node was detached. A default handle is nil: every member accepts it
/// and answers nil, 0, false or an empty list.
class XmlNode
{
public:
    enum class Kind
    {
        None,
        Document,
        Element,
        Attribute,
        Text,
        Other
    };

    XmlNode() = default;
    explicit XmlNode(_xmlNode *node) : m_node(node) {}

    bool isNull() const { return m_node == nullptr; }
    explicit operator bool() const { return m_node != nullptr; }
    Kind kind() const;

    /// Local name of an element or attribute; null for the document and for text.
    QString name() const;

    /// An attribute's value, a text node's text, or the concatenated text of all
    /// descendants of an element or of the document. Null for nil.
    QString stringValue() const;

    /// Replaces an attribute's value, a text node's text, or every child of an element
    /// with one text node. The value is taken literally (no entity references).
    bool setStringValue(const QString &value);

    /// The parent (an attribute's element; the root element's is the document node).
    XmlNode parent() const;
    /// Siblings among the parent's children; nil at the edge and for attributes.
    XmlNode previousSibling() const;
    XmlNode nextSibling() const;
    /// Position among all children of the parent, from 0; 0 for attributes and the document.
    int index() const;
    int childCount() const;
    XmlNode childAt(int index) const;

    /// The attribute node of an element, or nil.
    XmlNode attributeForName(const QString &name) const;
    /// The value of an element's attribute; null when it has none. For reading the
    /// same attribute of many elements: no handle and no copy of the name are made.
    QString attributeValue(const char *name) const;
    /// attributeValue of each name, with one walk over the attributes: for elements
    /// read by the thousand.
    void attributeValues(std::initializer_list<std::pair<const char *, QString *>> wanted) const;
    /// Sets an element's attribute, adding it when missing; false for other nodes.
    bool setAttribute(const char *name, const QString &value);
    /// An element's attribute nodes in document order (detach one to remove it).
    QList<XmlNode> attributes() const;

    /// Evaluates an XPath with this node as context: the matches in document order,
    /// without duplicates. On failure the list is empty and error, when given, receives
    /// a readable description. A parenthesised union of names used as a step
    /// ("./spine[1]/(clip | gap)") is accepted, and text() after an attribute step
    /// yields the attribute.
    QList<XmlNode> nodesForXPath(const QString &query, QString *error = nullptr) const;

    /// Removes the node and its subtree from its parent. Handles into the subtree
    /// stay valid until the document is released.
    void detach();

    /// Inserts a copy of element (from any document, typically a parsed fragment) as
    /// child number index of this element; index == childCount() appends. Answers the
    /// inserted node, or nil when index is out of range or either node is no element.
    XmlNode insertChild(const XmlNode &element, int index);
    /// Appends a copy of element as the last child.
    XmlNode addChild(const XmlNode &element);
    /// Inserts a copy of element among this node's siblings, right before or right
    /// after it, without counting children. Nil when either node is no element or this
    /// one has no parent.
    XmlNode insertSiblingBefore(const XmlNode &element);
    XmlNode insertSiblingAfter(const XmlNode &element);

    /// An attribute as written between double quotes: its text, references and all.
    struct AttributeText
    {
        QString name;
        QString text;
    };
    enum class Place
    {
        LastChild,
        Before,
        After
    };
    /// Makes the element that parsing `<name a="text" .../>` would give, right in this
    /// document (a parser costs many times more for one small element), and puts it
    /// as this element's last child or as this node's previous or next sibling. Nil,
    /// with nothing changed, when a text holds anything the parse would treat
    /// otherwise or refuse: a double quote, '<', a reference other than the five
    /// predefined entities, a tab or line break (which the parse makes blanks), or a
    /// character XML does not allow. Parse the written-out element then.
    XmlNode insertNewElement(Place place, const QString &name,
                             const QList<AttributeText> &attributes);

    /// The node's own path expression ("/fcpxml/library/event/project/sequence[2]"),
    /// which finds this node again when evaluated on the document.
    QString xPath() const;

    /// The node serialised, indented.
    QString toPrettyString() const;
    /// The same, as libxml2 writes it: UTF-8; room is made for expectedSize bytes at once.
    QByteArray toPrettyUtf8(qsizetype expectedSize = 0) const;

    _xmlNode *raw() const { return m_node; }

    friend bool operator==(const XmlNode &a, const XmlNode &b) { return a.m_node == b.m_node; }
    friend size_t qHash(const XmlNode &node, size_t seed = 0)
    {
        return ::qHash(reinterpret_cast<quintptr>(node.m_node), seed);
    }

private:
    XmlNode insertSibling(const XmlNode &element, _xmlNode *(*add)(_xmlNode *, _xmlNode *));

    _xmlNode *m_node = nullptr;
};
