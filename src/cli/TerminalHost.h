#pragma once

#include "import/ImportHost.h"

#include <QList>
#include <QMutex>
#include <QString>

/// A marker list document on the terminal: alerts become one line each (the outcome
/// on standard output, failures on standard error), the sequence menu a list, and
/// the spinners progress lines unless quiet. Members may be called from any thread;
/// printing happens on the main thread.
class TerminalHost : public ImportHost
{
public:
    struct Alert
    {
        QString messageText;
        QString informativeText;
    };

    TerminalHost(const QString &markerListPath, bool quiet);

    TargetKind &targetKind() override { return m_kind; }
    QString markerListPath() const override { return m_markerListPath; }
    void setProjectPath(const QString &path) override;
    void setLoadSpinnerRunning(bool running) override;
    void setProcessSpinnerRunning(bool running) override;
    void disableUI() override;
    void enableUI(bool sequencePopUpEnabled) override;
    void addItemToSequencePopUp(const SequenceItem &item) override;
    void setToDoMarkerCheckEnabled(bool) override {}
    void showAlert(const QString &messageText, const QString &informativeText,
                   AlertParent parent) override;

    QList<SequenceItem> items() const;
    /// Whether the last discovery enabled the import button.
    bool importEnabled() const;
    QList<Alert> alerts() const;

    /// The alert as one line: "message: informative text", line breaks made blanks.
    static QString alertLine(const Alert &alert);
    /// The exit status for the alerts shown: 0 success, 1 some markers failed,
    /// 2 any other alert, 3 none (a silent end).
    static int exitStatus(const QList<Alert> &alerts);

    /// Progress for the user, on standard error unless quiet.
    void progress(const QString &text) const;

private:
    TargetKind m_kind;
    const QString m_markerListPath;
    const bool m_quiet;
    QString m_projectPath;
    mutable QMutex m_mutex;
    QList<SequenceItem> m_items;
    bool m_importEnabled = false;
    QList<Alert> m_alerts;
};
