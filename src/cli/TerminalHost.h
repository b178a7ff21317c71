#pragma once

#include "import/ImportOutcome.h"

#include <QString>

class ImportSession;

/// A marker list document on the terminal: what the session tells becomes lines
/// (progress unless quiet), alerts one line each through the terminal's alert
/// presenter (a written result on standard output, failures on standard error).
class TerminalHost
{
public:
    TerminalHost(const QString &markerListPath, bool quiet);

    /// Progress lines for the session's discoveries and imports.
    void follow(ImportSession &session) const;

    void showAlert(const ImportOutcome &outcome) const;
    /// Each line of the list that gave no marker, or landed with a note, on standard
    /// error even when quiet: a marker the user expects is missing.
    void printReport(const ImportReport &report) const;

    /// The exit status of an outcome: 0 imported, 1 some markers failed, 2 failed,
    /// 3 nothing imported.
    static int exitStatus(const ImportOutcome &outcome);

    /// Progress for the user, on standard error unless quiet.
    void progress(const QString &text) const;

private:
    const QString m_markerListPath;
    const bool m_quiet;
};
