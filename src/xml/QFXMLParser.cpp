#include "xml/QFXMLParser.h"

#include "support/QFLog.h"
#include "time/QFNumberReader.h"

#include <QSet>
#include <QUrl>

namespace {

int hexValue(QChar c)
{
    const char16_t u = c.unicode();
    if (u >= u'0' && u <= u'9')
        return u - u'0';
    if (u >= u'a' && u <= u'f')
        return u - u'a' + 10;
    if (u >= u'A' && u <= u'F')
        return u - u'A' + 10;
    return -1;
}

/// Percent-escapes decoded as ASCII: nothing when an escape is malformed or stands for
/// a byte above 127. Characters that are not escaped stay as they are.
std::optional<QString> percentDecodedAscii(const QString &text)
{
    QString decoded;
    decoded.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i] != u'%') {
            decoded += text[i];
            continue;
        }
        if (i + 2 >= text.size())
            return std::nullopt;
        const int high = hexValue(text[i + 1]);
        const int low = hexValue(text[i + 2]);
        if (high < 0 || low < 0 || high > 7)
            return std::nullopt;
        decoded += QChar(char16_t(high * 16 + low));
        i += 2;
    }
    return decoded.isNull() ? QString(QLatin1StringView("")) : decoded;
}

QString decodedOrRaw(const QString &text)
{
    return percentDecodedAscii(text).value_or(text);
}

/// The first text of a fixed query, evaluated as written.
QString firstText(const XmlNode &node, const QString &query)
{
    const QList<XmlNode> matches = node.nodesForXPath(query);
    return matches.isEmpty() ? QString() : matches.first().stringValue();
}

QString childText(const XmlNode &node, const QString &childName, bool immediateChildOnly)
{
    if (!node)
        return QString();
    const QString direct = firstText(node, QStringLiteral("./%1[1]/text()").arg(childName));
    if (!direct.isNull() || immediateChildOnly)
        return direct;
    return firstText(node, QStringLiteral(".//%1[1]/text()").arg(childName));
}

const QString startQuery = QStringLiteral("./start[1]/text()");
const QString endQuery = QStringLiteral("./end[1]/text()");
const QString joined = QStringLiteral("-1");
const QString transitionItem = QStringLiteral("transitionitem");

} // namespace

QString QFXMLParser::escapeQueryString(const QString &query)
{
    if (query.isEmpty())
        return query; // keeps null and empty apart
    const qsizetype n = query.size();
    QString escaped;
    escaped.reserve(n + 16);
    for (qsizetype i = 0; i < n; ++i) {
        const char16_t unit = query[i].unicode();
        if (unit >= 160) {
            escaped += u"&#";
            escaped += QString::number(unit);
            escaped += u';';
        } else if (unit == u'&') {
            // An ampersand already written as "&amp;" is not escaped twice.
            if (i < n - 4 && QStringView(query).mid(i, 5) == u"&amp;")
                escaped += u'&';
            else
                escaped += u"&amp;";
        } else if (unit == 13) {
            escaped += u"&#13;";
        } else if (unit < 20) {
            QFLog::appendLog(u"Stripped character %C", QChar(unit));
        } else {
            escaped += QChar(unit);
        }
    }
    return escaped;
}

QList<XmlNode> QFXMLParser::nodesForQuery(const QString &query, const XmlNode &element)
{
    if (query.isNull() || !element)
        return {};
    QString error;
    QList<XmlNode> nodes = element.nodesForXPath(escapeQueryString(query), &error);
    if (!error.isNull())
        QFLog::appendLog(u"XML parsing error: %@", error);
    return nodes;
}

XmlNode QFXMLParser::nodeForQuery(const QString &query, const XmlNode &element)
{
    const QList<XmlNode> nodes = nodesForQuery(query, element);
    return nodes.isEmpty() ? XmlNode() : nodes.first();
}

QString QFXMLParser::stringValueForQuery(const QString &query, const XmlNode &element)
{
    if (query.isNull() || !element)
        return QString();
    const QList<XmlNode> nodes = element.nodesForXPath(escapeQueryString(query));
    return nodes.isEmpty() ? QString() : nodes.first().stringValue();
}

std::optional<QStringList> QFXMLParser::stringValuesForQuery(const QString &query,
                                                             const XmlNode &node)
{
    if (query.isNull() || !node)
        return std::nullopt;
    const QList<XmlNode> nodes = node.nodesForXPath(escapeQueryString(query));
    if (nodes.isEmpty())
        return std::nullopt;
    QStringList values;
    for (const XmlNode &match : nodes) {
        const QString value = match.stringValue();
        if (!value.isNull())
            values << value;
    }
    return values;
}

QList<XmlNode> QFXMLParser::queryNodes(const QList<XmlNode> &nodes, const QString &xPath)
{
    QList<XmlNode> matches;
    if (xPath.isNull())
        return matches;
    const QString query = escapeQueryString(xPath);
    for (const XmlNode &node : nodes)
        matches << node.nodesForXPath(query);
    return matches;
}

QList<XmlNode> QFXMLParser::node(const XmlNode &node, const QStringList &nodesFromQueries)
{
    QList<XmlNode> result;
    if (!node)
        return result;
    QSet<XmlNode> seen;
    for (const QString &query : nodesFromQueries) {
        QString error;
        const QList<XmlNode> matches = node.nodesForXPath(escapeQueryString(query), &error);
        if (!error.isNull())
            QFLog::appendLog(u"XML parsing error: %@", error);
        for (const XmlNode &match : matches) {
            if (!seen.contains(match)) {
                seen.insert(match);
                result << match;
            }
        }
    }
    return result;
}

QString QFXMLParser::idAttributeForNode(const XmlNode &node)
{
    const QString id = stringValueForQuery(QStringLiteral("./@id[1]"), node);
    if (id.isNull())
        return id;
    return percentDecodedAscii(id).value_or(QString());
}

QString QFXMLParser::filenameFromPathURLString(const QString &urlString)
{
    if (urlString.isNull())
        return QString();
    const QUrl url(urlString, QUrl::StrictMode);
    if (!url.isValid() && !urlString.isEmpty())
        return QString();
    QString path = url.path(QUrl::FullyDecoded);
    if (path.size() > 1 && path.endsWith(u'/'))
        path.chop(1); // a URL's path is given without its trailing slash
    return path.isNull() ? QString(QLatin1StringView("")) : path;
}

QString QFXMLParser::nameForNode(const XmlNode &node, bool immediateChildOnly)
{
    const QString name = childText(node, QStringLiteral("name"), immediateChildOnly);
    if (!name.isNull())
        return decodedOrRaw(name);
    if (immediateChildOnly || !node)
        return QString();
    const XmlNode id = node.attributeForName(QStringLiteral("id"));
    return id ? decodedOrRaw(id.stringValue()) : QString();
}

QString QFXMLParser::uuidForNode(const XmlNode &node, bool immediateChildOnly)
{
    const QString uuid = childText(node, QStringLiteral("uuid"), immediateChildOnly);
    return uuid.isNull() ? uuid : decodedOrRaw(uuid);
}

XmlNode QFXMLParser::node(const XmlNode &node, const QString &parentWithName,
                          const QStringList &limits)
{
    if (parentWithName.isNull())
        return XmlNode();
    for (XmlNode ancestor = node.parent(); ancestor; ancestor = ancestor.parent()) {
        const QString name = ancestor.name();
        if (name.isNull())
            continue; // the document node has no name
        if (limits.contains(name))
            return XmlNode();
        if (name == parentWithName)
            return ancestor;
    }
    return XmlNode();
}

XmlNode QFXMLParser::nextSiblingForNode(const XmlNode &node)
{
    for (XmlNode current = node; current; current = current.parent()) {
        if (const XmlNode sibling = current.nextSibling())
            return sibling;
    }
    return XmlNode();
}

QList<XmlNode> QFXMLParser::affectedNodesForClip(const XmlNode &clip, qint64 *rangeStart,
                                                 qint64 *rangeEnd)
{
    if (!clip)
        return {};
    QString start = stringValueForQuery(startQuery, clip);
    QString end = stringValueForQuery(endQuery, clip);
    QList<XmlNode> nodes{clip};

    // A "-1" edge means a transition item joins the clip to its neighbour on that side.
    for (XmlNode current = clip; start == joined;) {
        const XmlNode previous = current.previousSibling();
        if (!previous)
            break;
        nodes.prepend(previous);
        if (previous.name() == transitionItem &&
            stringValueForQuery(endQuery, previous.previousSibling()) == joined)
            start = joined;
        else
            start = stringValueForQuery(startQuery, previous);
        current = previous;
    }
    for (XmlNode current = clip; end == joined;) {
        const XmlNode next = current.nextSibling();
        if (!next)
            break;
        nodes.append(next);
        if (next.name() == transitionItem &&
            stringValueForQuery(startQuery, next.nextSibling()) == joined)
            end = joined;
        else
            end = stringValueForQuery(endQuery, next);
        current = next;
    }

    if (rangeStart)
        *rangeStart = QFNumberReader::leadingInteger(start);
    if (rangeEnd)
        *rangeEnd = QFNumberReader::leadingInteger(end);
    return nodes;
}
