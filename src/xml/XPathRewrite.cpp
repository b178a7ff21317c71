#include "XPathRewrite.h"

#include <QStringList>

#include <vector>

namespace {

bool isNameChar(QChar c)
{
    return c.isLetterOrNumber() || c == u'-' || c == u'_' || c == u'.' || c == u':' ||
           c.unicode() >= 0x80;
}

void skipSpaces(const QString &text, qsizetype &i)
{
    while (i < text.size() && text[i].isSpace())
        ++i;
}

/// Reads "name | name | ... )" from just after an opening parenthesis. On success
/// answers the names and moves i past the closing parenthesis.
bool readNameUnion(const QString &text, qsizetype &i, QStringList &names)
{
    qsizetype at = i;
    for (;;) {
        skipSpaces(text, at);
        const qsizetype start = at;
        while (at < text.size() && isNameChar(text[at]))
            ++at;
        if (at == start)
            return false;
        names << text.mid(start, at - start);
        skipSpaces(text, at);
        if (at >= text.size())
            return false;
        if (text[at] == u')') {
            i = at + 1;
            return true;
        }
        if (text[at] != u'|')
            return false;
        ++at;
    }
}

/// The last non-blank character written, or a null character.
QChar lastWritten(const QString &out)
{
    for (qsizetype i = out.size() - 1; i >= 0; --i)
        if (!out[i].isSpace())
            return out[i];
    return QChar();
}

} // namespace

QString rewriteXPathForLibxml(const QString &query)
{
    static const QString textStep = QStringLiteral("/text()");

    QString out;
    out.reserve(query.size() + 32);
    // For each open bracket or parenthesis (and the top level): whether the step being
    // written there is an attribute step.
    std::vector<bool> attributeStep{false};
    bool stepStarting = true;
    QChar quote;

    qsizetype i = 0;
    while (i < query.size()) {
        const QChar c = query[i];
        if (!quote.isNull()) {
            if (c == quote)
                quote = QChar();
            out += c;
            ++i;
            continue;
        }
        if (c == u'"' || c == u'\'') {
            quote = c;
            attributeStep.back() = false;
            stepStarting = false;
            out += c;
            ++i;
            continue;
        }
        if (c == u'/' && attributeStep.back() && QStringView(query).mid(i).startsWith(textStep)) {
            i += textStep.size();
            continue;
        }
        if (c == u'(' && lastWritten(out) == u'/') {
            qsizetype after = i + 1;
            QStringList names;
            if (readNameUnion(query, after, names)) {
                out += QStringLiteral("*[self::") + names.join(QStringLiteral(" or self::")) + u']';
                attributeStep.back() = false;
                stepStarting = false;
                i = after;
                continue;
            }
        }
        if (c == u'[' || c == u'(') {
            attributeStep.push_back(false);
            stepStarting = true;
        } else if ((c == u']' || c == u')') && attributeStep.size() > 1) {
            attributeStep.pop_back();
            stepStarting = false;
        } else if (c == u'/' || c == u'|' || c.isSpace()) {
            // After a blank the next token decides: an operator, a name, or a "/" that
            // continues the same path.
            stepStarting = true;
        } else if (stepStarting) {
            attributeStep.back() =
                c == u'@' || QStringView(query).mid(i).startsWith(u"attribute::");
            stepStarting = false;
        }
        out += c;
        ++i;
    }
    return out;
}
