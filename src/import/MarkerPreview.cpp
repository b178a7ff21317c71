#include "import/MarkerPreview.h"

#include "import/FCP7Import.h"
#include "import/FCPXImport.h"
#include "import/MarkerListText.h"
#include "import/TextEncoding.h"
#include "support/QFLog.h"

#include <QHash>

#include <algorithm>

namespace {

/// Why the target tells no statuses yet; null when the dry run can ask it.
QString targetProblem(const TargetKind &kind, const ImportSettings &settings)
{
    if (settings.filename.isEmpty())
        return QStringLiteral("Choose a target to see where each marker lands.");
    if (!kind.isXMLFile)
        return QStringLiteral("Final Cut Pro 7 places the markers when they are imported.");
    if (!settings.uuid && !settings.sequenceXPath)
        return QStringLiteral("The target lists no sequence to import into.");
    return QString();
}

} // namespace

qsizetype MarkerPreview::markerCount() const
{
    return std::count_if(rows.begin(), rows.end(), [](const Row &row) { return row.marker; });
}

qsizetype MarkerPreview::skippedCount() const
{
    return std::count_if(rows.begin(), rows.end(),
                         [](const Row &row) { return row.state == Row::State::Skipped; });
}

QString MarkerPreview::summary() const
{
    const auto count = [](qsizetype n, const char *one, const char *many) {
        return QStringLiteral("%1 %2").arg(n).arg(QLatin1StringView(n == 1 ? one : many));
    };
    QStringList parts{count(markerCount(), "marker", "markers")};
    if (const qsizetype skipped = skippedCount())
        parts << count(skipped, "line skipped", "lines skipped");
    if (!encoding.isEmpty())
        parts << encoding;
    if (!source.isEmpty())
        parts << source;
    return parts.join(QStringLiteral(" · "));
}

QStringList MarkerPreview::tableLines() const
{
    QStringList lines;
    for (const Row &row : rows) {
        QStringList fields{QString::number(row.line)};
        if (row.marker)
            fields << row.marker->name << row.marker->comment << row.marker->start
                   << row.marker->duration << row.marker->color
                   << MarkerRecord::kindName(row.marker->kind);
        else
            fields << QStringList(6, QString());
        QString status = row.state == Row::State::Lands ? row.status
                         : row.state == Row::State::Skipped
                             ? QStringLiteral("skipped: ") + row.status
                             : problem;
        if (!row.note.isEmpty())
            status += QStringLiteral(" (") + row.note + u')';
        // A tab or line break inside a field would break the table's own columns.
        for (QString &field : fields)
            field.replace(u'\t', u' ').replace(u'\n', u' ').replace(u'\r', u' ');
        lines << (fields << status).join(u'\t');
    }
    return lines;
}

MarkerPreview MarkerPreview::make(const TargetKind &kind, const QString &markerListPath,
                                  const ImportSettings &settings)
{
    const QFLog::Silence silence;
    MarkerPreview preview;
    QString readProblem;
    const auto failed = [&readProblem](const QFError &error) {
        if (readProblem.isEmpty())
            readProblem = error.localizedDescription();
    };
    const MarkerListText::ImportText read =
        MarkerListText::readForImport(markerListPath, failed, nullptr, settings.markerListEncoding,
                                      settings.markerListReadAhead());
    preview.encoding = TextEncoding::displayName(read.encoding.toLatin1());
    preview.source = read.source;
    for (const MarkerRecord &record : read.list.markers)
        preview.rows.append({record.lines.value(0), record, Row::State::NotChecked, {}, {}});
    for (const SkippedLine &line : read.list.skipped)
        preview.rows.append({line.line, std::nullopt, Row::State::Skipped, line.why, {}});
    std::sort(preview.rows.begin(), preview.rows.end(),
              [](const Row &a, const Row &b) { return a.line < b.line; });
    if (read.lineCount < 2 || !read.list.recognised) {
        preview.problem = MarkerListText::unreadable(read.list.recognised).informativeText;
        if (!readProblem.isEmpty())
            preview.problem += QStringLiteral(" (%1)").arg(readProblem);
        return preview;
    }
    if (read.list.markers.isEmpty() && read.list.skipped.isEmpty()) {
        preview.problem = QStringLiteral("The list holds no marker.");
        return preview;
    }

    preview.problem = targetProblem(kind, settings);
    if (!preview.problem.isNull())
        return preview;
    ImportSettings dryRun = settings;
    dryRun.dryRun = true;
    const ImportOutcome outcome =
        kind.isFCPX ? FCPXImport::startProcessingFCPXWithSettings(kind, markerListPath, dryRun)
                    : FCP7Import::startProcessingWithSettings(kind, markerListPath, dryRun);
    if (outcome.status == ImportOutcome::Status::Failed) {
        preview.problem = outcome.messageText + QStringLiteral(": ") + outcome.informativeText;
        return preview;
    }
    QHash<qsizetype, Row *> byLine;
    for (Row &row : preview.rows)
        byLine.insert(row.line, &row);
    for (const ImportReport::Marker &marker : outcome.report.written)
        if (Row *row = byLine.value(marker.lines.value(0)))
            *row = {row->line, row->marker, Row::State::Lands, marker.where, marker.note};
    for (const SkippedLine &line : outcome.report.skipped)
        if (Row *row = byLine.value(line.line); row && row->state != Row::State::Skipped)
            *row = {row->line, row->marker, Row::State::Skipped, line.why, {}};
    return preview;
}
