// Gathering for support: what is collected, from where, into which archive; viewing
// the current log.

#include "diagnostics/QFTroubleshootingUtils.h"
#include "support/QFLocalPaths.h"

#include "QtPrinters.h"
#include "Recorders.h"
#include "TempHome.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>

namespace {

class Gathering : public testing::Test
{
protected:
    Gathering() { QFLocalPaths::setComputerWideRootForTesting(computer()); }
    ~Gathering() override { QFLocalPaths::setComputerWideRootForTesting(QString()); }

    QString computer() const { return home.path() + u"/computer"_qs; }
    QString desktop() const { return home.path() + u"/Desktop"_qs; }
    /// Writes each file (its text is its own name) under the folder.
    void files(const QString &folder, const QStringList &names)
    {
        for (const QString &name : names)
            TempHome::write(folder + u'/' + name, name.toUtf8());
    }
    /// The files in the archive, without the folder entries.
    static QStringList archived(const QString &zip)
    {
        QProcess unzip;
        unzip.start(u"unzip"_qs, {u"-Z1"_qs, zip});
        EXPECT_TRUE(unzip.waitForFinished());
        QStringList entries = QString::fromUtf8(unzip.readAllStandardOutput()).split(u'\n');
        entries.removeIf(
            [](const QString &entry) { return entry.isEmpty() || entry.endsWith(u'/'); });
        entries.sort();
        return entries;
    }

    TempHome home;
    RecordingAlerts alerts;
};

TEST_F(Gathering, CollectsEachApplicationsFilesFromBothDomainsIntoOneArchiveOnTheDesktop)
{
    const QString userLogs = home.path() + u"/.local/state"_qs;
    const QString userPrefs = home.path() + u"/.config"_qs;
    const QString computerLogs = computer() + u"/var/log"_qs;
    files(userLogs + u"/Quillfen"_qs,
          {u"Cuebridge.1.log"_qs, u"Cuebridge.2.log"_qs, u"CuebridgeHelper.1.log"_qs,
           u"Cuebridge.1.log.bak"_qs, u"Other.1.log"_qs});
    files(userLogs + u"/DiagnosticReports"_qs,
          {u"Cuebridge_2014-05-01-120000_Mac.crash"_qs, u"Cuebridge-2014.crash"_qs,
           u"Foo Bar_1.ips"_qs, u"Cuebridge_1.txt"_qs});
    files(userLogs + u"/CrashReporter"_qs, {u"Cuebridge_old.crash"_qs});
    files(userPrefs, {u"com.quillfen.Cuebridge.plist"_qs, u"com.quillfen.foobar.plist"_qs,
                      u"com.quillfen.global.plist"_qs, u"Quillfen/Cuebridge.conf"_qs});
    files(computerLogs + u"/Quillfen"_qs, {u"Cuebridge.1.log"_qs});
    // A link is followed, relative to its own folder, and keeps its name.
    files(computer() + u"/elsewhere"_qs, {u"real.crash"_qs});
    QDir().mkpath(computerLogs + u"/DiagnosticReports"_qs);
    ASSERT_TRUE(QFile::link(u"../../../elsewhere/real.crash"_qs,
                            computerLogs + u"/DiagnosticReports/Cuebridge_linked.crash"_qs));
    files(home.path() + u"/notes"_qs, {u"extra.txt"_qs});

    ASSERT_TRUE(QFTroubleshootingUtils::gatherLogsForAppsWithNames(
        {u"Cuebridge"_qs, u"Foo Bar"_qs}, false, {home.path() + u"/notes/extra.txt"_qs}));
    EXPECT_EQ(alerts.shown(), QStringList(u"Logs gathered successfully / The gathered logs were "
                                          u"placed on your desktop."_qs));
    const QString top = u"QF_App_Logs"_qs;
    QStringList expected = {
        top + userLogs + u"/Quillfen/Cuebridge.1.log"_qs,
        top + userLogs + u"/Quillfen/Cuebridge.2.log"_qs,
        top + userLogs + u"/Quillfen/CuebridgeHelper.1.log"_qs,
        top + userLogs + u"/DiagnosticReports/Cuebridge_2014-05-01-120000_Mac.crash"_qs,
        top + userLogs + u"/DiagnosticReports/Foo Bar_1.ips"_qs,
        top + userLogs + u"/CrashReporter/Cuebridge_old.crash"_qs,
        top + userPrefs + u"/com.quillfen.Cuebridge.plist"_qs,
        top + userPrefs + u"/com.quillfen.foobar.plist"_qs,
        top + userPrefs + u"/Quillfen/Cuebridge.conf"_qs,
        top + computerLogs + u"/Quillfen/Cuebridge.1.log"_qs,
        top + computerLogs + u"/DiagnosticReports/Cuebridge_linked.crash"_qs,
        top + home.path() + u"/notes/extra.txt"_qs,
    };
    expected.sort();
    const QString archive = desktop() + u"/Cuebridge Logs.zip"_qs;
    EXPECT_EQ(archived(archive), expected);
    EXPECT_FALSE(QFileInfo::exists(QFTroubleshootingUtils::temporaryFolder()));

    // The link's file, not the link, went in.
    QProcess unzip;
    unzip.start(u"unzip"_qs, {u"-p"_qs, archive, expected.filter(u"linked"_qs).first()});
    ASSERT_TRUE(unzip.waitForFinished());
    EXPECT_EQ(unzip.readAllStandardOutput(), "real.crash");

    // A second archive the same day carries the time in its name; the first stays.
    ASSERT_TRUE(QFTroubleshootingUtils::gatherLogsForAppsWithNames({u"Cuebridge"_qs}, true));
    const QStringList archives = QDir(desktop()).entryList(QDir::Files, QDir::Name);
    ASSERT_EQ(archives.size(), 2);
    EXPECT_EQ(archives.at(0), u"Cuebridge Logs.zip"_qs);
    EXPECT_TRUE(
        QRegularExpression(u"^Cuebridge Logs_\\d{14}\\.zip$"_qs).match(archives.at(1)).hasMatch())
        << archives.at(1).toStdString();
    EXPECT_EQ(alerts.shown().size(), 1) << "a silent gathering shows nothing";
}

TEST_F(Gathering, NothingToGatherMakesNoArchive)
{
    EXPECT_FALSE(QFTroubleshootingUtils::gatherLogsForAppWithName(QString()));
    EXPECT_FALSE(QFTroubleshootingUtils::gatherLogsForAppsWithNames({u"Cuebridge"_qs}, true));
    EXPECT_TRUE(alerts.shown().isEmpty());
    EXPECT_FALSE(QFTroubleshootingUtils::gatherLogsForAppWithName(u"Cuebridge"_qs));
    EXPECT_EQ(alerts.shown(),
              QStringList(u"No logs found / There were no logs available to gather."_qs));
    EXPECT_FALSE(QFileInfo::exists(desktop() + u"/Cuebridge Logs.zip"_qs));
}

TEST_F(Gathering, ViewingOpensTheCurrentLogOrSaysThereIsNone)
{
    RecordingWorkspace desktopApps;
    EXPECT_FALSE(QFTroubleshootingUtils::viewLogForApp(u"Cuebridge"_qs));
    EXPECT_FALSE(QFTroubleshootingUtils::viewTaskLogForApp(u"Cuebridge"_qs));
    EXPECT_EQ(alerts.shown(),
              QStringList({u"No log found / You must perform a task before viewing the log."_qs,
                           u"No log found / You must run the application as a task (e.g. through "
                           u"Runwick) before viewing a log."_qs}));

    const QString log = home.file(u".local/state/Quillfen/Cuebridge.1.log"_qs, "started");
    EXPECT_TRUE(QFTroubleshootingUtils::viewLogForApp(u"Cuebridge"_qs));
    EXPECT_EQ(desktopApps.opened(), QStringList(log + u" with ''"_qs));
}

} // namespace
