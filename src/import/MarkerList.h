#pragma once

#include "import/ImportReport.h"

#include <QList>
#include <QString>

#include <optional>

/// One marker of a marker list, by the meaning of its columns.
struct MarkerRecord
{
    /// What an FCPX timeline makes of it; XMEML knows only plain markers.
    enum class Kind
    {
        Standard,
        Chapter, ///< a chapter marker
        ToDo,    ///< a to-do item, not completed
        Done,    ///< a completed to-do item
    };

    QString name;
    QString comment;
    QString start;    ///< timecode
    QString duration; ///< timecode
    QString color;    ///< colour name
    Kind kind = Kind::Standard;
    /// "marker", "chapter", "to do" or "done".
    static QString kindName(Kind kind);
    /// Set for exports that count the duration in frames: then it is not a timecode.
    std::optional<quint64> durationFrames;
    /// Set for sources that count in seconds from the timeline's start (subtitles,
    /// chapter lists, Audition): then start and duration are only shown, not read.
    std::optional<double> startSeconds;
    std::optional<double> durationSeconds;
    /// The lines (from 1) it was read from.
    QList<qsizetype> lines;
    /// The columns of its line in a list of ours (more than seven are ignored).
    qsizetype columns = 7;
};

/// A marker list as the import procedures read it: its markers, and what became of
/// every other line that holds text (the column header, or skipped and why).
struct MarkerList
{
    QList<MarkerRecord> markers;
    QList<qsizetype> headerLines;
    QList<SkippedLine> skipped;
    qsizetype linesWithText = 0;
    /// Whether it reads as some list at all: another editor's export, or text with
    /// tab-separated columns. Nothing of the kind is refused rather than reported line
    /// by line.
    bool recognised = true;

    /// A list of our own format. The first record is the column header and never a
    /// marker; a record joined from several lines needs exactly seven columns, one
    /// from a single line at least seven (or six, when the colour is empty).
    /// The second column, when it reads "Chapter", "To Do" or "Done" (any case), gives
    /// the marker's kind.
    static MarkerList fromText(const QString &text);

    /// The report of an import of this list before any marker is placed.
    ImportReport report() const;
};
