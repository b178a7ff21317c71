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

    qsizetype lineNumber = 0;
    for (const QStringView rawPiece : QStringView(clean).tokenize(separator)) {
        ++lineNumber;
        const QStringView piece = stripLineEnds(rawPiece);
        const Shape pieceShape = Shape::of(piece);

        // A line with a marker's shape starts afresh: what was held back before it is
        // reported rather than swallowing it.
        if (pieceShape.fieldCount() >= minimumFields - 1 && standsAlone(piece)) {
            if (heldLines > 0)
                dropHeld();
            QStringList fields = fieldsOf(piece.trimmed());
            if (fields.size() < minimumFields)
                fields.append(QString()); // the empty colour column the trim took
            records.append({std::move(fields), {lineNumber}});
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
                QList<qsizetype> lines = heldTextLines;
                if (!pieceShape.blank)
                    lines.append(lineNumber);
                records.append({std::move(*fields), std::move(lines)});
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
            if (!pieceShape.blank)
                heldTextLines.append(lineNumber);
            heldShape = candidateShape;
            continue;
        }
        std::fprintf(stderr, "Failed to parse line: %s\n", qUtf8Printable(error.description()));
    }
    dropHeld();
    return records;
}
