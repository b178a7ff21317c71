#pragma once

#include <QList>
#include <QString>
#include <QStringList>

/// A line of a marker list (numbered from 1) that gives no marker, and why.
struct SkippedLine
{
    qsizetype line = 0;
    QString why;

    friend bool operator==(const SkippedLine &, const SkippedLine &) = default;
};

/// What an import made of every line of the marker list that holds text: the column
/// header, part of a marker that was written (and where), or skipped with a reason.
struct ImportReport
{
    struct Marker
    {
        /// The lines the marker was read from; more than one when a comment spans lines.
        QList<qsizetype> lines;
        /// Where it landed, in words ("sequence “Cut” at frame 250").
        QString where;
        /// Something the user should know although it landed (an unknown colour).
        QString note;
    };

    QList<qsizetype> headerLines;
    QList<Marker> written;
    QList<SkippedLine> skipped;
    /// The lines of the list that hold text: each is header, written or skipped.
    qsizetype linesWithText = 0;

    /// Skips every line of a record.
    void skip(const QList<qsizetype> &lines, const QString &why);

    /// Whether every line with text is accounted for exactly once.
    bool accountsForEveryLine() const;

    /// "Line 5: …" for each skipped line and each note, in line order.
    QStringList lineTexts() const;

    /// The informative text of an import that skipped lines: the counts and the first few
    /// lines with their reasons.
    QString summary() const;
};
