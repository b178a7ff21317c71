#pragma once

#include "import/ImportOutcome.h"
#include "import/ImportSettings.h"
#include "import/ImportTarget.h"
#include "import/MarkerPreview.h"
#include "import/TargetDiscovery.h"

#include <QList>
#include <QMutex>
#include <QObject>
#include <QString>

#include <atomic>
#include <future>
#include <memory>
#include <optional>

class QThread;

/// What the user sets for one import, in the window or on the command line.
struct ImportOptions
{
    bool clearExistingMarkers = false;
    qint64 frameOffset = 0;
    OffsetUnit frameOffsetUnit = OffsetUnit::Frames;
    /// FCPX only: the markers become to-do items.
    bool todoMarkersEnabled = false;
    /// Where the result goes instead of the target itself (XMEML) or the temporary
    /// folder (FCPX).
    std::optional<QString> outputPath;
    /// FCPX only: whether the result is opened in the editor.
    bool handOffResult = true;
    /// The marker list's encoding, when the user names one.
    QByteArray markerListEncoding;
    /// The front end exits after this import: the document is left to the process's end.
    bool leaveDocumentToExit = false;
};

/// The workflow of one marker list document, shared by every front end: adopting a
/// target, discovering what it holds on a worker thread, choosing an item, and running
/// the Final Cut Pro 7 or FCPX import on a worker thread with a typed outcome. The
/// front ends present it: the signals come from the worker threads (queued to a
/// receiver on another thread), and waitForIdle serves callers that block.
class ImportSession : public QObject
{
    Q_OBJECT

public:
    /// The session of the marker list at the path.
    explicit ImportSession(const QString &markerListPath, QObject *parent = nullptr);
    /// Waits for the work under way.
    ~ImportSession() override;

    QString markerListPath() const { return m_markerListPath; }
    /// What the adopted target and the chosen item are.
    TargetKind targetKind() const;

    /// Adopts the target and starts its discovery. False (nothing changes) for a null
    /// path or one where nothing exists.
    bool openFilename(const QString &path);
    /// Discovers the adopted target again.
    void reloadSequences();
    /// The adopted target; empty before any.
    QString targetPath() const;
    /// Whether the target is a project that only a running Final Cut Pro 7 can reach,
    /// and the editor does not run.
    static bool needsMissingEditor(const QString &path);

    /// What the latest discovery listed, once it has ended.
    QList<SequenceItem> items() const;
    /// The alert the latest discovery ended with (Failed), or none.
    ImportOutcome discoveryOutcome() const;
    /// Why the latest discovery found nothing to import into, in words; empty otherwise.
    QString targetProblem() const;

    /// Chooses the item to import into, or none. An FCPX event clip is imported onto
    /// that clip alone (isEvent).
    void chooseItem(const std::optional<SequenceItem> &item);
    /// Chooses the listed item whose represented object, or else whose title, is
    /// wanted. When nothing is listed, an item standing for wanted itself, for the
    /// import to look up. False when the list holds no such item.
    bool chooseItemNamed(const QString &wanted);

    /// The import settings: the target, the options, and the chosen item's represented
    /// object as the uuid (FCP 7) or the XPath (FCPX) when an item is chosen.
    ImportSettings settingsFor(const ImportOptions &options) const;
    /// Starts the import with the options on a worker thread. False (nothing starts)
    /// when no target is adopted or an import of this document runs.
    bool sendToFCP(const ImportOptions &options);
    /// What the import with the options would do against the chosen item, worked out
    /// on the calling thread without changing, writing or logging anything.
    MarkerPreview preview(const ImportOptions &options) const;
    /// The same on a worker thread; previewFinished follows, for the latest request
    /// only when several come while one is worked out.
    void requestPreview(const ImportOptions &options);

    /// Stops the import under way before it writes anything; it ends with no alert.
    void cancelImport() { m_cancelled = true; }

    /// The outcome of the latest import, once it has ended.
    ImportOutcome lastOutcome() const;

    /// Returns when no discovery or import runs.
    void waitForIdle();
    /// Whether a discovery or an import runs.
    bool isBusy() const;
    /// Whether an import runs.
    bool isImporting() const { return m_importing.load(); }

signals:
    void discoveryStarted(const QString &path);
    /// Only for the latest discovery, when two overlap.
    void discoveryFinished(const DiscoveredItems &found);
    void previewFinished(const MarkerPreview &preview);
    void importStarted();
    /// How many markers of how many the import has placed; at most a hundred times
    /// an import.
    void importProgress(qsizetype done, qsizetype total);
    void importFinished(const ImportOutcome &outcome);
    /// The last work under way has ended (delivered on the session's thread).
    void idle();

private:
    void discover(const QString &path);
    void runOnWorker(std::function<void()> work);

    const QString m_markerListPath;
    mutable QMutex m_mutex;
    TargetKind m_kind;
    QString m_targetPath;
    quint64 m_discoveryRun = 0;
    DiscoveredItems m_found;
    std::shared_future<std::shared_ptr<const MarkerListText::Prepared>> m_markerListAhead;
    std::shared_ptr<ParsedTarget> m_parsed;
    std::optional<SequenceItem> m_chosen;
    ImportOutcome m_lastOutcome;
    QList<QThread *> m_workers;
    std::atomic<int> m_running{0}; // work started and not yet ended
    std::atomic<bool> m_importing{false};
    std::atomic<bool> m_cancelled{false};
    std::optional<ImportOptions> m_pendingPreview; // asked for, not yet taken by the worker
    bool m_previewing = false;                     // a worker works out previews
};
