// Which updater is started, from where, with what; and the switch of the start-up check.

#include "support/QFSoftwareUpdate.h"
#include "support/QFLocalPaths.h"
#include "support/QFPropertyList.h"

#include "LoggedTest.h"
#include "QtPrinters.h"

#include <QDir>
#include <QFile>

#include <sys/stat.h>

namespace {

class Updater : public LoggedTest
{
protected:
    void SetUp() override
    {
        LoggedTest::SetUp();
        QFLocalPaths::setComputerWideRootForTesting(home.path() + u"/computer"_s);
        QFLocalPaths::setExecutableFolderForTesting(home.path() + u"/app"_s);
    }
    void TearDown() override
    {
        QFLocalPaths::setComputerWideRootForTesting(QString());
        QFLocalPaths::setExecutableFolderForTesting(QString());
        LoggedTest::TearDown();
    }
    QString installed() const
    {
        return home.path() + u"/computer/usr/share/applications/Quillfen/"_s +
               QFSoftwareUpdate::updaterName();
    }
    QString carried() const { return home.path() + u"/app/"_s + QFSoftwareUpdate::updaterName(); }
    QString note() const { return home.path() + u"/arguments"_s; }
    /// A stand-in updater that notes its arguments (and, by its text, which copy it is).
    void makeUpdater(const QString &path, const QByteArray &which)
    {
        TempHome::writeNotingProgram(path, note(), which);
    }
};

TEST_F(Updater, TheInstalledOneComesFirstAndACarriedOneRunsOnlyFromThisRunsPrivateCopy)
{
    EXPECT_EQ(QFSoftwareUpdate::updaterPath(), QString());
    QFSoftwareUpdate::launchSoftwareUpdate();
    EXPECT_TRUE(log().contains(u"Error: unable to find software updater"_s));
    EXPECT_TRUE(log().contains(u"Unable to launch Software Update - path doesn't exist"_s));

    // Another user's program waiting at a fixed name of the shared folder is never run.
    const QString planted = home.tempPath() + u'/' + QFSoftwareUpdate::updaterName();
    makeUpdater(planted, "planted");
    makeUpdater(carried(), "carried 1");
    const QString copy = QFSoftwareUpdate::updaterPath();
    EXPECT_TRUE(copy.startsWith(home.runtimePath() + u'/')) << copy.toStdString();
    const QFile::Permissions others = QFile::ReadGroup | QFile::WriteGroup | QFile::ExeGroup |
                                      QFile::ReadOther | QFile::WriteOther | QFile::ExeOther;
    EXPECT_EQ(QFile::permissions(QFileInfo(copy).path()) & others, QFile::Permissions());
    makeUpdater(carried(), "carried 2");
    EXPECT_EQ(QFSoftwareUpdate::updaterPath(), copy);
    EXPECT_TRUE(TempHome::read(copy).contains("carried 2")) << "the copy is made anew";

    // A copy that fails leaves nothing to start.
    QFile::remove(carried());
    ASSERT_EQ(::mkfifo(QFile::encodeName(carried()).constData(), 0600), 0);
    QFSoftwareUpdate::launchSoftwareUpdate();
    EXPECT_EQ(log().count(u"Unable to launch Software Update - path doesn't exist"_s), 2);
    EXPECT_FALSE(QFile::exists(copy));
    EXPECT_FALSE(QFile::exists(note()));

    makeUpdater(installed(), "installed");
    EXPECT_EQ(QFSoftwareUpdate::updaterPath(), installed());

    QFSoftwareUpdate().manualUpdateCheck();
    EXPECT_EQ(TempHome::noted(note()), u"[]"_s) << "a manual check starts it as it is";
    QFile::remove(note());
    QFSoftwareUpdate::automaticallyCheckForUpdates();
    EXPECT_EQ(TempHome::noted(note()),
              u"[-checkpath]["_s + QFileInfo(u"/proc/self/exe"_s).canonicalFilePath() + u']');
}

TEST_F(Updater, OnlyAFalseSwitchStopsTheCheckAtStartUp)
{
    const QString shared = home.path() + u"/.config/com.quillfen.global.plist"_s;
    EXPECT_TRUE(QFSoftwareUpdate::checksAtStartup()) << "no shared file";
    QDir().mkpath(home.path() + u"/.config"_s);
    const std::pair<QVariant, bool> values[] = {
        {QVariant(), true}, {true, true}, {false, false}, {0, false}, {u"0"_s, true}};
    for (const auto &[value, checks] : values) {
        QVariantMap dictionary{{u"other"_s, 1}};
        if (value.isValid())
            dictionary.insert(u"SUCheckAtStartup"_s, value);
        ASSERT_TRUE(QFPropertyList::writeDictionary(dictionary, shared));
        EXPECT_EQ(QFSoftwareUpdate::checksAtStartup(), checks) << value.toString().toStdString();
    }
}

} // namespace
