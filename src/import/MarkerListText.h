#pragma once

#include "import/ImportOutcome.h"
#include "import/MarkerExports.h"
#include "support/QFError.h"
#include "support/QFFileContents.h"

#include <QString>
#include <QStringList>

#include <functional>
#include <optional>

/// Decoding the bytes of a marker list file into text.
namespace MarkerListText {

/// The largest marker list read: some 200,000 markers. Anything larger is another
/// kind of file, and importing it would take gigabytes.
constexpr qint64 maximumFileSize = 16 * 1024 * 1024;

/// How many lines the text has, split where the parser splits them; 0 for a null text.
qsizetype lineCount(const QString &text);

/// A marker list as the import procedures read it.
struct ImportText
{
    QString text;
    /// Lines of the text (lineCount); fewer than two means nothing to import.
    qsizetype lineCount = 0;
    /// Its markers, and what became of its other lines.
    MarkerList list;
    /// The encoding it was read in, and the form of another editor's export it was read
    /// as (empty for a list of ours).
    QString encoding;
    QString source;
};

/// A marker list read and decoded ahead of its import, on another thread, say: its
/// text and markers, and what the import then logs and reports, in order.
struct Prepared
{
    QString path;
    QByteArray encodingAskedFor;
    /// Of the bytes read; none when the file could not be read.
    std::optional<QFFileContents::Fingerprint> fingerprint;
    ImportText read;
    struct Step
    {
        enum Kind
        {
            Log,
            ReadFailed,
            OtherFailed
        } kind;
        QString entry; ///< a log entry
        QFError error; ///< a failure
    };
    QList<Step> steps;
};

/// Reads the marker list file once and decodes it as the import procedures always have: in the
/// detected encoding (UTF-16 little-endian when unsure), then as UTF-8 when that gives fewer than
/// two lines. The text is read as our format or as the export of another editor it is
/// recognised as. Logs and reports nothing: that is left to readForImport.
/// An encoding asked for replaces the detection.
Prepared prepare(const QString &path, const QByteArray &encodingAskedFor = QByteArray());

/// What prepare reads, logged and reported: each text read is logged ("Marker text: ",
/// "UTF-8 Marker text: "); a failure of the first read goes to readFailed before its text
/// is logged, a failed detection or UTF-8 read to otherFailed; each line that gives no
/// marker is logged. A read made ahead (may be null) is taken while it was of this path
/// and encoding and the file still holds the same bytes.
using ReadFailure = std::function<void(const QFError &)>;
ImportText readForImport(const QString &path, const ReadFailure &readFailed,
                         const ReadFailure &otherFailed,
                         const QByteArray &encodingAskedFor = QByteArray(),
                         const Prepared *ahead = nullptr);

/// Logs and gives what the import procedures say of a list of fewer than two lines, or
/// of a text that is no list of any form read here (recognised false).
ImportOutcome unreadable(bool recognised = true);

/// How an import of a list that holds no marker ends before it writes anything: silently
/// for a header alone, refused for a text of no form read here; nothing when there is
/// a marker, or lines whose reasons the report gives.
std::optional<ImportOutcome> endWithoutMarkers(const ImportText &read);

} // namespace MarkerListText
