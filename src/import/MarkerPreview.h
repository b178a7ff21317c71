#pragma once

#include "import/ImportSettings.h"
#include "import/ImportTarget.h"
#include "import/MarkerList.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

/// What an import would make of every line of a marker list against the chosen item,
/// worked out without changing, writing or sending anything: the rows of the window's
/// marker table and of the command line's dry run.
struct MarkerPreview
{
    struct Row
    {
        enum class State
        {
            Lands,     ///< the marker lands where status says
            Skipped,   ///< the line gives no marker, for the reason status gives
            NotChecked ///< the target cannot tell yet; problem says why
        };
        /// The first line (from 1) of the marker or of the skipped line.
        qsizetype line = 0;
        /// The marker as read; none for a line that gives no marker.
        std::optional<MarkerRecord> marker;
        State state = State::NotChecked;
        QString status;
        /// What the user should know although it lands (an unknown colour).
        QString note;
    };

    QList<Row> rows;
    /// The encoding the list was read in, and the form it was read as.
    QString encoding;
    QString source;
    /// Why the list gives no rows (unreadable, empty, no form read here), or why the
    /// target tells no statuses (none chosen, the editor's own project, unreadable).
    QString problem;

    qsizetype markerCount() const;
    qsizetype skippedCount() const;
    /// "42 markers · 2 lines skipped · Windows-1252", with the form of another editor's
    /// export after it.
    QString summary() const;
    /// One marker or skipped line a line: line, name, comment, start, duration, colour,
    /// kind and the status last, tab-separated.
    QStringList tableLines() const;

    /// Reads the list and runs the import of the settings as a dry run. Logs nothing.
    static MarkerPreview make(const TargetKind &kind, const QString &markerListPath,
                              const ImportSettings &settings);
};
