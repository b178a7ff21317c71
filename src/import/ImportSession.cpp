#include "import/ImportSession.h"

#include "fcp7link/QFAppleEvents.h"
#include "import/FCP7Import.h"
#include "import/FCPXImport.h"
#include "import/MarkerListText.h"

#include <QFileInfo>
#include <QThread>

#include <algorithm>

ImportSession::ImportSession(const QString &markerListPath, QObject *parent)
    : QObject(parent), m_markerListPath(markerListPath)
{
    // Read while the target is discovered, on the other core: a long list is then ready
    // when the import or the table needs it. Only a plain file: a pipe is read once.
    if (QFileInfo(markerListPath).isFile())
        m_markerListAhead = std::async(std::launch::async, [markerListPath] {
                                return std::make_shared<const MarkerListText::Prepared>(
                                    MarkerListText::prepare(markerListPath));
                            }).share();
}

TargetKind ImportSession::targetKind() const
{
    QMutexLocker lock(&m_mutex);
    return m_kind;
}

ImportSession::~ImportSession()
{
    waitForIdle();
}

bool ImportSession::openFilename(const QString &path)
{
    {
        QMutexLocker lock(&m_mutex);
        if (!TargetDiscovery::openFilename(m_kind, path))
            return false;
        m_targetPath = path;
    }
    discover(path);
    return true;
}

void ImportSession::reloadSequences()
{
    discover(targetPath());
}

QString ImportSession::targetPath() const
{
    QMutexLocker lock(&m_mutex);
    return m_targetPath;
}

bool ImportSession::needsMissingEditor(const QString &path)
{
    return targetFormatForPath(path) == TargetFormat::FCP7Project && !QFAppleEvents::isFCPRunning();
}

void ImportSession::discover(const QString &path)
{
    quint64 run = 0;
    {
        QMutexLocker lock(&m_mutex);
        run = ++m_discoveryRun;
    }
    const TargetKind kind = targetKind();
    emit discoveryStarted(path);
    runOnWorker([this, path, run, kind] {
        TargetDiscovery::Result result = TargetDiscovery::updateProject(kind, path);
        {
            // Two runs may overlap (a reload during a load); the latest one's list counts.
            QMutexLocker lock(&m_mutex);
            if (run != m_discoveryRun)
                return;
            m_found = result.found;
            if (result.sequenceOnly)
                m_kind.isSequenceOnly = true; // only ever set here, as it always was
            if (m_kind.isFCPX)
                m_kind.isEvent = false;
            m_parsed = std::make_shared<ParsedTarget>(std::move(result.parsed));
            m_chosen.reset();
        }
        emit discoveryFinished(result.found);
    });
}

QList<SequenceItem> ImportSession::items() const
{
    QMutexLocker lock(&m_mutex);
    return m_found.items;
}

QString ImportSession::targetProblem() const
{
    QMutexLocker lock(&m_mutex);
    return m_found.problem;
}

ImportOutcome ImportSession::discoveryOutcome() const
{
    QMutexLocker lock(&m_mutex);
    return m_found.outcome;
}

void ImportSession::chooseItem(const std::optional<SequenceItem> &item)
{
    QMutexLocker lock(&m_mutex);
    m_chosen = item;
    if (m_kind.isFCPX)
        m_kind.isEvent = item && item->image == SequenceItem::Image::FCPXEvent;
}

bool ImportSession::chooseItemNamed(const QString &wanted)
{
    const QList<SequenceItem> listed = items();
    if (listed.isEmpty()) {
        chooseItem(SequenceItem{wanted, wanted});
        return true;
    }
    auto found = std::find_if(listed.begin(), listed.end(), [&wanted](const SequenceItem &item) {
        return item.representedObject == wanted;
    });
    if (found == listed.end())
        found = std::find_if(listed.begin(), listed.end(),
                             [&wanted](const SequenceItem &item) { return item.title == wanted; });
    if (found == listed.end())
        return false;
    chooseItem(*found);
    return true;
}

ImportSettings ImportSession::settingsFor(const ImportOptions &options) const
{
    QMutexLocker lock(&m_mutex);
    ImportSettings settings;
    settings.filename = m_targetPath;
    settings.clearExistingMarkers = options.clearExistingMarkers;
    settings.frameOffset = options.frameOffset;
    settings.frameOffsetUnit = options.frameOffsetUnit;
    settings.markerListEncoding = options.markerListEncoding;
    settings.outputPath = options.outputPath;
    settings.leaveDocumentToExit = options.leaveDocumentToExit;
    settings.markerListAhead = m_markerListAhead;
    const std::optional<QString> chosen =
        m_chosen ? std::optional(m_chosen->representedObject) : std::nullopt;
    if (m_kind.isFCPX) {
        settings.sequenceXPath = chosen;
        settings.todoMarkersEnabled = options.todoMarkersEnabled;
        settings.handOffResult = options.handOffResult;
    } else {
        settings.uuid = chosen;
    }
    return settings;
}

bool ImportSession::sendToFCP(const ImportOptions &options)
{
    ImportSettings settings = settingsFor(options);
    // One import of a document at a time: a second would read what the first replaces.
    if (settings.filename.isEmpty() || m_importing.exchange(true))
        return false;
    m_cancelled = false;
    settings.progress = [this, told = qsizetype(-1)](qsizetype done, qsizetype total) mutable {
        const qsizetype step = std::max<qsizetype>(1, total / 100);
        if (done == total || done / step != told) {
            told = done / step;
            emit importProgress(done, total);
        }
        return !m_cancelled.load();
    };
    std::shared_ptr<ParsedTarget> parsed;
    TargetKind kind;
    {
        QMutexLocker lock(&m_mutex);
        parsed = std::move(m_parsed); // the import changes the document
        kind = m_kind;
    }
    emit importStarted();
    runOnWorker([this, settings, parsed, kind] {
        const ImportOutcome outcome =
            kind.isFCPX ? FCPXImport::startProcessingFCPXWithSettings(kind, m_markerListPath,
                                                                      settings, parsed.get())
                        : FCP7Import::startProcessingWithSettings(kind, m_markerListPath, settings,
                                                                  parsed.get());
        {
            QMutexLocker lock(&m_mutex);
            m_lastOutcome = outcome;
        }
        m_importing = false;
        emit importFinished(outcome);
    });
    return true;
}

MarkerPreview ImportSession::preview(const ImportOptions &options) const
{
    return MarkerPreview::make(targetKind(), m_markerListPath, settingsFor(options));
}

void ImportSession::requestPreview(const ImportOptions &options)
{
    {
        QMutexLocker lock(&m_mutex);
        m_pendingPreview = options;
        if (m_previewing)
            return; // the worker takes the latest when it is done
        m_previewing = true;
    }
    runOnWorker([this] {
        for (;;) {
            std::optional<ImportOptions> taken;
            {
                QMutexLocker lock(&m_mutex);
                taken.swap(m_pendingPreview);
                if (!taken) {
                    m_previewing = false;
                    return;
                }
            }
            const MarkerPreview found = preview(*taken);
            bool stale = false; // a newer request came meanwhile
            {
                QMutexLocker lock(&m_mutex);
                stale = m_pendingPreview.has_value();
            }
            if (!stale)
                emit previewFinished(found);
        }
    });
}

ImportOutcome ImportSession::lastOutcome() const
{
    QMutexLocker lock(&m_mutex);
    return m_lastOutcome;
}

void ImportSession::runOnWorker(std::function<void()> work)
{
    QMutexLocker lock(&m_mutex);
    // Threads that have ended are freed as new ones start.
    m_workers.removeIf([](QThread *worker) {
        if (!worker->isFinished())
            return false;
        worker->wait();
        delete worker;
        return true;
    });
    ++m_running;
    QThread *worker = QThread::create([this, work = std::move(work)] {
        work();
        if (--m_running == 0)
            QMetaObject::invokeMethod(this, &ImportSession::idle, Qt::QueuedConnection);
    });
    m_workers.append(worker);
    worker->start();
}

bool ImportSession::isBusy() const
{
    return m_running.load() > 0;
}

void ImportSession::waitForIdle()
{
    for (;;) {
        QList<QThread *> workers;
        {
            QMutexLocker lock(&m_mutex);
            workers.swap(m_workers);
        }
        if (workers.isEmpty())
            return;
        for (QThread *worker : std::as_const(workers)) {
            worker->wait();
            delete worker;
        }
    }
}
