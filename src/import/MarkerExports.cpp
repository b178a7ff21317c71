#include "MarkerExports.h"

#include "import/QFFCP7MarkerListParser.h"
#include "xml/QFFCPXMLMarkerReader.h"

#include <QFileInfo>
#include <QHash>
#include <QRegularExpression>
#include <QStringList>

#include <algorithm>
#include <functional>

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
        MarkerRecord marker;
        marker.name = field(name);
        marker.comment = field(comment);
        marker.start = start;
        marker.duration = duration;
        marker.color = colour;
        marker.kind = kind;
        marker.durationFrames = durationFrames;
        marker.lines = {line + 1};
        m_list.markers.append(std::move(marker));
    }
    /// A marker timed in seconds from the timeline's start; the texts are shown.
    void addTimed(qsizetype line, const QString &name, const QString &comment,
                  const QString &startText, double start, const QString &durationText,
                  double duration, MarkerRecord::Kind kind = MarkerRecord::Kind::Standard)
    {
        MarkerRecord marker;
        marker.name = field(name);
        marker.comment = field(comment);
        marker.start = startText;
        marker.duration = durationText;
        marker.color = QStringLiteral("Red");
        marker.kind = kind;
        marker.startSeconds = start;
        marker.durationSeconds = duration;
        marker.lines = {line + 1};
        m_list.markers.append(std::move(marker));
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

/// Calls row with the number and the tab-separated fields of each line with text after
/// the first, which is the header.
void forEachRow(const QStringList &lines, MarkerListBuilder &list,
                const std::function<void(qsizetype, const QStringList &)> &row)
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
        row(i, lines[i].split(u'\t'));
    }
}

void readPremiere(const QStringList &lines, MarkerListBuilder &list)
{
    forEachRow(lines, list, [&list](qsizetype i, const QStringList &f) {
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
    });
}

/// Cells separated by runs of tabs.
QStringList cellsOf(const QString &line)
{
    static const QRegularExpression tabs(QStringLiteral("\t+"));
    return line.trimmed().split(tabs);
}

/// Premiere's Asset Name, In Point, Description export: a cell a column, however many
/// tabs lie between; no durations.
void readPremiereAssets(const QStringList &lines, MarkerListBuilder &list)
{
    forEachRow(lines, list, [&list, &lines](qsizetype i, const QStringList &) {
        const QStringList cells = cellsOf(lines[i]);
        if (cells.size() < 2 || !isTimecode(cells[1]))
            list.skip(i, QStringLiteral("the In Point column holds no timecode"));
        else
            list.add(i, cells[0], cells.mid(2).join(u' '), cells[1], QStringLiteral("00:00:00:00"),
                     QStringLiteral("Red"));
    });
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

/// Seconds of "h:mm:ss.ddd", "m:ss.ddd" or "ss.ddd" (a comma may stand for the
/// point, as subtitles write it); nothing for other text.
std::optional<double> decimalSeconds(QString text)
{
    text = text.trimmed().replace(u',', u'.');
    const QStringList parts = text.split(u':');
    if (parts.size() > 3 || text.isEmpty())
        return std::nullopt;
    double seconds = 0;
    for (const QString &part : parts) {
        bool number = false;
        const double value = part.toDouble(&number);
        if (!number || value < 0 || part.startsWith(u'+'))
            return std::nullopt;
        seconds = seconds * 60 + value;
    }
    return seconds;
}

/// Audition's times: decimal, or a timecode at the frame rate its time format names
/// ("30 fps", "29.97 fps").
std::optional<double> auditionSeconds(const QString &time, const QString &format)
{
    if (format.trimmed().compare(u"decimal", Qt::CaseInsensitive) == 0)
        return decimalSeconds(time);
    static const QRegularExpression fps(QStringLiteral("^(\\d+(?:\\.\\d+)?) ?fps"),
                                        QRegularExpression::CaseInsensitiveOption);
    const QRegularExpressionMatch rate = fps.match(format.trimmed());
    if (!rate.hasMatch() || !isTimecode(time.trimmed()))
        return std::nullopt;
    const QStringList f = time.trimmed().split(QRegularExpression(QStringLiteral("[:;.]")));
    const double framesPerSecond = std::round(rate.captured(1).toDouble());
    if (framesPerSecond <= 0)
        return std::nullopt;
    return f[0].toInt() * 3600.0 + f[1].toInt() * 60.0 + f[2].toInt() +
           f[3].toInt() / framesPerSecond;
}

void readAudition(const QStringList &lines, MarkerListBuilder &list)
{
    forEachRow(lines, list, [&list](qsizetype i, const QStringList &f) {
        const auto start = f.size() >= 4 ? auditionSeconds(f[1], f[3]) : std::nullopt;
        const auto duration = f.size() >= 4 ? auditionSeconds(f[2], f[3]) : std::nullopt;
        if (f.size() < 4)
            list.skip(i, QStringLiteral("fewer than four columns"));
        else if (!start || !duration)
            list.skip(i, QStringLiteral("times in \"%1\" are not read").arg(f[3].trimmed()));
        else
            list.addTimed(i, f[0], f.value(5), f[1].trimmed(), *start, f[2].trimmed(), *duration);
    });
}

const QRegularExpression &cueTiming()
{
    static const QRegularExpression timing(
        QStringLiteral("^((?:\\d+:)?\\d{1,2}:\\d\\d[,.]\\d{1,3})\\s+-->\\s+((?:\\d+:)?\\d{1,2}:"
                       "\\d\\d[,.]\\d{1,3})"));
    return timing;
}

/// SubRip and WebVTT: cues of a timing line and text lines, between blank lines; a
/// number or identifier line may come first. The first text line names the marker,
/// the rest is its comment.
void readSubtitles(const QStringList &lines, MarkerListBuilder &list, bool webVtt)
{
    qsizetype i = 0;
    if (webVtt) { // the header block
        for (; i < lines.size() && !lines[i].trimmed().isEmpty(); ++i)
            list.header(i);
    }
    while (i < lines.size()) {
        if (lines[i].trimmed().isEmpty()) {
            ++i;
            continue;
        }
        QList<qsizetype> block;
        for (; i < lines.size() && !lines[i].trimmed().isEmpty(); ++i)
            block << i;
        qsizetype timingAt = -1;
        for (qsizetype j = 0; j < std::min<qsizetype>(2, block.size()) && timingAt < 0; ++j)
            if (cueTiming().match(lines[block[j]].trimmed()).hasMatch())
                timingAt = j;
        if (timingAt < 0) {
            const bool note = webVtt && (lines[block.first()].startsWith(u"NOTE") ||
                                         lines[block.first()].startsWith(u"STYLE") ||
                                         lines[block.first()].startsWith(u"REGION"));
            for (const qsizetype line : std::as_const(block))
                list.skip(line, note ? QStringLiteral("a note or style block, not a cue")
                                     : QStringLiteral("no cue timing"));
            continue;
        }
        const QRegularExpressionMatch timing = cueTiming().match(lines[block[timingAt]].trimmed());
        const double start = decimalSeconds(timing.captured(1)).value_or(0);
        const double end = decimalSeconds(timing.captured(2)).value_or(start);
        QStringList text;
        for (qsizetype j = timingAt + 1; j < block.size(); ++j)
            text << lines[block[j]].trimmed();
        list.addTimed(block.first(), text.value(0), text.mid(1).join(u' '), timing.captured(1),
                      start, timing.captured(2), std::max(0.0, end - start));
        for (qsizetype j = 1; j < block.size(); ++j)
            list.addLineToLast(block[j]);
    }
}

const QRegularExpression &chapterLine()
{
    static const QRegularExpression line(
        QStringLiteral("^((?:\\d+:)?\\d{1,2}:\\d\\d)\\s+[-–:]?\\s*(\\S.*)$"));
    return line;
}

void readChapters(const QStringList &lines, MarkerListBuilder &list)
{
    for (qsizetype i = 0; i < lines.size(); ++i) {
        const QString line = lines[i].trimmed();
        if (line.isEmpty())
            continue;
        const QRegularExpressionMatch match = chapterLine().match(line);
        if (!match.hasMatch()) {
            list.skip(i, QStringLiteral("no chapter time at its start"));
            continue;
        }
        list.addTimed(i, match.captured(2), QString(), match.captured(1),
                      decimalSeconds(match.captured(1)).value_or(0), QStringLiteral("0"), 0,
                      MarkerRecord::Kind::Chapter);
    }
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
    if (first.startsWith(u"WEBVTT"))
        return Source::WebVtt;
    const QStringList f = first.split(u'\t');
    const qsizetype second = nextLineWithText(lines, nextLineWithText(lines, -1));
    const QString secondLine = second > 0 ? lines[second].trimmed() : QString();
    if (cueTiming().match(first.trimmed()).hasMatch() || cueTiming().match(secondLine).hasMatch())
        return Source::SubRip;
    if (f.size() >= 5 && isTimecode(f[1].trimmed()) &&
        (f.size() == 5 || isFrameCount(f[5].trimmed())))
        return Source::Avid;
    // Premiere's header in any language: six columns over rows whose In, Out and
    // Duration are timecodes; Audition's over rows that name their time format.
    const QStringList row = secondLine.split(u'\t');
    if (f.size() == 6 && row.size() >= 5 && isTimecode(row[2].trimmed()) &&
        isTimecode(row[3].trimmed()) && isTimecode(row[4].trimmed()))
        return Source::Premiere;
    static const QRegularExpression timeFormat(QStringLiteral("^(decimal|\\d+(\\.\\d+)? ?fps)"),
                                               QRegularExpression::CaseInsensitiveOption);
    if (f.size() == 6 && row.size() >= 4 && timeFormat.match(row[3].trimmed()).hasMatch())
        return Source::Audition;
    // Asset Name, In Point, Description: cells apart by runs of tabs, the second a timecode.
    const QStringList headerCells = cellsOf(first);
    const QStringList rowCells = cellsOf(secondLine);
    if (first.contains(u"\t\t") && headerCells.size() >= 3 && rowCells.size() >= 2 &&
        isTimecode(rowCells[1]) && !isTimecode(row.value(1).trimmed()))
        return Source::PremiereAssets;
    // A chapter list: every line a time and a title, the first at the very start.
    const QRegularExpressionMatch chapter = chapterLine().match(first.trimmed());
    if (!first.contains(u'\t') && chapter.hasMatch() &&
        decimalSeconds(chapter.captured(1)).value_or(1) == 0 &&
        chapterLine().match(secondLine).hasMatch())
        return Source::Chapters;
    return Source::MarkerList;
}

QString sourceName(Source source)
{
    switch (source) {
    case Source::Avid:
        return QStringLiteral("Media Composer marker export");
    case Source::Premiere:
        return QStringLiteral("Premiere Pro marker export");
    case Source::PremiereAssets:
        return QStringLiteral("Premiere Pro asset marker export");
    case Source::ResolveEdl:
        return QStringLiteral("Resolve marker EDL");
    case Source::Audition:
        return QStringLiteral("Audition marker export");
    case Source::SubRip:
        return QStringLiteral("SubRip subtitles");
    case Source::WebVtt:
        return QStringLiteral("WebVTT subtitles");
    case Source::Chapters:
        return QStringLiteral("chapter list");
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
    case Source::PremiereAssets:
        readPremiereAssets(lines, list);
        break;
    case Source::ResolveEdl:
        readResolveEdl(lines, list);
        break;
    case Source::Audition:
        readAudition(lines, list);
        break;
    case Source::SubRip:
    case Source::WebVtt:
        readSubtitles(lines, list, source == Source::WebVtt);
        break;
    case Source::Chapters:
        readChapters(lines, list);
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
