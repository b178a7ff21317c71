#include "MarkerExports.h"

#include "import/QFFCP7MarkerListParser.h"
#include "xml/QFFCPXMLMarkerReader.h"

#include <QFileInfo>
#include <QHash>
#include <QRegularExpression>
#include <QStringList>

#include <algorithm>

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

/// The lines, ended as our own lists' are (CR-only files of older tools too).
QStringList linesOf(const QString &text)
{
    const char16_t separator = QFFCP7MarkerListParser::lineSeparator(text);
    QStringList lines = text.split(separator);
    for (QString &line : lines) {
        while (line.endsWith(u'\r') || line.endsWith(u'\n'))
            line.chop(1);
        while (line.startsWith(u'\n'))
            line.remove(0, 1);
    }
    return lines;
}

/// The first line with something on it after the given one, or -1.
qsizetype nextLineWithText(const QStringList &lines, qsizetype after)
{
    for (qsizetype i = after + 1; i < lines.size(); ++i)
        if (!lines[i].trimmed().isEmpty())
            return i;
    return -1;
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

/// Collects the markers of an export, and writes them as a marker list of ours.
class MarkerListBuilder
{
public:
    explicit MarkerListBuilder(const QStringList &lines)
    {
        for (const QString &line : lines)
            if (!line.trimmed().isEmpty())
                ++m_list.linesWithText;
    }

    /// A marker read from the line (from 0); the duration as a timecode, or in frames.
    void add(qsizetype line, const QString &name, const QString &comment, const QString &start,
             const QString &duration, const QString &colour,
             std::optional<quint64> durationFrames = std::nullopt,
             MarkerRecord::Kind kind = MarkerRecord::Kind::Standard)
    {
        m_list.markers.append({field(name),
                               field(comment),
                               start,
                               duration,
                               colour,
                               kind,
                               durationFrames,
                               {line + 1}});
    }
    void addLineToLast(qsizetype line) { m_list.markers.last().lines.append(line + 1); }
    void header(qsizetype line) { m_list.headerLines.append(line + 1); }
    void skip(qsizetype line, const QString &why) { m_list.skipped.append({line + 1, why}); }

    MarkerList list() const { return m_list; }

    /// Our own format: the column header, then a line a marker.
    QString text() const
    {
        QString text = QStringLiteral("#\tTrack\tName\tComment\tStart\tDuration\tColor\n");
        qsizetype number = 0;
        for (const MarkerRecord &m : m_list.markers)
            text += QString::number(++number) + QStringLiteral("\tV1\t") + m.name + u'\t' +
                    m.comment + u'\t' + m.start + u'\t' + m.duration + u'\t' + m.color + u'\n';
        return text;
    }

private:
    /// Tabs and line breaks would end the field or the line.
    static QString field(const QString &text)
    {
        QString cleaned = text;
        cleaned.replace(u'\t', u' ').replace(u'\r', u' ').replace(u'\n', u' ');
        // Never null: an absent comment is an empty one, as in a list of ours.
        return cleaned.isEmpty() ? QStringLiteral("") : cleaned.trimmed();
    }

    MarkerList m_list;
};

std::optional<quint64> frameCount(const QString &text)
{
    bool number = false;
    const qint64 count = text.trimmed().toLongLong(&number);
    return number && count >= 0 ? std::optional(quint64(count)) : std::nullopt;
}

/// A line that begins a Media Composer marker: a user, then a timecode.
bool beginsAvidMarker(const QString &line)
{
    const QStringList f = line.split(u'\t');
    return f.size() >= 2 && isTimecode(f[1].trimmed());
}

/// Media Composer's exports: User, Timecode, Track, Colour, Comment, and in newer
/// versions Duration (frames) and more. A comment with line breaks goes on over the
/// lines that follow until the next marker begins, or until the row has its columns.
void readAvid(const QStringList &lines, MarkerListBuilder &list)
{
    // Newer versions write a duration on every line; the first may be cut by its comment.
    const bool withDuration = std::any_of(lines.begin(), lines.end(), [](const QString &line) {
        const QStringList f = line.split(u'\t');
        return f.size() >= 6 && isTimecode(f[1].trimmed()) && isFrameCount(f[5].trimmed());
    });
    const qsizetype columns = withDuration ? 6 : 5;
    for (qsizetype i = 0; i < lines.size(); ++i) {
        if (lines[i].trimmed().isEmpty())
            continue;
        if (!beginsAvidMarker(lines[i])) {
            list.skip(i, QStringLiteral("no timecode in the second column"));
            continue;
        }
        QString row = lines[i];
        QList<qsizetype> rowLines{i};
        while (row.count(u'\t') + 1 < columns && i + 1 < lines.size() &&
               !beginsAvidMarker(lines[i + 1])) {
            row += u'\n' + lines[++i];
            if (!lines[i].trimmed().isEmpty())
                rowLines.append(i);
        }
        const QStringList f = row.split(u'\t');
        if (f.size() < columns) {
            for (const qsizetype line : std::as_const(rowLines))
                list.skip(line, columns == 6 ? QStringLiteral("fewer than six columns")
                                             : QStringLiteral("fewer than five columns"));
            continue;
        }
        if (withDuration && !isFrameCount(f[5].trimmed())) {
            for (const qsizetype line : std::as_const(rowLines))
                list.skip(line, QStringLiteral("the duration is no number of frames"));
            continue;
        }
        list.add(rowLines.first(), f[4], QString(), f[1].trimmed(),
                 withDuration ? f[5].trimmed() : QStringLiteral("0"), nearestColour(f[3]),
                 withDuration ? frameCount(f[5]) : std::optional<quint64>(0));
        for (qsizetype more = 1; more < rowLines.size(); ++more)
            list.addLineToLast(rowLines[more]);
    }
}

void readPremiere(const QStringList &lines, MarkerListBuilder &list)
{
    bool headerSeen = false;
    for (qsizetype i = 0; i < lines.size(); ++i) {
        if (lines[i].trimmed().isEmpty())
            continue;
        if (!headerSeen) {
            headerSeen = true;
            list.header(i);
            continue;
        }
        const QStringList f = lines[i].split(u'\t');
        if (f.size() < 5)
            list.skip(i, QStringLiteral("fewer than five columns"));
        else if (!isTimecode(f[2].trimmed()))
            list.skip(i, QStringLiteral("the In column holds no timecode"));
        else if (!isTimecode(f[4].trimmed()))
            list.skip(i, QStringLiteral("the Duration column holds no timecode"));
        else
            list.add(i, f[0], f[1], f[2].trimmed(), f[4].trimmed(), QStringLiteral("Red"),
                     std::nullopt,
                     f.value(5).trimmed().compare(u"Chapter", Qt::CaseInsensitive) == 0
                         ? MarkerRecord::Kind::Chapter
                         : MarkerRecord::Kind::Standard);
    }
}

void readResolveEdl(const QStringList &lines, MarkerListBuilder &list)
{
    static const QRegularExpression event(QStringLiteral(
        "^\\d+\\s+\\S+\\s+\\S+\\s+\\S+\\s+(\\S+)\\s+(\\S+)\\s+(\\S+)\\s+(\\S+)\\s*$"));
    static const QRegularExpression marker(
        QStringLiteral("^(.*?)\\s*\\|C:(\\S*)\\s*\\|M:(.*?)\\s*\\|D:(\\d+)\\s*$"));
    bool dropFrame = false;
    qsizetype pendingEvent = -1; // the line of an event still waiting for its marker line
    QString recordIn;
    // A note with line breaks: the lines after the event up to its marker line.
    QStringList noteLines;
    QList<qsizetype> noteLineNumbers;
    const auto dropEvent = [&] {
        if (pendingEvent >= 0) {
            list.skip(pendingEvent, QStringLiteral("an event without a marker line"));
            for (const qsizetype line : std::as_const(noteLineNumbers))
                list.skip(line, QStringLiteral("a note without its marker line"));
        }
        pendingEvent = -1;
        noteLines.clear();
        noteLineNumbers.clear();
    };
    for (qsizetype i = 0; i < lines.size(); ++i) {
        const QString line = lines[i].trimmed();
        if (line.isEmpty())
            continue;
        if (line.startsWith(u"FCM:")) {
            dropFrame = !line.contains(u"NON-DROP");
            list.header(i);
            continue;
        }
        if (line.startsWith(u"TITLE:")) {
            list.header(i);
            continue;
        }
        if (const QRegularExpressionMatch match = event.match(line); match.hasMatch()) {
            dropEvent();
            recordIn = match.captured(3);
            pendingEvent = isTimecode(recordIn) ? i : -1;
            if (pendingEvent < 0)
                list.skip(i, QStringLiteral("the record in point is no timecode"));
            continue;
        }
        const QRegularExpressionMatch match = marker.match(line);
        if (!match.hasMatch()) {
            if (pendingEvent >= 0) {
                noteLines << line;
                noteLineNumbers << i;
            } else {
                list.skip(i, QStringLiteral("neither an event nor a marker line"));
            }
            continue;
        }
        if (pendingEvent < 0) {
            list.skip(i, QStringLiteral("a marker line without its event"));
            continue;
        }
        QString start = recordIn;
        if (dropFrame) // our lists mark drop frame by the last separator
            start[start.size() - 3] = u';';
        QString colour = match.captured(2);
        colour.remove(QStringLiteral("ResolveColor"));
        noteLines << match.captured(1);
        list.add(pendingEvent, match.captured(3), noteLines.join(u' ').trimmed(), start,
                 match.captured(4), nearestColour(colour), frameCount(match.captured(4)));
        // The event line, the note's lines and the marker line are one marker.
        for (const qsizetype noteLine : std::as_const(noteLineNumbers))
            list.addLineToLast(noteLine);
        list.addLineToLast(i);
        pendingEvent = -1;
        noteLines.clear();
        noteLineNumbers.clear();
    }
    dropEvent();
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
    if (f.size() >= 5 && isTimecode(f[1].trimmed()) &&
        (f.size() == 5 || isFrameCount(f[5].trimmed())))
        return Source::Avid;
    // Premiere's header in any language: six columns over rows whose In, Out and
    // Duration are timecodes.
    const qsizetype second = nextLineWithText(lines, nextLineWithText(lines, -1));
    if (f.size() == 6 && second > 0) {
        const QStringList row = lines[second].split(u'\t');
        if (row.size() >= 5 && isTimecode(row[2].trimmed()) && isTimecode(row[3].trimmed()) &&
            isTimecode(row[4].trimmed()))
            return Source::Premiere;
    }
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

MarkerList read(const QString &text, Source source)
{
    if (source == Source::MarkerList)
        return MarkerList::fromText(text);
    const QStringList lines = linesOf(text);
    MarkerListBuilder list(lines);
    switch (source) {
    case Source::Avid:
        readAvid(lines, list);
        break;
    case Source::Premiere:
        readPremiere(lines, list);
        break;
    case Source::ResolveEdl:
        readResolveEdl(lines, list);
        break;
    case Source::MarkerList:
        break;
    }
    return list.list();
}

std::optional<QString> markerListOfFCPXDocument(const QString &path)
{
    const QString file = QFileInfo(path).isDir() ? path + QStringLiteral("/Info.fcpxml") : path;
    MarkerListBuilder list({});
    bool any = false;
    for (const QVariantMap &marker : QFFCPXMLMarkerReader::markersFromXMLFile(file, true)) {
        if (marker.isEmpty())
            continue; // a marker without text
        list.add(0, marker.value(QStringLiteral("name")).toString(), QString(),
                 marker.value(QStringLiteral("startTimecode")).toString(),
                 QStringLiteral("00:00:00:00"), QStringLiteral("Red"));
        any = true;
    }
    return any ? std::optional(list.text()) : std::nullopt;
}

} // namespace MarkerExports
