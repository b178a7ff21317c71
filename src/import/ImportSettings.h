#pragma once

#include <QString>

#include <QVariantMap>

#include <functional>
#include <future>
#include <memory>
#include <optional>

namespace MarkerListText {
struct Prepared;
}

/// The unit of the frame offset, in the order of the window's menu.
enum class OffsetUnit
{
    Frames,
    Seconds,
    Minutes,
    Hours
};
/// The unit of a menu or dictionary index: any other index counts as frames.
OffsetUnit offsetUnitForIndex(qint64 index);

/// The options of one import, as the document window collects them. The keys of the
/// dictionary form are the ones the import procedures have always read.
struct ImportSettings
{
    /// The target: a Final Cut Pro 7 project, an XMEML ".xml", an ".fcpxml" or an
    /// ".fcpxmld"; not the marker list.
    QString filename;
    bool clearExistingMarkers = false;
    qint64 frameOffset = 0;
    /// Kept under "frameOffsetUnitIndex" as its index.
    OffsetUnit frameOffsetUnit = OffsetUnit::Frames;
    /// Final Cut Pro X: the XPath of the chosen `sequence` or `clip` element.
    std::optional<QString> sequenceXPath;
    /// Final Cut Pro X only.
    std::optional<bool> todoMarkersEnabled;
    /// Final Cut Pro 7: the chosen sequence's uuid.
    std::optional<QString> uuid;

    /// Where the result is written instead of in place (XMEML) or in the temporary
    /// folder (FCPX): the command line's --output. Not part of the dictionary.
    std::optional<QString> outputPath;
    /// Whether a run about to exit leaves the changed document to the end of the
    /// process instead of freeing it. Not part of the dictionary.
    bool leaveDocumentToExit = false;
    /// The marker list as read ahead of the import, which waits for it and takes it
    /// while the file is unchanged; none: the import reads the list. Not part of the
    /// dictionary.
    std::shared_future<std::shared_ptr<const MarkerListText::Prepared>> markerListAhead;
    /// What was read ahead, once it is there; null when nothing was.
    const MarkerListText::Prepared *markerListReadAhead() const
    {
        return markerListAhead.valid() ? markerListAhead.get().get() : nullptr;
    }
    /// The marker list's encoding as the user named it; empty: detected. Not part of the
    /// dictionary.
    QByteArray markerListEncoding;
    /// Whether an FCPX result is handed to the editor. Not part of the dictionary: the
    /// window always hands it over, the command line only when asked.
    bool handOffResult = true;
    /// Work out where every marker would land and stop before anything is changed,
    /// written or sent. Not part of the dictionary.
    bool dryRun = false;
    /// Told how many of the markers have been placed, and of how many; false from it
    /// cancels the import before anything is written. Not part of the dictionary.
    std::function<bool(qsizetype done, qsizetype total)> progress;

    /// Tells progress how far the import is; true (and logged) when the user cancelled.
    bool cancelled(qsizetype done, qsizetype total) const;

    QVariantMap toVariantMap() const;
    static ImportSettings fromVariantMap(const QVariantMap &map);

    /// The offset in frames: × timebase for seconds, × 60 more for minutes, × 3600
    /// for hours. A timebase of 0 makes any such offset 0.
    qint64 offsetInFrames(qint64 timebase) const;
};
