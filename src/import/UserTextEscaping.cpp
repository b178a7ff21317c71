#include "UserTextEscaping.h"

#include "support/QFUserDefaults.h"

namespace UserTextEscaping {

void registerDefaults()
{
    QFUserDefaults::standardUserDefaults().registerDefaults({{stripWhitespaceKey, 1}});
}

bool stripWhitespaceEnabled()
{
    return QFUserDefaults::standardUserDefaults().integerForKey(stripWhitespaceKey) == 1;
}

QString escapeUserInputForXML(const QString &text)
{
    return escapeUserInputForXML(text, stripWhitespaceEnabled());
}

QString escapeUserInputForXML(const QString &text, bool stripWhitespace)
{
    // The order matters: "&" first, then the quotes that become entities, then the
    // undoing of a doubled "&amp;".
    QString escaped = text;
    escaped.replace(QChar(0x201C), u'"')
        .replace(QChar(0x2018), u'\'')
        .replace(QChar(0x201D), u'"')
        .replace(QChar(0x2019), u'\'')
        .replace(u'&', QStringLiteral("&amp;"))
        .replace(u'"', QStringLiteral("&quot;"))
        .replace(u'\'', QStringLiteral("&apos;"))
        .replace(QStringLiteral("&amp;amp;"), QStringLiteral("&amp;"))
        .replace(u'<', QStringLiteral("&lt;"))
        .replace(u'>', QStringLiteral("&gt;"));
    escaped.remove(u'\r').remove(u'\n');
    if (stripWhitespace) {
        qsizetype begin = 0;
        qsizetype end = escaped.size();
        const auto blank = [](QChar c) { return c == u' ' || c == u'\t'; };
        while (begin < end && blank(escaped[begin]))
            ++begin;
        while (end > begin && blank(escaped[end - 1]))
            --end;
        escaped = escaped.mid(begin, end - begin);
    }
    return escaped;
}

} // namespace UserTextEscaping
