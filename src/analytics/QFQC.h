#pragma once

#include <QDateTime>
#include <QMutex>
#include <QObject>
#include <QString>
#include <QUrl>
#include <QVariantList>
#include <QVariantMap>

#include <atomic>
#include <functional>
#include <memory>

class QFUserDefaults;
class QNetworkAccessManager;
class QThread;

/// Anonymous usage analytics: a launch event, and the operating system's version when
/// it changes, kept in a small store per application and posted to the maker's server
/// at most about once a day. Nothing is kept or sent until the user agreed; the
/// answer is shared by all the maker's applications through one consent file.
///
/// Store writes and uploads run one at a time on a queue of their own, never on the
/// main thread (but for the last write at shutdown). Recording runs on the caller's.
class QFQC : public QObject
{
    Q_OBJECT

public:
    /// The application's controller, made once with the application's preferences; one
    /// launch counted.
    static QFQC &sharedController();
    /// A controller over the given preferences; making one counts a launch. Tests make
    /// one per launch they play.
    QFQC(QFUserDefaults &defaults, const QString &bundleID, const QString &version);
    ~QFQC() override;

    /// The consent: kept from an earlier answer, else asked for from the third launch
    /// on, a few seconds after start, on the main thread.
    void loadQC(QObject *window);
    /// Records the launch and system events and uploads when it is time.
    void setupInitialLogging();
    void logQCEvent(const QVariantMap &event);
    void logLoadEvent();
    void logSystemSpecsEvent();
    /// Queues a store write (when logging is on).
    void writeCache();
    /// Writes the store now, on the calling thread (when logging is on).
    void writeCacheOnThread();

    /// Stores the answer in the consent file and follows it from now on.
    void setQCLogging(bool on);
    void enableQCLogging() { setQCLogging(true); }
    void disableQCLogging() { setQCLogging(false); }
    /// setQCLogging with the state of a check box (on exactly when checked).
    void toggleQCLogging(bool checked) { setQCLogging(checked); }
    /// Whether events are kept and sent. Setting it directly holds for this run only.
    bool shouldLog() const { return m_shouldLog.load(); }
    void setShouldLog(bool on) { m_shouldLog = on; }

    /// Queues the upload: the events are sent, with a new identifier when the old one is
    /// 90 days old, then dropped whatever becomes of the request.
    void uploadData();
    /// The multipart body: a part per field in the dictionary's order; a file address
    /// sends the file. No closing boundary follows the last part.
    static QByteArray generateFormData(const QVariantMap &fields, const QString &boundary);
    /// Characters of the identifier alphabet from the system's secure random source.
    static QString generateRandomString(int length);

    /// Shutdown: what is still queued is dropped and the store written on this thread.
    void willTerminate();
    /// Returns once every operation queued so far has run (never from the queue).
    void waitUntilAllOperationsAreFinished();

    QString bundleID() const { return m_bundleID; }
    /// Where the answer and the identifier are kept, shared by the maker's applications.
    static QString consentFilePath();
    /// The store of this application's events; null without a bundle identifier.
    QString storeFilePath() const;
    /// The address events go to: the environment's QUILLFEN_QC_ENDPOINT, else the
    /// preference "QCEndpoint", else the maker's server.
    QUrl endpoint() const;
    /// The page that explains what is collected ("More Info").
    static QUrl moreInfoPage();

    static constexpr int consentDelayMs = 5000;
    void setConsentDelayForTesting(int milliseconds) { m_consentDelayMs = milliseconds; }

private:
    /// The upload itself, on the queue.
    void upload();
    /// Starts a multipart POST of the fields to the address; the answer is not read.
    /// On the queue's thread, whose event loop carries the request.
    void postDictionary(const QVariantMap &fields, const QUrl &url);
    void askForConsent(QObject *window);
    /// Runs the operation on the queue's thread after those queued before it, unless
    /// the queue is cancelled first.
    void enqueue(std::function<void()> operation);
    /// Drops what is queued and ends the queue's thread once its operation is done.
    void stopQueue();

    QFUserDefaults &m_defaults;
    const QString m_bundleID;
    const QString m_version;
    int m_consentDelayMs = consentDelayMs;

    /// Guards the events and the time of the last store write.
    mutable QMutex m_lock;
    QVariantList m_cache;
    QDateTime m_lastCacheWrite;
    std::atomic<bool> m_shouldLog{false};

    QMutex m_queueLock;
    std::unique_ptr<QThread> m_queueThread;
    QObject *m_queueContext = nullptr; // lives on the queue's thread
    QNetworkAccessManager *m_network = nullptr;
    std::atomic<quint64> m_generation{0};
    bool m_stopped = false;
};
