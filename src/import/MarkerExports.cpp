#include "MarkerExports.h"

#include "xml/QFFCPXMLMarkerReader.h"

#include <QFileInfo>
#include <QHash>
#include <QRegularExpression>
#include <QStringList>

namespace MarkerExports {

namespace {

const QString premiereHeader =
    QStringLiteral("Marker Name\tDescription\tIn\tOut\tDuration\tMarker Type");

bool isTimecode(const QString &text)
{
    static const QRegularExpression timecode(
        QStringLiteral("^\\d{1,2}[:;.]\\d\\d[:;.]\\d\\d[:;.]\\d\\d$"));
    return timecode.match(text).hasMatch();
}

bool isFrameCount(const QString &text)
{
    bool number = false;
    return text.toLongLong(&number) >= 0 && number;
}

QStringList linesOf(const QString &text)
{
    QStringList lines = text.split(u'\n');
    for (QString &line : lines)
        if (line.endsWith(u'\r'))
            line.chop(1);
    return lines;
}

/// The first line with something on it.
QString firstLine(const QStringList &lines)
{
    for (const QString &line : lines)
        if (!line.trimmed().isEmpty())
            return line;
    return QString();
}

/// Our colour nearest to another editor's, by name; red for one we do not know (as
/// our own lists read an unknown colour).
QString nearestColour(const QString &colour)
{
    static const QHash<QString, QString> nearest{
        // Media Composer
        {QStringLiteral("red"), QStringLiteral("Red")},
        {QStringLiteral("green"), QStringLiteral("Green")},
        {QStringLiteral("blue"), QStringLiteral("Blue")},
        {QStringLiteral("cyan"), QStringLiteral("Turquoise")},
        {QStringLiteral("magenta"), QStringLiteral("Pink")},
        {QStringLiteral("yellow"), QStringLiteral("Yellow")},
        {QStringLiteral("black"), QStringLiteral("Blue")}, // the darkest of ours
        {QStringLiteral("white"), QStringLiteral("White")},
        // Resolve, beyond the names above
        {QStringLiteral("pink"), QStringLiteral("Pink")},
        {QStringLiteral("purple"), QStringLiteral("Purple")},
        {QStringLiteral("fuchsia"), QStringLiteral("Pink")},
        {QStringLiteral("rose"), QStringLiteral("Pink")},
        {QStringLiteral("lavender"), QStringLiteral("Purple")},
        {QStringLiteral("sky"), QStringLiteral("Turquoise")},
        {QStringLiteral("mint"), QStringLiteral("Green")},
        {QStringLiteral("lemon"), QStringLiteral("Yellow")},
        {QStringLiteral("sand"), QStringLiteral("Orange")},
        {QStringLiteral("cocoa"), QStringLiteral("Orange")},
        {QStringLiteral("cream"), QStringLiteral("White")},
    };
    return nearest.value(colour.trimmed().toLower(), QStringLiteral("Red"));
}

/// Builds our marker list line by line.
class MarkerList
{
public:
    MarkerList() : m_text(QStringLiteral("#\tTrack\tName\tComment\tStart\tDuration\tColor\n")) {}

    void add(const QString &track, const QString &name, const QString &comment,
             const QString &start, const QString &duration, const QString &colour)
    {
        m_text += QString::number(++m_count) + u'\t' + field(track) + u'\t' + field(name) + u'\t' +
                  field(comment) + u'\t' + start + u'\t' + duration + u'\t' + colour + u'\n';
    }
    QString text() const { return m_text; }

    /// A duration in frames as a timecode that counts the same frames at any rate.
    static QString frames(const QString &count)
    {
        return QStringLiteral("00:00:00:") + QString::number(count.toLongLong());
    }

private:
    /// Tabs and line breaks would end the field or the line.
    static QString field(const QString &text)
    {
        QString cleaned = text;
        cleaned.replace(u'\t', u' ').replace(u'\r', u' ').replace(u'\n', u' ');
        return cleaned.trimmed();
    }

    QString m_text;
    int m_count = 0;
};

void readAvid(const QStringList &lines, MarkerList &list, QList<SkippedLine> &skipped)
{
    for (qsizetype i = 0; i < lines.size(); ++i) {
        if (lines[i].trimmed().isEmpty())
            continue;
        const QStringList f = lines[i].split(u'\t');
        if (f.size() < 6)
            skipped.append({i + 1, QStringLiteral("fewer than six columns")});
        else if (!isTimecode(f[1].trimmed()))
            skipped.append({i + 1, QStringLiteral("no timecode in the second column")});
        else if (!isFrameCount(f[5].trimmed()))
            skipped.append({i + 1, QStringLiteral("the duration is no number of frames")});
        else
            list.add(f[2], f[4], QString(), f[1].trimmed(), MarkerList::frames(f[5].trimmed()),
                     nearestColour(f[3]));
    }
}

void readPremiere(const QStringList &lines, MarkerList &list, QList<SkippedLine> &skipped)
{
    for (qsizetype i = 1; i < lines.size(); ++i) { // after the header
        if (lines[i].trimmed().isEmpty())
            continue;
        const QStringList f = lines[i].split(u'\t');
        if (f.size() < 5)
            skipped.append({i + 1, QStringLiteral("fewer than five columns")});
        else if (!isTimecode(f[2].trimmed()))
            skipped.append({i + 1, QStringLiteral("the In column holds no timecode")});
        else if (!isTimecode(f[4].trimmed()))
            skipped.append({i + 1, QStringLiteral("the Duration column holds no timecode")});
        else
            list.add(QString(), f[0], f[1], f[2].trimmed(), f[4].trimmed(), QStringLiteral("Red"));
    }
}

void readResolveEdl(const QStringList &lines, MarkerList &list, QList<SkippedLine> &skipped)
{
    static const QRegularExpression event(QStringLiteral(
        "^\\d+\\s+\\S+\\s+\\S+\\s+\\S+\\s+(\\S+)\\s+(\\S+)\\s+(\\S+)\\s+(\\S+)\\s*$"));
    static const QRegularExpression marker(
        QStringLiteral("^(.*?)\\s*\\|C:(\\S*)\\s*\\|M:(.*?)\\s*\\|D:(\\d+)\\s*$"));
    bool dropFrame = false;
    qsizetype pendingEvent = -1; // the line of an event still waiting for its marker line
    QString recordIn;
    for (qsizetype i = 0; i < lines.size(); ++i) {
        const QString line = lines[i].trimmed();
        if (line.startsWith(u"FCM:")) {
            dropFrame = !line.contains(u"NON-DROP");
            continue;
        }
        if (line.isEmpty() || line.startsWith(u"TITLE:"))
            continue;
        if (const QRegularExpressionMatch match = event.match(line); match.hasMatch()) {
            if (pendingEvent >= 0)
                skipped.append(
                    {pendingEvent + 1, QStringLiteral("an event without a marker line")});
            recordIn = match.captured(3);
            pendingEvent = isTimecode(recordIn) ? i : -1;
            if (pendingEvent < 0)
                skipped.append({i + 1, QStringLiteral("the record in point is no timecode")});
            continue;
        }
        const QRegularExpressionMatch match = marker.match(line);
        if (!match.hasMatch()) {
            skipped.append({i + 1, QStringLiteral("neither an event nor a marker line")});
            continue;
        }
        if (pendingEvent < 0) {
            skipped.append({i + 1, QStringLiteral("a marker line without its event")});
            continue;
        }
        QString start = recordIn;
        if (dropFrame) // our lists mark drop frame by the last separator
            start[start.size() - 3] = u';';
        QString colour = match.captured(2);
        colour.remove(QStringLiteral("ResolveColor"));
        list.add(QString(), match.captured(3), match.captured(1), start,
                 MarkerList::frames(match.captured(4)), nearestColour(colour));
        pendingEvent = -1;
    }
    if (pendingEvent >= 0)
        skipped.append({pendingEvent + 1, QStringLiteral("an event without a marker line")});
}

} // namespace

Source recognise(const QString &text)
{
    // Only the start is looked at: a marker list may be large.
    const QStringList lines = linesOf(text.left(4096));
    QString first = firstLine(lines);
    if (first.startsWith(QChar::ByteOrderMark))
        first.remove(0, 1);
    if (first.startsWith(premiereHeader))
        return Source::Premiere;
    if (first.startsWith(u"TITLE:") && text.contains(u"|M:"))
        return Source::ResolveEdl;
    const QStringList f = first.split(u'\t');
    if (f.size() >= 6 && isTimecode(f[1].trimmed()) && isFrameCount(f[5].trimmed()))
        return Source::Avid;
    return Source::MarkerList;
}

QString sourceName(Source source)
{
    switch (source) {
    case Source::Avid:
        return QStringLiteral("Media Composer marker export");
    case Source::Premiere:
        return QStringLiteral("Premiere Pro marker export");
    case Source::ResolveEdl:
        return QStringLiteral("Resolve marker EDL");
    case Source::MarkerList:
        break;
    }
    return QStringLiteral("marker list");
}

QString toMarkerList(const QString &text, Source source, QList<SkippedLine> *skipped)
{
    QList<SkippedLine> noted;
    MarkerList list;
    const QStringList lines = linesOf(text);
    switch (source) {
    case Source::Avid:
        readAvid(lines, list, noted);
        break;
    case Source::Premiere:
        readPremiere(lines, list, noted);
        break;
    case Source::ResolveEdl:
        readResolveEdl(lines, list, noted);
        break;
    case Source::MarkerList:
        return text;
    }
    if (skipped)
        *skipped = noted;
    return list.text();
}

std::optional<QString> markerListOfFCPXDocument(const QString &path)
{
    const QString file = QFileInfo(path).isDir() ? path + QStringLiteral("/Info.fcpxml") : path;
    MarkerList list;
    bool any = false;
    for (const QVariantMap &marker : QFFCPXMLMarkerReader::markersFromXMLFile(file, true)) {
        if (marker.isEmpty())
            continue; // a marker without text
        list.add(QStringLiteral("V1"), marker.value(QStringLiteral("name")).toString(), QString(),
                 marker.value(QStringLiteral("startTimecode")).toString(),
                 QStringLiteral("00:00:00:00"), QStringLiteral("Red"));
        any = true;
    }
    return any ? std::optional(list.text()) : std::nullopt;
}

} // namespace MarkerExports
