#pragma once

#include "import/ImportReport.h"

#include <QString>

/// How a discovery or an import ended, as the front ends present it: an alert with a
/// message and an informative text, or nothing at all.
struct ImportOutcome
{
    enum class Status
    {
        Imported,          ///< every marker is in the result
        SomeMarkersFailed, ///< the result was written without the markers that fit no clip
        Failed,            ///< nothing was written; the alert says why
        NothingImported ///< nothing written: no sequence chosen (silent), or no line gave a marker
    };
    /// Where the alert is shown: on the document window, or free-standing.
    enum class AlertParent
    {
        DocumentWindow,
        None
    };

    Status status = Status::NothingImported;
    QString messageText;
    QString informativeText;
    AlertParent alertParent = AlertParent::DocumentWindow;
    /// What was written: the XMEML file, or the FCPX file or bundle handed (or ready)
    /// to the editor. Empty when nothing was written or the result went to the editor.
    QString resultPath;
    /// What became of every line of the marker list, once the list was read.
    ImportReport report;

    static ImportOutcome failed(const QString &messageText, const QString &informativeText,
                                AlertParent parent = AlertParent::DocumentWindow)
    {
        return {Status::Failed, messageText, informativeText, parent, QString(), {}};
    }

    /// A run that wrote its result to path: a success when every line with text gave a
    /// marker; otherwise "Some markers failed to import", the report's summary, then the
    /// hint. successText is the informative text of a success, and follows the hint.
    static ImportOutcome written(const ImportReport &report, const QString &path,
                                 const QString &successText, const QString &hint = QString())
    {
        if (report.skipped.isEmpty())
            return {Status::Imported,
                    QStringLiteral("Markers successfully imported"),
                    successText,
                    AlertParent::DocumentWindow,
                    path,
                    report};
        QString text = report.summary();
        if (!hint.isEmpty())
            text += QStringLiteral("\n\n") + hint;
        return {Status::SomeMarkersFailed,
                QStringLiteral("Some markers failed to import"),
                text + QStringLiteral("\n\n") + successText,
                AlertParent::DocumentWindow,
                path,
                report};
    }

    /// A run in which no line gave a marker: nothing was written.
    static ImportOutcome nothingImported(const ImportReport &report)
    {
        return {Status::NothingImported,
                QStringLiteral("Nothing imported"),
                QStringLiteral("No line of the marker list gave a marker, so the target was "
                               "left as it was.\n\n") +
                    report.summary(),
                AlertParent::DocumentWindow,
                QString(),
                report};
    }

    /// An import the user cancelled: nothing was written, and nothing needs saying.
    static ImportOutcome cancelled(const ImportReport &report)
    {
        return {Status::NothingImported,     QString(), QString(),
                AlertParent::DocumentWindow, QString(), report};
    }

    /// What a dry run found: the status the import would end with, and no alert.
    static ImportOutcome previewed(const ImportReport &report)
    {
        const Status status = report.written.isEmpty()   ? Status::NothingImported
                              : report.skipped.isEmpty() ? Status::Imported
                                                         : Status::SomeMarkersFailed;
        return {status, QString(), QString(), AlertParent::DocumentWindow, QString(), report};
    }

    /// Whether the outcome is shown as an alert.
    bool hasAlert() const { return !messageText.isEmpty(); }
    /// Whether a result was written.
    bool wroteResult() const
    {
        return status == Status::Imported || status == Status::SomeMarkersFailed;
    }
};
