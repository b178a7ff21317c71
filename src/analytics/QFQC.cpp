#include "analytics/QFQC.h"

#include "support/QFAlert.h"
#include "support/QFLocalPaths.h"
#include "support/QFLog.h"
#include "support/QFOSDetect.h"
#include "support/QFPropertyList.h"
#include "support/QFUserDefaults.h"
#include "support/QFWorkspace.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QPointer>
#include <QRandomGenerator>
#include <QThread>
#include <QTimer>

#include <algorithm>
#include <optional>

namespace {

const QString launchCountKey = QStringLiteral("launchCount");
const QString lastSubmissionKey = QStringLiteral("lastSubmission");
const QString lastOSVersionKey = QStringLiteral("lastOSVersion");
const QString logQCKey = QStringLiteral("logQC");

constexpr qint64 secondsPerDay = 86400;
/// An installation identifier is replaced after 90 days.
constexpr qint64 identifierLifetime = 90 * secondsPerDay;
/// A launch this close to a recorded one is the same launch.
constexpr quint64 relaunchSeconds = 59;

/// "com.quillfen.Cuebridge" from the organisation's domain and the application's name.
QString applicationBundleID()
{
    const QString domain = QCoreApplication::organizationDomain();
    const QString name = QCoreApplication::applicationName();
    if (domain.isEmpty() || name.isEmpty())
        return QString();
    QStringList parts = domain.split(u'.');
    std::reverse(parts.begin(), parts.end());
    return parts.join(u'.') + u'.' + name;
}

QString storeFolder()
{
    return QFLocalPaths::cacheDirectory(true) + QStringLiteral("/Quillfen/QC");
}

/// Replaces one key of the consent file, keeping the others.
void storeConsentValue(const QString &key, const QVariant &value)
{
    QVariantMap consent = QFPropertyList::readDictionary(QFQC::consentFilePath());
    consent.insert(key, value);
    QDir().mkpath(QFileInfo(QFQC::consentFilePath()).path());
    QFPropertyList::writeDictionary(consent, QFQC::consentFilePath());
}

} // namespace

QFQC &QFQC::sharedController()
{
    // Never freed: the shutdown write runs while the application ends.
    static QFQC *const controller =
        new QFQC(QFUserDefaults::standardUserDefaults(), applicationBundleID(),
                 QCoreApplication::applicationVersion());
    return *controller;
}

QFQC::QFQC(QFUserDefaults &defaults, const QString &bundleID, const QString &version)
    : m_defaults(defaults), m_bundleID(bundleID), m_version(version)
{
    if (!m_bundleID.isEmpty()) {
        const QVariant stored = QFPropertyList::readFile(storeFilePath());
        if (stored.typeId() == QMetaType::QVariantList)
            m_cache = stored.toList();
    }
    if (const QCoreApplication *application = QCoreApplication::instance())
        connect(application, &QCoreApplication::aboutToQuit, this, &QFQC::willTerminate);
    if (QFPropertyList::readDictionary(consentFilePath()).value(logQCKey).toLongLong() == 1)
        m_shouldLog = true;
    m_defaults.setObject(m_defaults.integerForKey(launchCountKey) + 1, launchCountKey);
}

QFQC::~QFQC()
{
    stopQueue();
}

QString QFQC::consentFilePath()
{
    return QFLocalPaths::prefsDirectory(true) + QStringLiteral("/com.quillfen.qc.plist");
}

QString QFQC::storeFilePath() const
{
    return m_bundleID.isEmpty() ? QString() : storeFolder() + u'/' + m_bundleID;
}

QUrl QFQC::endpoint() const
{
    const QString fromEnvironment = qEnvironmentVariable("QUILLFEN_QC_ENDPOINT");
    if (!fromEnvironment.isEmpty())
        return QUrl(fromEnvironment);
    const QString fromPreference = m_defaults.stringForKey(QStringLiteral("QCEndpoint"));
    if (!fromPreference.isEmpty())
        return QUrl(fromPreference);
    return QUrl(QStringLiteral("https://www.quillfen.com/appdata/qc/qc.php"));
}

QUrl QFQC::moreInfoPage()
{
    return QUrl(QStringLiteral("https://support.quillfen.com/analytics/"));
}

// ---- consent ---------------------------------------------------------------------------

void QFQC::loadQC(QObject *window)
{
    const QVariantMap consent = QFPropertyList::readDictionary(consentFilePath());
    if (consent.contains(logQCKey)) {
        m_shouldLog = consent.value(logQCKey).toBool();
        return;
    }
    if (m_defaults.integerForKey(launchCountKey) < 3)
        return;
    QTimer::singleShot(m_consentDelayMs, this,
                       [this, parent = QPointer<QObject>(window)] { askForConsent(parent); });
}

void QFQC::askForConsent(QObject *window)
{
    // Only a click answers: a question closed another way comes back at the next launch.
    const qint64 answer = QFAlert::questionWithMessageText(
        QStringLiteral("Help improve Quillfen software by submitting analytics and usage data"),
        QStringLiteral("Allow"), QStringLiteral("More Info"), QStringLiteral("Don't Allow"),
        QStringLiteral("This information helps us find problems and improve our software. It is "
                       "anonymous and cannot be used to identify you."),
        window);
    if (answer == QFAlert::defaultReturn) {
        setQCLogging(true);
        setupInitialLogging();
    } else if (answer == QFAlert::otherReturn) {
        setQCLogging(false);
    } else if (answer == QFAlert::alternateReturn) {
        // Nothing is kept: the question comes back at the next launch.
        QFWorkspace::shared().openFile(moreInfoPage().toString(), QString(),
                                       QFWorkspace::Asynchronous);
    }
}

void QFQC::setQCLogging(bool on)
{
    m_shouldLog = on;
    storeConsentValue(logQCKey, on);
}

// ---- events ----------------------------------------------------------------------------

void QFQC::setupInitialLogging()
{
    if (!m_shouldLog)
        return;
    logLoadEvent();
    logSystemSpecsEvent();
    {
        QMutexLocker lock(&m_lock);
        if (m_cache.isEmpty())
            return;
    }
    const QDateTime lastSubmission = m_defaults.objectForKey(lastSubmissionKey).toDateTime();
    const bool due = lastSubmission.isValid()
                         ? lastSubmission.secsTo(QDateTime::currentDateTimeUtc()) > secondsPerDay
                         : m_defaults.integerForKey(launchCountKey) >= 4;
    if (due)
        uploadData();
}

void QFQC::logLoadEvent()
{
    const qint64 now = QDateTime::currentSecsSinceEpoch();
    {
        QMutexLocker lock(&m_lock);
        for (const QVariant &record : std::as_const(m_cache)) {
            const QVariantMap event = record.toMap();
            // Unsigned, so that a launch dated in the future does not count.
            if (event.value(QStringLiteral("event")).toString() == u"launch" &&
                quint64(now - event.value(QStringLiteral("date")).toLongLong()) <= relaunchSeconds)
                return;
        }
    }
    logQCEvent(
        {{QStringLiteral("event"), QStringLiteral("launch")}, {QStringLiteral("date"), now}});
}

void QFQC::logSystemSpecsEvent()
{
    const QString version = QFOSDetect::osxVersion();
    if (version.isEmpty() || version == m_defaults.stringForKey(lastOSVersionKey))
        return;
    m_defaults.setObject(version, lastOSVersionKey);
    logQCEvent({{QStringLiteral("event"), QStringLiteral("specs")},
                {QStringLiteral("date"), QDateTime::currentSecsSinceEpoch()},
                {QStringLiteral("data"), version}});
}

void QFQC::logQCEvent(const QVariantMap &event)
{
    if (event.isEmpty())
        return;
    bool writeNow = false;
    {
        QMutexLocker lock(&m_lock);
        m_cache.append(event);
        // Bursts are written at most once a second; the rest waits for the next write.
        writeNow = !m_lastCacheWrite.isValid() ||
                   m_lastCacheWrite.msecsTo(QDateTime::currentDateTimeUtc()) > 1000;
    }
    if (writeNow)
        writeCache();
}

void QFQC::writeCache()
{
    if (m_shouldLog)
        enqueue([this] { writeCacheOnThread(); });
}

void QFQC::writeCacheOnThread()
{
    if (!m_shouldLog)
        return;
    QDir().mkpath(storeFolder());
    if (m_bundleID.isEmpty()) {
        QFLog::appendLog(u"Error: unable to save QC data. Bundle ID not found.");
        return;
    }
    QMutexLocker lock(&m_lock);
    QFPropertyList::writeFile(m_cache, storeFilePath());
    m_lastCacheWrite = QDateTime::currentDateTimeUtc();
}

// ---- upload ----------------------------------------------------------------------------

void QFQC::uploadData()
{
    enqueue([this] { upload(); });
}

void QFQC::upload()
{
    QMutexLocker lock(&m_lock);
    if (!m_shouldLog || m_cache.isEmpty())
        return;

    const QDateTime now = QDateTime::currentDateTimeUtc();
    // An unreadable consent file gets a fresh identifier for this upload only.
    const QVariant read = QFPropertyList::readFile(consentFilePath());
    std::optional<QVariantMap> consent;
    if (read.typeId() == QMetaType::QVariantMap)
        consent = read.toMap();
    QString uid = consent ? consent->value(QStringLiteral("uid")).toString() : QString();
    const QDateTime assigned =
        consent ? consent->value(QStringLiteral("uidAssigned")).toDateTime() : QDateTime();
    if (uid.isEmpty() || (assigned.isValid() && assigned.secsTo(now) > identifierLifetime)) {
        uid = generateRandomString(12);
        if (consent) {
            consent->insert(QStringLiteral("uid"), uid);
            consent->insert(QStringLiteral("uidAssigned"), now);
            QFPropertyList::writeDictionary(*consent, consentFilePath());
        }
    }

    const QByteArray events =
        QJsonDocument(QJsonArray::fromVariantList(m_cache)).toJson(QJsonDocument::Compact);
    const QString unknown = QStringLiteral("Unknown");
    postDictionary({{QStringLiteral("uid"), uid},
                    {QStringLiteral("app"), m_bundleID.isEmpty() ? unknown : m_bundleID},
                    {QStringLiteral("version"), m_version.isEmpty() ? unknown : m_version},
                    {QStringLiteral("events"), QString::fromUtf8(events)}},
                   endpoint());

    // Dropped whatever becomes of the request: a failed upload is not sent again.
    m_cache.clear();
    if (!m_bundleID.isEmpty())
        QFile::remove(storeFilePath());
    m_defaults.setObject(now, lastSubmissionKey);
}

void QFQC::postDictionary(const QVariantMap &fields, const QUrl &url)
{
    Q_ASSERT(QThread::currentThread() == m_queueContext->thread());
    if (!url.isValid() || !(url.scheme() == u"https" || url.scheme() == u"http")) {
        QFLog::appendLogAndPrint(u"Failed to establish a connection. Please try again later.");
        return;
    }
    if (!m_network)
        m_network = new QNetworkAccessManager(m_queueContext);
    const QString boundary = QFLocalPaths::uuid();
    QNetworkRequest request(url);
    request.setHeader(QNetworkRequest::ContentTypeHeader,
                      QStringLiteral("multipart/form-data; boundary=%1").arg(boundary));
    request.setTransferTimeout(60000);
    QNetworkReply *reply = m_network->post(request, generateFormData(fields, boundary));
    QFLog::appendLog(u"Sending QC log to Quillfen...");
    // The answer is not read: any reply counts as done.
    connect(reply, &QNetworkReply::finished, reply, [reply] {
        if (reply->error() != QNetworkReply::NoError)
            QFLog::appendLogAndPrint(u"Connection failed - %@", reply->errorString());
        reply->deleteLater();
    });
}

QByteArray QFQC::generateFormData(const QVariantMap &fields, const QString &boundary)
{
    QByteArray body;
    body.reserve(100);
    for (auto field = fields.cbegin(); field != fields.cend(); ++field) {
        const QByteArray name = field.key().toUtf8();
        body += "--" + boundary.toUtf8() + "\r\n";
        if (field.value().typeId() == QMetaType::QUrl) {
            // A file is sent as a file; any other address adds nothing.
            const QUrl url = field.value().toUrl();
            if (url.isLocalFile()) {
                QFile file(url.toLocalFile());
                body += "Content-Disposition: form-data; name=\"" + name + "\"; filename=\"" +
                        QFileInfo(file).fileName().toUtf8() + "\"\r\n" +
                        "Content-Type: application/octet-stream\r\n\r\n";
                if (file.open(QIODevice::ReadOnly))
                    body += file.readAll();
            }
        } else {
            body += "Content-Disposition: form-data; name=\"" + name + "\"\r\n\r\n" +
                    field.value().toString().toUtf8();
        }
        body += "\r\n";
    }
    return body;
}

QString QFQC::generateRandomString(int length)
{
    // The upper-case run ends "XZY": kept, identifiers made before use the same alphabet.
    static const QString alphabet =
        QStringLiteral("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXZY0123456789");
    QString text;
    text.reserve(length);
    for (int i = 0; i < length; ++i)
        text += alphabet.at(QRandomGenerator::system()->generate() % alphabet.size());
    return text;
}

// ---- the queue and shutdown ------------------------------------------------------------

void QFQC::enqueue(std::function<void()> operation)
{
    QMutexLocker lock(&m_queueLock);
    if (m_stopped)
        return;
    if (!m_queueThread) {
        // Made on first use: without consent nothing is ever queued.
        m_queueThread = std::make_unique<QThread>();
        m_queueThread->setObjectName(QStringLiteral("QC queue"));
        m_queueContext = new QObject;
        m_queueContext->moveToThread(m_queueThread.get());
        connect(m_queueThread.get(), &QThread::finished, m_queueContext, &QObject::deleteLater);
        m_queueThread->start();
    }
    QMetaObject::invokeMethod(
        m_queueContext,
        [this, generation = m_generation.load(), operation = std::move(operation)] {
            if (generation == m_generation.load())
                operation();
        },
        Qt::QueuedConnection);
}

void QFQC::waitUntilAllOperationsAreFinished()
{
    QMutexLocker lock(&m_queueLock);
    if (m_queueThread && !m_stopped)
        QMetaObject::invokeMethod(
            m_queueContext, [] {}, Qt::BlockingQueuedConnection);
}

void QFQC::stopQueue()
{
    {
        QMutexLocker lock(&m_queueLock);
        if (m_stopped)
            return;
        m_stopped = true;
        ++m_generation; // what is queued and has not started is dropped
    }
    if (m_queueThread) {
        // An upload in flight ends with the thread.
        m_queueThread->quit();
        m_queueThread->wait();
    }
}

void QFQC::willTerminate()
{
    if (const QCoreApplication *application = QCoreApplication::instance())
        disconnect(application, &QCoreApplication::aboutToQuit, this, &QFQC::willTerminate);
    stopQueue();
    writeCacheOnThread();
}
