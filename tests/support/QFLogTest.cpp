#include "support/QFLog.h"
#include "support/QFPropertyList.h"

#include "QtPrinters.h"
#include "TempHome.h"

#include <gtest/gtest.h>

#include <QFileInfo>
#include <QRegularExpression>

#include <atomic>
#include <chrono>
#include <thread>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using namespace std::chrono_literals;

class LogTest : public testing::Test
{
protected:
    void SetUp() override { QFLog::resetForTesting(); }
    void TearDown() override { QFLog::resetForTesting(); }

    QString folder() const { return home.path() + "/.local/state/Quillfen"; }
    QString generation(int n) const
    {
        return folder() + u"/%1.%2.log"_s.arg(QFLog::sharedController().appName()).arg(n);
    }
    QString current() const
    {
        QFLog::finishWriting();
        return QString::fromUtf8(TempHome::read(generation(1)));
    }
    void setSwitch(const QVariant &value)
    {
        QDir().mkpath(home.path() + "/.config");
        ASSERT_TRUE(QFPropertyList::writeDictionary(
            {{"disable-logging", value}}, home.path() + "/.config/com.quillfen.global.plist"));
    }

    TempHome home;
};

TEST_F(LogTest, NewLogStartsWithTheHeader)
{
    QFLog::createNewLog(QString(), true);
    QFLog::appendLog(u"Marker start pos: %li", qint64(250));
    const QString text = current();
    const QStringList lines = text.split(u'\n', Qt::SkipEmptyParts);
    ASSERT_GE(lines.size(), 5);
    static const QRegularExpression prefix(
        u"^\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d \\+0000 - "_s);
    for (const QString &line : lines)
        EXPECT_TRUE(prefix.match(line).hasMatch()) << line.toStdString();
    EXPECT_TRUE(lines[0].contains(" - Log started: "));
    for (const char *part :
         {" - Path: ", " - System: Linux ", " CPU(s), ", " - Running in 64-bit mode\n"})
        EXPECT_TRUE(text.contains(QLatin1StringView(part))) << part;
    EXPECT_TRUE(lines.last().endsWith(" - Marker start pos: 250"));
    EXPECT_EQ(QFLog::sharedController().bytesWritten(), quint64(text.toUtf8().size()));
}

TEST_F(LogTest, RotationShiftsEachGenerationKeepsGapsAndDropsTheOldest)
{
    QDir().mkpath(folder());
    for (int i = 1; i <= 5; ++i)
        TempHome::write(generation(i), QByteArray::number(i));
    QFLog::createNewLog(QString(), true);
    for (int i = 2; i <= 5; ++i)
        EXPECT_EQ(TempHome::read(generation(i)), QByteArray::number(i - 1)) << i;
    EXPECT_TRUE(current().contains("Log started"));

    QFLog::resetForTesting();
    QFLog::sharedController().setAppName("Gaps");
    TempHome::write(generation(1), "one");
    TempHome::write(generation(3), "three");
    EXPECT_EQ(QFLog::availableLogs(), QStringList({generation(1), generation(3)}));
    QFLog::createNewLog(QString(), true);
    EXPECT_EQ(TempHome::read(generation(2)), "one");
    EXPECT_FALSE(QFile::exists(generation(3)));
    EXPECT_EQ(TempHome::read(generation(4)), "three");
    EXPECT_FALSE(QFile::exists(generation(5)));
    EXPECT_EQ(QFLog::availableLogs(), QStringList({generation(1), generation(2), generation(4)}));
}

struct SwitchCase
{
    QVariant value;
    bool disables;
};

TEST_F(LogTest, SharedSwitchDisablesOnlyForStringOneOrTrue)
{
    const SwitchCase cases[] = {{u"1"_s, true},    {true, true},          {qlonglong(1), true},
                                {u"YES"_s, false}, {qlonglong(2), false}, {u"0"_s, false},
                                {false, false}};
    for (const SwitchCase &c : cases) {
        QFLog::resetForTesting();
        QDir(folder()).removeRecursively();
        setSwitch(c.value);
        testing::internal::CaptureStdout();
        QFLog::createNewLog();
        QFLog::appendLog(u"after the switch");
        const std::string printed = testing::internal::GetCapturedStdout();
        EXPECT_EQ(QFLog::sharedController().loggingDisabled(), c.disables)
            << c.value.toString().toStdString();
        EXPECT_EQ(printed == "Logging is disabled\n", c.disables) << printed;
        EXPECT_EQ(current().contains("after the switch"), !c.disables);
    }
}

TEST_F(LogTest, StrayPercentSignsAreEscapedAndDoubledInThePrintedCopy)
{
    EXPECT_EQ(QFLog::escapeTextForLogging("a%%%b"), "a%%b") << "a tripled sign is made a pair";
    QFLog::createNewLog(QString(), true);
    QFLog::appendLog(u"100% done");
    QFLog::appendLog(u"literal %.2f", 1.5);
    QFLog::appendLog(u"formatted %0.2f", 1.5);
    QFLog::appendLog(u"kept %% pair");
    for (const char *line :
         {" - 100% done\n", " - literal %.2f\n", " - formatted 1.50\n", " - kept % pair\n"})
        EXPECT_TRUE(current().contains(QLatin1StringView(line))) << line;

    // The printed copy doubles them.
    QFLog::createNewLog(QString(), false);
    testing::internal::CaptureStdout();
    QFLog::appendLogAndPrint(u"%@ done", "100%");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "100%% done\n");
    EXPECT_TRUE(current().contains(" - 100% done\n"));
}

TEST_F(LogTest, ShortEntryFromAWorkerReturnsOnlyOnceWritten)
{
    QFLog::createNewLog(QString(), true);
    QFLog::finishWriting();
    QFLog::holdWriterForTesting(true);
    std::atomic<bool> returned = false;
    std::thread shortWriter([&] {
        QFLog::appendLog(u"%@", QString(50, u'S'));
        returned = true;
    });
    std::this_thread::sleep_for(200ms);
    EXPECT_FALSE(returned) << "a 50-character entry from a worker must wait for the disk";
    QFLog::holdWriterForTesting(false);
    shortWriter.join();
    EXPECT_TRUE(QString::fromUtf8(TempHome::read(generation(1))).contains(QString(50, u'S')));
}

TEST_F(LogTest, WorkerEntriesStayInOrderWhetherWrittenByTheWorkerOrTheWriter)
{
    QFLog::createNewLog(QString(), true);
    QFLog::finishWriting();
    std::thread worker([] {
        for (int i = 0; i < 300; ++i) {
            // Every third entry is long and queued; the short ones behind it wait.
            if (i % 3 == 0)
                QFLog::appendLog(u"entry %i %@", i, QString(200, u'x'));
            else
                QFLog::appendLog(u"entry %i", i);
        }
    });
    worker.join();
    const QStringList lines = current().split(u'\n');
    int expected = 0;
    for (const QString &line : lines) {
        if (const qsizetype at = line.indexOf(u" - entry "); at >= 0) {
            EXPECT_EQ(line.mid(at + 9).section(u' ', 0, 0).toInt(), expected) << line.toStdString();
            ++expected;
        }
    }
    EXPECT_EQ(expected, 300);
}

/// The current log replaced by a full pipe, so that every write to it blocks until
/// drainInBackground() starts reading. The log's file must be closed beforehand.
class StalledDisk
{
public:
    explicit StalledDisk(const QString &path)
    {
        QFile::remove(path);
        const QByteArray name = QFile::encodeName(path);
        EXPECT_EQ(::mkfifo(name.constData(), 0600), 0);
        m_read = ::open(name.constData(), O_RDONLY | O_NONBLOCK);
        const int fill = ::open(name.constData(), O_WRONLY | O_NONBLOCK);
        const QByteArray filler(4096, '#');
        while (::write(fill, filler.constData(), size_t(filler.size())) > 0) {
        }
        ::close(fill);
    }
    ~StalledDisk()
    {
        stopDraining();
        ::close(m_read);
    }
    void drainInBackground()
    {
        m_drainer = std::thread([this] {
            while (!m_stop)
                if (!readSome())
                    std::this_thread::sleep_for(1ms);
        });
    }
    /// Everything the log wrote, once the drainer has stopped.
    QByteArray stopDraining()
    {
        m_stop = true;
        if (m_drainer.joinable())
            m_drainer.join();
        while (readSome()) {
        }
        return m_received;
    }

private:
    bool readSome()
    {
        char buffer[65536];
        const ssize_t n = ::read(m_read, buffer, sizeof buffer);
        if (n > 0)
            m_received.append(buffer, n);
        return n > 0;
    }

    int m_read = -1;
    std::atomic<bool> m_stop = false;
    std::thread m_drainer;
    QByteArray m_received;
};

TEST_F(LogTest, MainThreadNeverWaitsBehindAWorkersOwnWrite)
{
    QFLog::createNewLog(QString(), true);
    QFLog::resetForTesting(); // closes the file: the next write opens the pipe
    StalledDisk disk(generation(1));
    std::thread worker([] { QFLog::appendLog(u"worker entry"); }); // idle writer: writes itself
    std::this_thread::sleep_for(200ms);                            // and is stuck on the disk

    std::atomic<bool> mainReturned = false;
    std::atomic<bool> draining = false;
    std::thread watchdog([&] {
        for (int i = 0; i < 500 && !mainReturned; ++i)
            std::this_thread::sleep_for(10ms);
        draining = true;
        disk.drainInBackground();
    });
    QFLog::appendLog(u"main entry");
    const bool waitedForTheDisk = draining;
    mainReturned = true;
    watchdog.join();
    worker.join();
    QFLog::finishWriting();
    const QByteArray written = disk.stopDraining();

    EXPECT_FALSE(waitedForTheDisk);
    EXPECT_LT(written.indexOf(" - worker entry\n"), written.indexOf(" - main entry\n"));
    EXPECT_GE(written.indexOf(" - worker entry\n"), 0);
}

TEST_F(LogTest, ShutdownFlushesUpToTenQueuedEntriesAndDropsMore)
{
    for (const int queued : {10, 11}) {
        QFLog::createNewLog(QString(), true);
        QFLog::finishWriting();
        QFLog::holdWriterForTesting(true);
        for (int i = 0; i < queued; ++i)
            QFLog::fastAppendLog(u"queued entry %li", i);
        ASSERT_EQ(QFLog::waitingEntryCountForTesting(), queued);
        QFLog::willTerminate();
        const QString text = QString::fromUtf8(TempHome::read(generation(1)));
        EXPECT_EQ(text.count("queued entry"), queued <= 10 ? queued : 0) << queued;
        QFLog::fastAppendLog(u"after shutdown");
        EXPECT_EQ(QFLog::waitingEntryCountForTesting(), 0);
        QFLog::resetForTesting();
    }
}

TEST_F(LogTest, RollsOverAtTheLimitAndEntriesQueuedBehindItGoToTheNewFile)
{
    QFLog::setRolloverLimitForTesting(2000);
    QFLog::createNewLog(QString(), true);
    for (int i = 0; i < 40; ++i) // 90 bytes each: two roll-overs
        QFLog::fastAppendLog(u"entry %li %@", i, QString(60, u'x'));
    QFLog::finishWriting();
    QString all;
    for (int g = 3; g >= 1; --g) {
        const QString text = QString::fromUtf8(TempHome::read(generation(g)));
        EXPECT_TRUE(text.section(u'\n', 0, 0).contains(u" - Log started: ")) << g;
        EXPECT_EQ(text.count(u" - Log truncated at 500KB"), g < 3 ? 1 : 0) << g;
        if (g > 1) {
            EXPECT_GE(text.toUtf8().size(), 2000) << g;
            EXPECT_LT(text.toUtf8().size(), 2200) << g;
        }
        all += text;
    }
    for (int i = 0; i < 40; ++i)
        EXPECT_EQ(all.count(u" - entry %1 "_s.arg(i)), 1) << i;
    EXPECT_LT(all.indexOf(u" - entry 38 "), all.indexOf(u" - entry 39 ")) << "in order";
}

TEST_F(LogTest, UnwritableFolderIsReportedNotFatal)
{
    TempHome::write(home.path() + "/.local/state", "a file where the folder should be");
    testing::internal::CaptureStdout();
    QFLog::createNewLog();
    QFLog::appendLog(u"lost");
    QFLog::finishWriting();
    const std::string printed = testing::internal::GetCapturedStdout();
    EXPECT_NE(printed.find("Unable to create folder "), std::string::npos) << printed;
}

} // namespace
