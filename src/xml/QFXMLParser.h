#pragma once

#include "xml/XmlNode.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

/// XPath lookups over parsed documents, a few tree walks, and the escaping applied to
/// every query text.
///
/// Stateless; any thread. A nil node or null string is accepted everywhere and answers
/// nil (a null string, a nil node, an empty list). Query errors never reach the
/// caller: nodesForQuery and the multi-query form log them, the rest count them as no
/// match.
class QFXMLParser
{
public:
    QFXMLParser() = delete;

    /// The query text with character references for units of 160 and above, "&" made
    /// "&amp;" unless it already starts "&amp;", carriage return as "&#13;", and units
    /// below 20 dropped (each logged).
    static QString escapeQueryString(const QString &query);

    /// The matches of the escaped query in document order; errors are logged.
    static QList<XmlNode> nodesForQuery(const QString &query, const XmlNode &element);
    /// The first match, or nil.
    static XmlNode nodeForQuery(const QString &query, const XmlNode &element);
    /// The string value of the first match, or null.
    static QString stringValueForQuery(const QString &query, const XmlNode &element);
    /// The string values of all matches; nothing (not an empty list) when none matched.
    static std::optional<QStringList> stringValuesForQuery(const QString &query,
                                                           const XmlNode &node);
    /// The matches of the query in each node, concatenated in the nodes' order;
    /// duplicates kept.
    static QList<XmlNode> queryNodes(const QList<XmlNode> &nodes, const QString &xPath);
    /// node:nodesFromQueries: the union of the matches of all queries, in the order of
    /// the queries, each node once. Every failing query is logged.
    static QList<XmlNode> node(const XmlNode &node, const QStringList &nodesFromQueries);

    /// The "id" attribute, percent-escapes decoded as ASCII; null when absent or when
    /// the decoding fails.
    static QString idAttributeForNode(const XmlNode &node);
    /// The decoded path of a file URL ("file://localhost/a%20b.mov" gives "/a b.mov");
    /// null for a text that is no URL.
    static QString filenameFromPathURLString(const QString &urlString);

    /// The text of the element's name child (any depth unless immediateChildOnly),
    /// falling back to its "id" attribute; percent-escapes decoded where they decode.
    static QString nameForNode(const XmlNode &node, bool immediateChildOnly = false);
    /// The text of the element's uuid child (any depth unless immediateChildOnly).
    static QString uuidForNode(const XmlNode &node, bool immediateChildOnly = false);

    /// node:parentWithName:limits: the nearest ancestor named name, or nil when an
    /// ancestor named in limits comes first. The node itself is not tested.
    static XmlNode node(const XmlNode &node, const QString &parentWithName,
                        const QStringList &limits = {});
    /// The next node in document order outside this node's subtree.
    static XmlNode nextSiblingForNode(const XmlNode &node);

    /// An XMEML clip item and the neighbours joined to it by transition items ("-1"
    /// start or end), in track order. rangeStart and rangeEnd receive the start and
    /// end where the joined run begins and ends (-1 when it runs off the track).
    static QList<XmlNode> affectedNodesForClip(const XmlNode &clip, qint64 *rangeStart = nullptr,
                                               qint64 *rangeEnd = nullptr);
};
