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

QFError lineError(const QString &reason)
{
    return QFError::make(QFFCP7MarkerListParser::errorDomain, QFFCP7MarkerListParser::errorCode,
                         QFFCP7MarkerListParser::errorKey, reason);
}

} // namespace

std::optional<QFMarkerRecord> QFFCP7MarkerListParser::parseLine(const QString &line, QFError *error)
{
    const QStringView trimmed = QStringView(line).trimmed();
    if (trimmed.isEmpty()) {
        if (error)
            *error = lineError(emptyLine);
        return std::nullopt;
    }
    const qsizetype fields = trimmed.count(u'\t') + 1;
    if (fields < minimumFields) {
        if (error)
            *error = lineError(incompleteLine);
        return std::nullopt;
    }
    QFMarkerRecord record;
    record.reserve(fields);
    for (const QStringView field : trimmed.tokenize(u'\t'))
        record.append(field.trimmed().toString());
    return record;
}

QList<QFMarkerRecord> QFFCP7MarkerListParser::parseMarkersFromText(const QString &text)
{
    QString clean = text;
    // A 16-bit text read as 8-bit has a NUL after every character.
    clean.remove(QChar(u'\0'));
    const char16_t separator = clean.contains(u'\n') ? u'\n' : u'\r';

    QList<QFMarkerRecord> records;
    QString held; // held-back lines joined with line feeds
    qsizetype heldLines = 0;
    Shape heldShape;

    for (const QStringView rawPiece : QStringView(clean).tokenize(separator)) {
        const QStringView piece = stripLineEnds(rawPiece);
        const Shape pieceShape = Shape::of(piece);
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
            if (std::optional<QFMarkerRecord> record = parseLine(candidate, &error)) {
                records.append(std::move(*record));
                held.clear();
                heldLines = 0;
                heldShape = Shape();
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
            heldShape = candidateShape;
            continue;
        }
        std::fprintf(stderr, "Failed to parse line: %s\n", qUtf8Printable(error.description()));
    }
    return records;
}
