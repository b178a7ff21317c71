#pragma once

#include "import/ImportOutcome.h"

#include <QString>

#include <atomic>

/// What the chosen target is, as adopting it and discovering its sequences decide.
/// Set and read from the worker threads of discovery and import.
struct TargetKind
{
    /// An FCPXML file or bundle.
    std::atomic<bool> isFCPX{false};
    /// A file on disk; false means a project open in Final Cut Pro 7.
    std::atomic<bool> isXMLFile{false};
    /// An XMEML file with a bare sequence and no project.
    std::atomic<bool> isSequenceOnly{false};
    /// The FCPX selection is an event clip rather than a project.
    std::atomic<bool> isEvent{false};
};

/// The kinds of target, told apart by the file extension alone (in any case).
enum class TargetFormat
{
    FCP7Project, ///< any other extension: a project reached through Final Cut Pro 7
    XMEMLFile,   ///< ".xml"
    FCPXFile,    ///< ".fcpxml"
    FCPXBundle   ///< ".fcpxmld"
};
TargetFormat targetFormatForPath(const QString &path);

/// One entry of the sequence menu: a title and what it stands for (a sequence uuid
/// for Final Cut Pro 7, an element's XPath for FCPX).
struct SequenceItem
{
    enum class Image
    {
        None,
        Sequence,
        FCPXEvent
    };

    QString title;
    QString representedObject;
    Image image = Image::None;

    friend bool operator==(const SequenceItem &, const SequenceItem &) = default;
};

/// The front end of one marker list document, as the discovery and import procedures
/// see it: the document window, or the terminal. The procedures run on worker
/// threads; every member may be called from them, and an implementation that owns
/// widgets does the work on the main thread and waits until it is done.
class ImportHost
{
public:
    virtual ~ImportHost() = default;

    virtual TargetKind &targetKind() = 0;
    /// The document's own file: the marker list.
    virtual QString markerListPath() const = 0;

    /// The chosen target's path, shown to the user.
    virtual void setProjectPath(const QString &path) = 0;

    /// The spinner of discovery and the one of an import run.
    virtual void setLoadSpinnerRunning(bool running) = 0;
    virtual void setProcessSpinnerRunning(bool running) = 0;

    /// Empties the sequence menu and disables the import controls.
    virtual void disableUI() = 0;
    /// Enables the import controls; the sequence menu only when asked.
    virtual void enableUI(bool sequencePopUpEnabled) = 0;
    virtual void addItemToSequencePopUp(const SequenceItem &item) = 0;
    virtual void setToDoMarkerCheckEnabled(bool enabled) = 0;

    /// Shows the outcome's alert and returns once the user has answered it. Called
    /// only for outcomes that have one.
    virtual void showAlert(const ImportOutcome &outcome) = 0;

    /// Shows the outcome's alert, when it has one, and gives the outcome back.
    ImportOutcome report(const ImportOutcome &outcome)
    {
        if (outcome.hasAlert())
            showAlert(outcome);
        return outcome;
    }
    /// Ends an import run early: the alert (when there is one), then the process
    /// spinner stops.
    ImportOutcome endImport(const ImportOutcome &outcome = ImportOutcome())
    {
        report(outcome);
        setProcessSpinnerRunning(false);
        return outcome;
    }
};
