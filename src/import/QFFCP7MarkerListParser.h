#pragma once

#include "support/QFError.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

/// One marker of a marker list: at least seven trimmed fields; columns 2 to 6 are
/// name, comment, start timecode, duration timecode and colour name.
using QFMarkerRecord = QStringList;

/// Turns the decoded text of a tab-separated marker list into marker records.
///
/// Stateless; may run on any thread. Record 0 of the result is the file's column
/// header. A line with fewer than seven fields is held back and joined to the
/// following lines with a line feed, so a comment may span several lines.
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
    static QList<QFMarkerRecord> parseMarkersFromText(const QString &text);

    /// One record from one candidate text, or nothing with error set to the reason
    /// (emptyLine or incompleteLine).
    static std::optional<QFMarkerRecord> parseLine(const QString &line, QFError *error = nullptr);
};
