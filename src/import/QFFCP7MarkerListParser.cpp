#include "QFFCP7MarkerListParser.h"

#include <cstdio>

namespace {

/// Facts about a stretch of text that decide what parseLine makes of it once trimmed,
/// so that held-back lines need not be joined and re-split for every new line: a list
/// whose lines never complete a record would otherwise take quadratic time.
struct Shape
{
    qsizetype tabs = 0;
    qsizetype leadingTabs = 0;  ///< tabs inside the leading white space
    qsizetype trailingTabs = 0; ///< tabs inside the trailing white space
    bool blank = true;          ///< nothing but white space (as trimming sees it)

    static Shape of(QStringView text)
    {
        Shape shape;
        qsizetype tabsSinceContent = 0;
        for (const QChar c : text) {
            if (c == u'\t') {
                ++shape.tabs;
                ++tabsSinceContent;
            } else if (!c.isSpace()) {
                if (shape.blank)
                    shape.leadingTabs = shape.tabs;
                shape.blank = false;
                tabsSinceContent = 0;
            }
        }
        shape.trailingTabs = tabsSinceContent;
        if (shape.blank)
            shape.leadingTabs = shape.tabs;
        return shape;
    }

    /// The shape of this text followed by other (with or without a line feed between).
    Shape followedBy(const Shape &other) const
    {
        Shape joined;
        joined.tabs = tabs + other.tabs;
        joined.blank = blank && other.blank;
        joined.leadingTabs = blank ? tabs + other.leadingTabs : leadingTabs;
        joined.trailingTabs = other.blank ? other.tabs + trailingTabs : other.trailingTabs;
        return joined;
    }

    /// Fields after trimming and splitting at tabs; 0 for blank text.
    qsizetype fieldCount() const { return blank ? 0 : tabs - leadingTabs - trailingTabs + 1; }
};

constexpr qsizetype minimumFields = 7;

QStringView stripLineEnds(QStringView piece)
{
    auto isLineEnd = [](QChar c) { return c == u'\r' || c == u'\n'; };
    while (!piece.isEmpty() && isLineEnd(piece.front()))
        piece = piece.sliced(1);
    while (!piece.isEmpty() && isLineEnd(piece.back()))
        piece.chop(1);
    return piece;
}

/// Digits with separators between them ("01:00:10:00", "00:00:11", "1.5.2"): enough
/// to tell a marker line from the middle of a comment; whether the timecode can exist
/// is decided later, with the timeline's rate.
bool looksLikeTimecode(QStringView text)
{
    bool separator = false;
    bool digitBefore = false;
    for (const QChar c : text) {
        if (c.isDigit() && c.unicode() < 128) {
            digitBefore = true;
        } else if ((c == u':' || c == u';' || c == u'.') && digitBefore) {
            separator = true;
            digitBefore = false;
        } else {
            return false;
        }
    }
    return separator && digitBefore;
}

QStringList fieldsOf(QStringView trimmed)
{
    QStringList fields;
    fields.reserve(trimmed.count(u'\t') + 1);
    for (const QStringView field : trimmed.tokenize(u'\t'))
        fields.append(field.trimmed().toString());
    return fields;
}

// What a quoted cell holds that would otherwise end its field or line, kept out of the
// way of the splitting in characters of the private use area, and put back after it.
constexpr char16_t quotedTab = u'\uE000';
constexpr char16_t quotedLineFeed = u'\uE001';
constexpr char16_t quotedReturn = u'\uE002';

void restoreQuoted(QString &field)
{
    field.replace(QChar(quotedTab), u'\t')
        .replace(QChar(quotedLineFeed), u'\n')
        .replace(QChar(quotedReturn), u'\r');
}

/// A line of a text whose quoted cells are unquoted: its text (a view into the
/// unquoted text) and the lines of the file it spans that hold text.
struct Line
{
    QStringView text;
    QList<qsizetype> textLines;
};

/// The text's lines with every cell that begins with a double quote unquoted as
/// spreadsheet programs write it: doubled quotes inside become one, and tabs and line
/// breaks inside belong to the cell. The unquoted text is kept in storage.
QList<Line> unquotedLines(const QString &text, char16_t separator, QString &storage)
{
    storage.reserve(text.size());
    struct Span
    {
        qsizetype begin;
        qsizetype end;
        QList<qsizetype> textLines;
    };
    QList<Span> spans{{0, 0, {}}};
    qsizetype physical = 1;
    bool physicalHasText = false;
    const auto endPhysical = [&] {
        if (physicalHasText)
            spans.last().textLines.append(physical);
        ++physical;
        physicalHasText = false;
    };
    bool fieldStart = true;
    bool inQuotes = false;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text[i];
        if (inQuotes) {
            if (c == u'"') {
                if (i + 1 < text.size() && text[i + 1] == u'"') {
                    storage += u'"';
                    ++i;
                } else {
                    inQuotes = false;
                }
                continue;
            }
            if (c == separator)
                endPhysical();
            else if (!c.isSpace())
                physicalHasText = true;
            storage += c == u'\t'   ? QChar(quotedTab)
                       : c == u'\n' ? QChar(quotedLineFeed)
                       : c == u'\r' ? QChar(quotedReturn)
                                    : c;
            continue;
        }
        if (c == separator) {
            endPhysical();
            spans.last().end = storage.size();
            spans.append({storage.size(), storage.size(), {}});
            fieldStart = true;
            continue;
        }
        if (c == u'"' && fieldStart) {
            inQuotes = true;
            physicalHasText = true;
            fieldStart = false;
            continue;
        }
        storage += c;
        fieldStart = c == u'\t';
        if (!c.isSpace())
            physicalHasText = true;
    }
    endPhysical();
    spans.last().end = storage.size();
    QList<Line> lines;
    lines.reserve(spans.size());
    for (const Span &span : std::as_const(spans))
        lines.append(
            {QStringView(storage).sliced(span.begin, span.end - span.begin), span.textLines});
    return lines;
}

QFError lineError(const QString &reason)
{
    return QFError::make(QFFCP7MarkerListParser::errorDomain, QFFCP7MarkerListParser::errorCode,
                         QFFCP7MarkerListParser::errorKey, reason);
}

} // namespace

std::optional<QStringList> QFFCP7MarkerListParser::parseLine(const QString &line, QFError *error)
{
    const QStringView trimmed = QStringView(line).trimmed();
    if (trimmed.isEmpty()) {
        if (error)
            *error = lineError(emptyLine);
        return std::nullopt;
    }
    if (trimmed.count(u'\t') + 1 < minimumFields) {
        if (error)
            *error = lineError(incompleteLine);
        return std::nullopt;
    }
    return fieldsOf(trimmed);
}

char16_t QFFCP7MarkerListParser::lineSeparator(QStringView text)
{
    qsizetype lineFeeds = 0;
    qsizetype bareReturns = 0;
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i] == u'\n')
            ++lineFeeds;
        else if (text[i] == u'\r' && (i + 1 == text.size() || text[i + 1] != u'\n'))
            ++bareReturns;
    }
    return bareReturns > lineFeeds ? u'\r' : u'\n';
}

bool QFFCP7MarkerListParser::standsAlone(QStringView line)
{
    qsizetype index = 0;
    for (const QStringView field : line.trimmed().tokenize(u'\t')) {
        if ((index == 4 || index == 5) && !looksLikeTimecode(field.trimmed()))
            return false;
        if (++index == 6)
            return true;
    }
    return false;
}

QList<QFMarkerRecord> QFFCP7MarkerListParser::parseMarkersFromText(const QString &text,
                                                                   QList<SkippedLine> *leftOver)
{
    QString clean = text;
    // A 16-bit text read as 8-bit has a NUL after every character.
    clean.remove(QChar(u'\0'));
    const char16_t separator = lineSeparator(clean);

    QList<QFMarkerRecord> records;
    QString held; // held-back lines joined with line feeds
    qsizetype heldLines = 0;
    QList<qsizetype> heldTextLines; // the held-back lines that hold text
    Shape heldShape;
    const auto clearHeld = [&] {
        held.clear();
        heldLines = 0;
        heldTextLines.clear();
        heldShape = Shape();
    };
    const auto dropHeld = [&] {
        if (leftOver) {
            const QString why =
                QStringLiteral("seven columns expected, found %1").arg(heldShape.fieldCount());
            for (const qsizetype line : std::as_const(heldTextLines))
                leftOver->append({line, why});
        }
        clearHeld();
    };

    // Spreadsheet programs quote a cell that holds a tab, a line break or a quote; such a
    // cell is unquoted first, and a record then spans the lines its cells do.
    const bool quoted = clean.contains(u'"');
    QString unquoted;
    const QList<Line> lines = quoted ? unquotedLines(clean, separator, unquoted) : QList<Line>();
    const qsizetype count = quoted ? lines.size() : qsizetype(clean.count(QChar(separator))) + 1;
    QStringView rest(clean);
    for (qsizetype index = 0; index < count; ++index) {
        QStringView rawPiece;
        QList<qsizetype> pieceLines;
        if (quoted) {
            rawPiece = lines[index].text;
            pieceLines = lines[index].textLines;
        } else {
            const qsizetype end = rest.indexOf(QChar(separator));
            rawPiece = end < 0 ? rest : rest.first(end);
            rest = end < 0 ? QStringView() : rest.sliced(end + 1);
        }
        const QStringView piece = stripLineEnds(rawPiece);
        const Shape pieceShape = Shape::of(piece);
        if (!quoted && !pieceShape.blank)
            pieceLines = {index + 1};

        // A line with a marker's shape starts afresh: what was held back before it is
        // reported rather than swallowing it.
        if (pieceShape.fieldCount() >= minimumFields - 1 && standsAlone(piece)) {
            if (heldLines > 0)
                dropHeld();
            QStringList fields = fieldsOf(piece.trimmed());
            if (fields.size() < minimumFields)
                fields.append(QString()); // the empty colour column the trim took
            records.append({std::move(fields), pieceLines});
            continue;
        }

        const Shape candidateShape = heldShape.followedBy(pieceShape);
        QFError error;
        if (candidateShape.blank) {
            error = lineError(emptyLine);
        } else if (candidateShape.fieldCount() < minimumFields) {
            error = lineError(incompleteLine);
        } else {
            QString candidate = held;
            if (!candidate.isEmpty())
                candidate += u'\n';
            candidate += piece;
            if (std::optional<QStringList> fields = parseLine(candidate, &error)) {
                records.append({std::move(*fields), heldTextLines + pieceLines, heldLines > 0});
                clearHeld();
                continue;
            }
        }

        const QString reason = error.userInfo.value(errorKey).toString();
        if (reason == emptyLine)
            continue;
        if (reason == incompleteLine) {
            if (heldLines > 0)
                held += u'\n';
            held += piece;
            ++heldLines;
            heldTextLines += pieceLines;
            heldShape = candidateShape;
            continue;
        }
        std::fprintf(stderr, "Failed to parse line: %s\n", qUtf8Printable(error.description()));
    }
    dropHeld();
    if (quoted) {
        for (QFMarkerRecord &record : records)
            for (QString &field : record.fields) {
                restoreQuoted(field);
                field = field.trimmed(); // a quoted cell's own blanks at its ends go too
            }
    }
    return records;
}
