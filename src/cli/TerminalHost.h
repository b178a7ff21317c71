#pragma once

#include "import/ImportHost.h"

#include <QMutex>
#include <QString>

/// A marker list document on the terminal: alerts become one line each through the
/// terminal's alert presenter (a written result on standard output, failures on
/// standard error), and the spinners progress lines unless quiet. Members may be called from any
/// thread; each line is printed whole.
class TerminalHost : public ImportHost
{
public:
    TerminalHost(const QString &markerListPath, bool quiet);

    TargetKind &targetKind() override { return m_kind; }
    QString markerListPath() const override { return m_markerListPath; }
    void setProjectPath(const QString &path) override;
    void setLoadSpinnerRunning(bool running) override;
    void setProcessSpinnerRunning(bool running) override;
    void disableUI() override {}
    void enableUI(bool) override {}
    void addItemToSequencePopUp(const SequenceItem &) override {}
    void setToDoMarkerCheckEnabled(bool) override {}
    /// Each line of the list that gave no marker, or landed with a note, on standard
    /// error even when quiet: a marker the user expects is missing.
    void printReport(const ImportReport &report) const;
    void showAlert(const ImportOutcome &outcome) override;

    /// The exit status of an outcome: 0 imported, 1 some markers failed, 2 failed,
    /// 3 nothing imported.
    static int exitStatus(const ImportOutcome &outcome);

    /// Progress for the user, on standard error unless quiet.
    void progress(const QString &text) const;

private:
    TargetKind m_kind;
    const QString m_markerListPath;
    const bool m_quiet;
    mutable QMutex m_mutex;
    QString m_projectPath;
};
