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

    QString computer() const { return home.path() + u"/computer"_s; }
    QString desktop() const { return home.path() + u"/Desktop"_s; }
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
        unzip.start(u"unzip"_s, {u"-Z1"_s, zip});
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
    const QString userLogs = home.path() + u"/.local/state"_s;
    const QString userPrefs = home.path() + u"/.config"_s;
    const QString computerLogs = computer() + u"/var/log"_s;
    files(userLogs + u"/Quillfen"_s,
          {u"Cuebridge.1.log"_s, u"Cuebridge.2.log"_s, u"CuebridgeHelper.1.log"_s,
           u"Cuebridge.1.log.bak"_s, u"Other.1.log"_s});
    files(userLogs + u"/DiagnosticReports"_s,
          {u"Cuebridge_2014-05-01-120000_Mac.crash"_s, u"Cuebridge-2014.crash"_s,
           u"Foo Bar_1.ips"_s, u"Cuebridge_1.txt"_s});
    files(userLogs + u"/CrashReporter"_s, {u"Cuebridge_old.crash"_s});
    files(userPrefs, {u"com.quillfen.Cuebridge.plist"_s, u"com.quillfen.foobar.plist"_s,
                      u"com.quillfen.global.plist"_s, u"Quillfen/Cuebridge.conf"_s});
    files(computerLogs + u"/Quillfen"_s, {u"Cuebridge.1.log"_s});
    // A link is followed, relative to its own folder, and keeps its name.
    files(computer() + u"/elsewhere"_s, {u"real.crash"_s});
    QDir().mkpath(computerLogs + u"/DiagnosticReports"_s);
    ASSERT_TRUE(QFile::link(u"../../../elsewhere/real.crash"_s,
                            computerLogs + u"/DiagnosticReports/Cuebridge_linked.crash"_s));
    files(home.path() + u"/notes"_s, {u"extra.txt"_s});
    // A folder of the shared temporary folder, made first by someone else, neither stops
    // the gathering nor gets into the archive.
    files(home.tempPath() + u"/QF_App_Logs"_s, {u"planted.txt"_s});
    QFile::setPermissions(home.tempPath() + u"/QF_App_Logs"_s,
                          QFile::ReadOther | QFile::ExeOther | QFile::ReadOwner | QFile::ExeOwner);

    ASSERT_TRUE(QFTroubleshootingUtils::gatherLogsForAppsWithNames(
        {u"Cuebridge"_s, u"Foo Bar"_s}, false, {home.path() + u"/notes/extra.txt"_s}));
    EXPECT_EQ(alerts.shown(), QStringList(u"Logs gathered successfully / The gathered logs were "
                                          u"placed on your desktop."_s));
    const QString top = u"QF_App_Logs"_s;
    QStringList expected = {
        top + userLogs + u"/Quillfen/Cuebridge.1.log"_s,
        top + userLogs + u"/Quillfen/Cuebridge.2.log"_s,
        top + userLogs + u"/Quillfen/CuebridgeHelper.1.log"_s,
        top + userLogs + u"/DiagnosticReports/Cuebridge_2014-05-01-120000_Mac.crash"_s,
        top + userLogs + u"/DiagnosticReports/Foo Bar_1.ips"_s,
        top + userLogs + u"/CrashReporter/Cuebridge_old.crash"_s,
        top + userPrefs + u"/com.quillfen.Cuebridge.plist"_s,
        top + userPrefs + u"/com.quillfen.foobar.plist"_s,
        top + userPrefs + u"/Quillfen/Cuebridge.conf"_s,
        top + computerLogs + u"/Quillfen/Cuebridge.1.log"_s,
        top + computerLogs + u"/DiagnosticReports/Cuebridge_linked.crash"_s,
        top + home.path() + u"/notes/extra.txt"_s,
    };
    expected.sort();
    const QString archive = desktop() + u"/Cuebridge Logs.zip"_s;
    EXPECT_EQ(archived(archive), expected);
    EXPECT_TRUE(QDir(home.runtimePath()).isEmpty()) << "the private folder went with it";

    // The link's file, not the link, went in.
    QProcess unzip;
    unzip.start(u"unzip"_s, {u"-p"_s, archive, expected.filter(u"linked"_s).first()});
    ASSERT_TRUE(unzip.waitForFinished());
    EXPECT_EQ(unzip.readAllStandardOutput(), "real.crash");

    // A second archive the same day carries the time in its name; the first stays.
    ASSERT_TRUE(QFTroubleshootingUtils::gatherLogsForAppsWithNames({u"Cuebridge"_s}, true));
    const QStringList archives = QDir(desktop()).entryList(QDir::Files, QDir::Name);
    ASSERT_EQ(archives.size(), 2);
    EXPECT_EQ(archives.at(0), u"Cuebridge Logs.zip"_s);
    EXPECT_TRUE(
        QRegularExpression(u"^Cuebridge Logs_\\d{14}\\.zip$"_s).match(archives.at(1)).hasMatch())
        << archives.at(1).toStdString();
    EXPECT_EQ(alerts.shown().size(), 1) << "a silent gathering shows nothing";
}

TEST_F(Gathering, NothingOrNowhereToGatherMakesNoArchive)
{
    EXPECT_FALSE(QFTroubleshootingUtils::gatherLogsForAppWithName(QString()));
    EXPECT_FALSE(QFTroubleshootingUtils::gatherLogsForAppsWithNames({u"Cuebridge"_s}, true));
    EXPECT_TRUE(alerts.shown().isEmpty());
    EXPECT_FALSE(QFTroubleshootingUtils::gatherLogsForAppWithName(u"Cuebridge"_s));
    EXPECT_EQ(alerts.shown(),
              QStringList(u"No logs found / There were no logs available to gather."_s));
    EXPECT_FALSE(QFileInfo::exists(desktop() + u"/Cuebridge Logs.zip"_s));

    // No private folder can be made: said, not only logged.
    files(home.path(), {u"Cuebridge.1.log"_s});
    for (const char *variable : {"XDG_RUNTIME_DIR", "TMPDIR", "XDG_CACHE_HOME"})
        qputenv(variable, home.file(u"not-a-folder"_s, "").toUtf8());
    EXPECT_FALSE(QFTroubleshootingUtils::gatherLogsForAppsWithNames(
        {u"Cuebridge"_s}, false, {home.path() + u"/Cuebridge.1.log"_s}));
    EXPECT_EQ(alerts.shown().last(),
              u"Logs could not be gathered / Please check your file permissions."_s);
}

TEST_F(Gathering, ViewingOpensTheCurrentLogOrSaysThereIsNone)
{
    RecordingWorkspace desktopApps;
    EXPECT_FALSE(QFTroubleshootingUtils::viewLogForApp(u"Cuebridge"_s));
    EXPECT_FALSE(QFTroubleshootingUtils::viewTaskLogForApp(u"Cuebridge"_s));
    EXPECT_EQ(alerts.shown(),
              QStringList({u"No log found / You must perform a task before viewing the log."_s,
                           u"No log found / You must run the application as a task (e.g. through "
                           u"Runwick) before viewing a log."_s}));

    const QString log = home.file(u".local/state/Quillfen/Cuebridge.1.log"_s, "started");
    EXPECT_TRUE(QFTroubleshootingUtils::viewLogForApp(u"Cuebridge"_s));
    EXPECT_EQ(desktopApps.opened(), QStringList(log + u" with ''"_s));
}

} // namespace
