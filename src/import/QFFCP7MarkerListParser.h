#pragma once

#include "import/ImportReport.h"
#include "support/QFError.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

/// One record of a marker list: at least seven trimmed fields (columns 2 to 6 are name,
/// comment, start timecode, duration timecode and colour name) and the lines it came from.
struct QFMarkerRecord
{
    QStringList fields;
    /// The lines (from 1) holding its text; more than one when short lines were joined
    /// or a quoted cell spans lines.
    QList<qsizetype> lines;
    /// Whether lines short of seven fields were joined into it.
    bool joined = false;

    friend bool operator==(const QFMarkerRecord &, const QFMarkerRecord &) = default;
};

/// Turns the decoded text of a tab-separated marker list into marker records.
///
/// Stateless; may run on any thread. Record 0 of the result is the file's column
/// header. A line with fewer than seven fields is held back and joined to the
/// following lines with a line feed, so a comment may span several lines; but a line
/// that stands alone (six or more fields, the fifth and sixth timecodes) is never joined
/// to what was held back, and with six fields its empty colour column is restored.
class QFFCP7MarkerListParser
{
public:
    QFFCP7MarkerListParser() = delete;

    /// The error domain, code and user-info key of a line that is no record.
    static inline const QString errorDomain = QStringLiteral("com.quillfen");
    static constexpr qint64 errorCode = 1;
    static inline const QString errorKey = QStringLiteral("error");
    /// Reasons under errorKey.
    static inline const QString emptyLine = QStringLiteral("QFEmptyLine");
    static inline const QString incompleteLine = QStringLiteral("QFIncompleteLine");

    /// Every record of the text, in order; empty (never null) when there is none.
    /// Held-back lines that never became a record go to leftOver.
    static QList<QFMarkerRecord> parseMarkersFromText(const QString &text,
                                                      QList<SkippedLine> *leftOver = nullptr);

    /// Where the text's lines end: at line feeds, or at carriage returns when it has more
    /// bare ones (not before a line feed) than line feeds, as files of older Mac programs
    /// do; a CR LF file ends its lines at the line feeds.
    static char16_t lineSeparator(QStringView text);

    /// Whether a trimmed line has a marker's shape on its own: six or more fields, of
    /// which the fifth and sixth look like timecodes.
    static bool standsAlone(QStringView line);

    /// One record from one candidate text, or nothing with error set to the reason
    /// (emptyLine or incompleteLine).
    static std::optional<QStringList> parseLine(const QString &line, QFError *error = nullptr);
};
