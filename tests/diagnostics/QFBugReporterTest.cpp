// The crash check at start-up, the bug reporter it starts, and the crash reports the
// application writes for itself.

#include "diagnostics/QFBugReporter.h"
#include "support/QFPropertyList.h"

#include "LoggedTest.h"
#include "QtPrinters.h"
#include "Recorders.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QThread>

namespace {

class CrashCheck : public LoggedTest
{
protected:
    QString reports() const { return home.path() + u"/.local/state/DiagnosticReports"_s; }
    QString record() const { return home.path() + u"/launches.plist"_s; }
    /// A crash report modified at the time given.
    QString report(const QString &name, const QDateTime &modified)
    {
        const QString path = reports() + u'/' + name;
        TempHome::write(path, "report");
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::ReadWrite));
        EXPECT_TRUE(file.setFileTime(modified, QFileDevice::FileModificationTime));
        return path;
    }
    /// A "Bug Reporter" beside the application that notes its argument.
    QString installReporter()
    {
        const QString folder = home.path() + u"/app"_s;
        const QString note = home.path() + u"/given"_s;
        TempHome::writeNotingProgram(folder + u"/Bug Reporter"_s, note);
        QFLocalPaths::setExecutableFolderForTesting(folder);
        return note;
    }
    void TearDown() override
    {
        QFLocalPaths::setExecutableFolderForTesting(QString());
        LoggedTest::TearDown();
    }

    RecordingWorkspace desktop;
};

struct Case
{
    const char *name;
    const char *report;  ///< its file name
    int modifiedMinutes; ///< relative to the launch
    bool found = true;
    bool launched = true;
    std::optional<int> exitMinutes = {};
    bool reporterOff = false;
};

TEST_F(CrashCheck, AReportNewerThanTheLaunchProvesACrash)
{
    const QDateTime launch = QDateTime::currentDateTime().addSecs(-3600);
    const Case cases[] = {
        {"newer", "Cuebridge_2014-05-01-120000_host.crash", 5},
        {"older", "Cuebridge_2014-05-01-120000_host.crash", -5, false},
        {"any case", "cuebridge_2014-05-01-120000_host.crash", 5},
        {"another application", "CuebridgeHelper_2014-05-01-120000_host.crash", 5, false},
        {"first run", "Cuebridge_1_host.crash", 5, false, false},
        {"ended normally", "Cuebridge_1_host.crash", 5, false, true, 1},
        {"exit before the launch", "Cuebridge_1_host.crash", 5, true, true, -1},
        {"reporter switched off", "Cuebridge_1_host.crash", 5, true, true, {}, true},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        QDir(reports()).removeRecursively();
        QVariantMap launches;
        if (c.launched)
            launches.insert(u"launch"_s, launch);
        if (c.exitMinutes)
            launches.insert(u"exit"_s, launch.addSecs(*c.exitMinutes * 60));
        ASSERT_TRUE(QFPropertyList::writeDictionary(launches, record()));
        QVariantMap global;
        if (c.reporterOff)
            global.insert(u"disable-crash-reporter"_s, u"1"_s);
        QDir().mkpath(home.path() + u"/.config"_s);
        ASSERT_TRUE(QFPropertyList::writeDictionary(
            global, home.path() + u"/.config/com.quillfen.global.plist"_s));
        const QString path =
            report(QString::fromLatin1(c.report), launch.addSecs(c.modifiedMinutes * 60));
        const qsizetype opened = desktop.opened().size();

        const QString found = QFBugReporter::checkForCrashes(u"Cuebridge"_s, record());
        EXPECT_EQ(found, c.found ? path : QString());
        // Without a bug reporter beside the application, the desktop entry's is asked.
        EXPECT_EQ(desktop.opened().size() - opened, c.found && !c.reporterOff ? 1 : 0);
        if (c.found && !c.reporterOff) {
            EXPECT_EQ(desktop.opened().last(),
                      path + u" with 'com.quillfen.BugReporter', asynchronously"_s);
        }
    }
    EXPECT_EQ(log().count(u"Application crashed on last launch"_s), 4);
    EXPECT_EQ(log().count(u"Crash reporter disabled"_s), 1);
}

TEST_F(CrashCheck, ACrashedRunLeavesAReportThatTheNextLaunchHandsToTheBugReporter)
{
    const QString given = installReporter();
    QFBugReporter::startBugReporter(u"Cuebridge"_s, record());
    EXPECT_TRUE(QFPropertyList::readDictionary(record()).value(u"launch"_s).toDateTime().isValid());
    EXPECT_TRUE(desktop.opened().isEmpty()) << "the first run checks nothing";
    QThread::msleep(20); // the report is newer than the launch by more than the clocks' steps

    for (const char *how : {"fault", "abort"}) {
        QProcess child;
        // Under AddressSanitizer the signals are left to the program's own handler.
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"ASAN_OPTIONS"_s,
                           environment.value(u"ASAN_OPTIONS"_s) +
                               u":handle_segv=0:handle_abort=0:allow_user_segv_handler=1"_s);
        child.setProcessEnvironment(environment);
        child.start(QStringLiteral(CRASHING_CHILD), {QString::fromLatin1(how)});
        ASSERT_TRUE(child.waitForFinished(30000));
        EXPECT_EQ(child.exitStatus(), QProcess::CrashExit) << how;
    }
    QStringList written = QDir(reports()).entryList(QDir::Files, QDir::Name);
    ASSERT_EQ(written.size(), 2);
    const QRegularExpression name(u"^Cuebridge_\\d{4}-\\d\\d-\\d\\d-\\d{6}_[^/]+\\.crash$"_s);
    const QString fault = QString::fromUtf8(TempHome::read(reports() + u'/' + written.at(0))) +
                          QString::fromUtf8(TempHome::read(reports() + u'/' + written.at(1)));
    for (const QString &file : written)
        EXPECT_TRUE(name.match(file).hasMatch()) << file.toStdString();
    EXPECT_TRUE(fault.contains(u"Exception Type:  SIGSEGV (signal 11)"_s)) << fault.toStdString();
    EXPECT_TRUE(fault.contains(u"Exception Type:  SIGABRT (signal 6)"_s));
    EXPECT_TRUE(fault.contains(u"Process:         Cuebridge ["_s));
    EXPECT_GE(fault.count(u"[0x"_s), 6) << "a backtrace of each crashed thread";

    QFBugReporter::startBugReporter(u"Cuebridge"_s, record());
    const QString reported = TempHome::noted(given);
    EXPECT_TRUE(written.contains(QFileInfo(reported.mid(1, reported.size() - 2)).fileName()))
        << reported.toStdString();
    EXPECT_TRUE(log().contains(u"Application crashed on last launch"_s));
}

} // namespace
