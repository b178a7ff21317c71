// The analytics as launches of the application see them: the consent question, the
// events kept, and the upload, received by a real HTTP server inside the test.

#include "analytics/QFQC.h"
#include "support/QFOSDetect.h"
#include "support/QFPropertyList.h"
#include "support/QFUserDefaults.h"

#include "LoggedTest.h"
#include "QtPrinters.h"
#include "Recorders.h"
#include "app/WaitFor.h"

#include <QCoreApplication>
#include <QHttpServer>
#include <QNetworkProxy>
#include <QRegularExpression>
#include <QTcpServer>

namespace {

/// HTTP on 127.0.0.1: keeps each request to the upload path and answers it with 200.
class LocalHttpServer
{
public:
    struct Request
    {
        QHttpServerRequest::Method method;
        QByteArray contentType;
        QByteArray body;
    };

    LocalHttpServer()
    {
        m_server.route(u"/appdata/qc/qc.php"_s, [this](const QHttpServerRequest &request) {
            m_requests.append({request.method(), request.value("Content-Type"), request.body()});
            return "OK";
        });
        m_port = m_server.listen(QHostAddress::LocalHost);
        EXPECT_NE(m_port, 0);
    }
    QUrl url() const { return QUrl(u"http://127.0.0.1:%1/appdata/qc/qc.php"_s.arg(m_port)); }
    /// The next request, once it has come in (ten seconds at most).
    std::optional<Request> next()
    {
        if (!waitFor([this] { return !m_requests.isEmpty(); }))
            return std::nullopt;
        return m_requests.takeFirst();
    }

private:
    QHttpServer m_server;
    quint16 m_port = 0;
    QList<Request> m_requests;
};

class Analytics : public LoggedTest
{
protected:
    void SetUp() override
    {
        LoggedTest::SetUp();
        QFOSDetect::setVersionForTesting(QFOSDetect::Version{6, 1, 0});
        defaults.setObject(server.url().toString(), u"QCEndpoint"_s);
    }
    void TearDown() override
    {
        QFOSDetect::setVersionForTesting(std::nullopt);
        LoggedTest::TearDown();
    }

    /// One launch of the application.
    std::unique_ptr<QFQC> launch(const QString &bundleID = u"com.quillfen.Test"_s)
    {
        auto qc = std::make_unique<QFQC>(defaults, bundleID, u"1.2"_s);
        qc->setConsentDelayForTesting(0);
        return qc;
    }
    /// The events stored once the launch has ended as the application ends.
    QVariantList quit(std::unique_ptr<QFQC> qc)
    {
        qc->willTerminate();
        return QFPropertyList::readFile(qc->storeFilePath()).toList();
    }
    /// Where the test application's events are kept.
    QString storePath() const { return home.path() + u"/.cache/Quillfen/QC/com.quillfen.Test"_s; }
    static QVariantMap consent() { return QFPropertyList::readDictionary(QFQC::consentFilePath()); }
    static void setConsent(const QVariantMap &values)
    {
        QDir().mkpath(QFileInfo(QFQC::consentFilePath()).path());
        ASSERT_TRUE(QFPropertyList::writeDictionary(values, QFQC::consentFilePath()));
    }
    static QVariantMap event(const QString &name, qint64 date, const QString &data = QString())
    {
        QVariantMap record{{u"event"_s, name}, {u"date"_s, date}};
        if (!data.isNull())
            record.insert(u"data"_s, data);
        return record;
    }
    static int count(const QVariantList &events, const QString &name)
    {
        return int(std::count_if(events.cbegin(), events.cend(), [&](const QVariant &record) {
            return record.toMap().value(u"event"_s) == name;
        }));
    }
    int logged(const QString &line) const { return int(log().count(line)); }

    RecordingAlerts alerts;
    RecordingWorkspace workspace;
    LocalHttpServer server;
    QFUserDefaults defaults{home.path() + u"/defaults.ini"_s};
};

TEST_F(Analytics, ConsentIsAskedFromTheThirdLaunchUntilAnsweredAndTheAnswerIsShared)
{
    const QString question = u"Help improve Quillfen software by submitting analytics and usage "
                             "data / This information helps us find problems and improve our "
                             "software. It is anonymous and cannot be used to identify you."_s;
    struct Answer
    {
        qint64 code;
        QVariant kept; // "logQC" afterwards; invalid when absent
        bool asksAgain;
    };
    const Answer answers[] = {{QFAlert::defaultReturn, true, false},
                              {QFAlert::otherReturn, false, false},
                              {QFAlert::alternateReturn, QVariant(), true},
                              {QFAlert::noAnswerReturn, QVariant(), true}};
    for (const Answer &answer : answers) {
        SCOPED_TRACE(answer.code);
        QFile::remove(QFQC::consentFilePath());
        QFile::remove(storePath());
        defaults.removeObjectForKey(u"launchCount"_s);
        alerts.answer = answer.code;
        qsizetype asked = alerts.shown().size();
        for (int launchNumber = 1; launchNumber <= 4; ++launchNumber) {
            const bool asks = launchNumber == 3 || (launchNumber == 4 && answer.asksAgain);
            asked += asks;
            auto qc = launch();
            qc->loadQC(nullptr);
            waitFor([&] { return alerts.shown().size() == asked; });
            QCoreApplication::processEvents();
            EXPECT_EQ(alerts.shown().size(), asked) << "launch " << launchNumber;
            if (asks) {
                EXPECT_EQ(alerts.shown().last(), question);
            }
            const QVariant kept = launchNumber >= 3 ? answer.kept : QVariant();
            EXPECT_EQ(consent().value(u"logQC"_s), kept);
            EXPECT_EQ(qc->shouldLog(), kept.toBool());
            // Events are recorded in the run that said yes, not in later ones.
            EXPECT_EQ(count(quit(std::move(qc)), u"launch"_s), kept.toBool() ? 1 : 0);
        }
    }
    EXPECT_EQ(workspace.opened(), QStringList(2, QFQC::moreInfoPage().toString() + u" with ''"_s +
                                                     u", asynchronously"_s));
}

TEST_F(Analytics, UploadsAreDueOnceADayFromTheFourthLaunch)
{
    setConsent({{u"logQC"_s, true}});
    defaults.setObject(u"6.1.0"_s, u"lastOSVersion"_s); // a launch event only
    const QDateTime now = QDateTime::currentDateTimeUtc();
    struct Due
    {
        QDateTime lastSubmission; // invalid: none yet
        qint64 launchesBefore;
        bool uploads;
    };
    const Due rows[] = {{{}, 2, false},
                        {{}, 3, true},
                        {now.addSecs(-86400 - 60), 0, true},
                        {now.addSecs(-3600), 10, false}};
    int sent = 0;
    for (const Due &row : rows) {
        SCOPED_TRACE(row.launchesBefore);
        defaults.setObject(row.launchesBefore, u"launchCount"_s);
        defaults.setObject(row.lastSubmission, u"lastSubmission"_s);
        if (!row.lastSubmission.isValid())
            defaults.removeObjectForKey(u"lastSubmission"_s);
        auto qc = launch();
        qc->setupInitialLogging();
        qc->waitUntilAllOperationsAreFinished();
        sent += row.uploads;
        EXPECT_EQ(logged(u"Sending QC log to Quillfen..."_s), sent);
        if (row.uploads) {
            EXPECT_TRUE(server.next());
            EXPECT_FALSE(QFile::exists(qc->storeFilePath())) << "the events go with the upload";
            EXPECT_LE(defaults.objectForKey(u"lastSubmission"_s).toDateTime().secsTo(now), 0);
        }
        EXPECT_EQ(quit(std::move(qc)).size(), row.uploads ? 0 : 1);
        QFile::remove(storePath());
    }
}

TEST_F(Analytics, TheUploadIsOneMultipartPostAndTheIdentifierLastsNinetyDays)
{
    const QDateTime now = QDateTime::currentDateTimeUtc();
    const QString test = u"com.quillfen.Test"_s;
    // The identifier's age in days (0: no date beside it; none: no identifier), whether
    // the consent file can be read, and whether the identifier is kept.
    const struct
    {
        QString bundleID;
        std::optional<int> age;
        bool readable;
        bool keeps;
    } rows[] = {{test, 89, true, true},
                {test, 91, true, false},
                {test, 0, true, true},
                {QString(), std::nullopt, true, false},
                {test, std::nullopt, false, false}};
    for (const auto &row : rows) {
        SCOPED_TRACE(&row - rows);
        QVariantMap values{{u"logQC"_s, true}};
        if (row.age)
            values.insert(u"uid"_s, u"abcdefghijkl"_s);
        if (row.age.value_or(0) > 0)
            values.insert(u"uidAssigned"_s, now.addDays(-*row.age));
        if (row.readable)
            setConsent(values);
        else
            TempHome::write(QFQC::consentFilePath(), "not a property list");
        auto qc = launch(row.bundleID);
        qc->setShouldLog(true);
        qc->logQCEvent(event(u"launch"_s, 1700000000));
        qc->logQCEvent(event(u"specs"_s, 1700000100, u"6.1.0"_s));
        qc->uploadData();
        const std::optional<LocalHttpServer::Request> request = server.next();
        ASSERT_TRUE(request);
        EXPECT_EQ(request->method, QHttpServerRequest::Method::Post);
        const QRegularExpressionMatch type =
            QRegularExpression(u"^multipart/form-data; boundary=([-0-9A-F]{36})$"_s)
                .match(QString::fromLatin1(request->contentType));
        ASSERT_TRUE(type.hasMatch()) << request->contentType.toStdString();
        const QByteArray boundary = type.captured(1).toLatin1();
        const QByteArray uid = QRegularExpression(u"name=\"uid\"\r\n\r\n(\\w+)\r\n"_s)
                                   .match(QString::fromLatin1(request->body))
                                   .captured(1)
                                   .toLatin1();
        EXPECT_EQ(uid == "abcdefghijkl", row.keeps);
        EXPECT_TRUE(
            QRegularExpression(u"^[a-zA-Z0-9]{12}$"_s).match(QString::fromLatin1(uid)).hasMatch());
        const QByteArray app = row.bundleID.isEmpty() ? "Unknown" : row.bundleID.toUtf8();
        auto part = [&](const QByteArray &name, const QByteArray &value) {
            return "--" + boundary + "\r\nContent-Disposition: form-data; name=\"" + name +
                   "\"\r\n\r\n" + value + "\r\n";
        };
        EXPECT_EQ(request->body,
                  part("app", app) +
                      part("events", R"([{"date":1700000000,"event":"launch"},)"
                                     R"({"data":"6.1.0","date":1700000100,"event":"specs"}])") +
                      part("uid", uid) + part("version", "1.2"));
        if (row.readable) {
            EXPECT_EQ(consent().value(u"uid"_s).toByteArray(), uid);
            const QDateTime assigned = consent().value(u"uidAssigned"_s).toDateTime();
            EXPECT_EQ(assigned.isValid() && assigned.secsTo(now) < 60, !row.keeps);
        } else {
            EXPECT_EQ(TempHome::read(QFQC::consentFilePath()), "not a property list");
        }
        EXPECT_EQ(quit(std::move(qc)), QVariantList());
    }
    EXPECT_EQ(logged(u"Error: unable to save QC data. Bundle ID not found."_s), 3)
        << "each store write: one per event, one at the end";
}

TEST_F(Analytics, AFailedUploadIsLoggedAndItsEventsAreDroppedAllTheSame)
{
    setConsent({{u"logQC"_s, true}});
    QTcpServer closed;
    ASSERT_TRUE(closed.listen(QHostAddress::LocalHost));
    const QString refused = u"http://127.0.0.1:%1/appdata/qc/qc.php"_s.arg(closed.serverPort());
    closed.close();
    defaults.setObject(refused, u"QCEndpoint"_s);
    auto qc = launch();
    qc->logQCEvent(event(u"launch"_s, 1700000000));
    qc->uploadData();
    EXPECT_TRUE(waitFor([&] { return logged(u"Connection failed - Connection refused"_s) == 1; }));
    EXPECT_EQ(quit(std::move(qc)), QVariantList());
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    // The server is on this machine: never through a proxy from the environment.
    QNetworkProxy::setApplicationProxy(QNetworkProxy::NoProxy);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
