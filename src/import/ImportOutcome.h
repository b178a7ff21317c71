#pragma once

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
        NothingImported    ///< a silent end: no sequence chosen, or no marker in the list
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

    static ImportOutcome failed(const QString &messageText, const QString &informativeText,
                                AlertParent parent = AlertParent::DocumentWindow)
    {
        return {Status::Failed, messageText, informativeText, parent, QString()};
    }

    /// Whether the outcome is shown as an alert.
    bool hasAlert() const { return status != Status::NothingImported; }
    /// Whether a result was written.
    bool wroteResult() const
    {
        return status == Status::Imported || status == Status::SomeMarkersFailed;
    }
};
