#include "support/QFFileManager.h"
#include "support/QFAuthorization.h"
#include "support/QFLog.h"
#include "support/QFTaskEx.h"

#include "LoggedTest.h"
#include "QtPrinters.h"

#include <gtest/gtest.h>

#include <QDir>

#include <thread>

namespace {

class FileTest : public LoggedTest
{
protected:
    void SetUp() override
    {
        LoggedTest::SetUp();
        installRunner("privileged", "exec \"$@\"");
    }
    /// Nobody can type a password in a test: the privileged runner notes each call in
    /// <name>.calls and then does what it is told (by default, a plain exec).
    void installRunner(const char *name, const char *action)
    {
        const QString script = home.filePath(QLatin1StringView(name));
        TempHome::write(script, u"#!/bin/sh\necho \"$@\" >> '%1.calls'\n%2\n"_s
                                    .arg(script, QLatin1StringView(action))
                                    .toUtf8());
        QFile::setPermissions(script, QFile::permissions(script) | QFile::ExeOwner);
        QFAuthorization::setPrivilegedRunnerForTesting(script);
    }
    void TearDown() override
    {
        QFAuthorization::setPrivilegedRunnerForTesting("/usr/bin/pkexec");
        LoggedTest::TearDown();
    }
    QString calls(const char *name = "privileged") const
    {
        return QString::fromUtf8(TempHome::read(home.filePath(QLatin1StringView(name)) + ".calls"));
    }
};

TEST_F(FileTest, PackagesAndMountedDrives)
{
    QDir().mkpath(home.path() + "/Show.fcpxmld");
    QDir().mkpath(home.path() + "/Plain");
    TempHome::write(home.path() + "/file.app", "not a folder");
    EXPECT_TRUE(QFFileManager::isPackageAtPath(home.path() + "/Show.fcpxmld"));
    EXPECT_FALSE(QFFileManager::isPackageAtPath(home.path() + "/Plain"));
    EXPECT_FALSE(QFFileManager::isPackageAtPath(home.path() + "/file.app"));
    EXPECT_FALSE(QFFileManager::isDriveMountedForPath("/Volumes/Missing/x"));
}

TEST_F(FileTest, CreateDirectory)
{
    EXPECT_TRUE(QFFileManager::createDirectory(home.path() + "/a/b/c"));
    EXPECT_TRUE(QFFileManager::createDirectory(home.path() + "/a/b/c")); // already there
    testing::internal::CaptureStderr();
    EXPECT_FALSE(QFFileManager::createDirectory(u"/Volumes/Missing/x"_s));
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Unable to create directory. Drive is not mounted.\n");
    EXPECT_TRUE(calls().isEmpty()) << "no password asked for a missing volume";

    // The ordinary way fails (a file in the way); mkdir with rights is waited for, and
    // fails the same way; without rights allowed it is not tried.
    home.file(u"file"_s, "x");
    EXPECT_FALSE(QFFileManager::createDirectory(home.path() + "/file/sub"));
    EXPECT_EQ(calls(), "/bin/mkdir -p -- " + home.path() + "/file/sub\n");
    EXPECT_TRUE(log().contains(" - Error creating folder: "));
    EXPECT_TRUE(log().contains(". Authorizing..."));
    EXPECT_FALSE(QFFileManager::createDirectory(home.path() + "/file/other", false));
    EXPECT_EQ(calls().count(u'\n'), 1);
}

TEST_F(FileTest, RightsCountOnlyWhenGrantedAndTheToolSucceeds)
{
    struct
    {
        const char *name;
        const char *action; ///< what the runner does after noting the call
        bool made;
        int callsForTwoRequests; ///< a refusal is remembered: nobody is asked again
    } const cases[] = {{"granted", "exec \"$@\"", true, 2},
                       {"refused", "exit 127", false, 1},
                       {"dismissed", "exit 126", false, 1},
                       {"the tool fails", "exec /bin/false", false, 2}};
    QFAuthorization &rights = QFAuthorization::sharedController();
    for (const auto &c : cases) {
        installRunner(c.name, c.action);
        const QString folder = home.path() + "/made by " + c.name;
        EXPECT_EQ(rights.authCreateDir(folder), c.made) << c.name;
        EXPECT_EQ(QFileInfo(folder).isDir(), c.made) << c.name;
        TempHome::write(home.path() + "/source", "x");
        EXPECT_EQ(rights.authCopyFile(home.path() + "/source", folder + "/copy"), c.made) << c.name;
        EXPECT_EQ(calls(c.name).count(u'\n'), c.callsForTwoRequests) << c.name;
    }
}

TEST_F(FileTest, CopyOrdinaryFailuresAndOntoAnExistingFileThroughThePrivilegedCopy)
{
    QDir().mkpath(home.path() + "/folder/inner");
    TempHome::write(home.path() + "/folder/inner/a.txt", "a");
    EXPECT_TRUE(QFFileManager::copyFile(home.path() + "/folder", home.path() + "/copy"));
    EXPECT_EQ(TempHome::read(home.path() + "/copy/inner/a.txt"), "a");
    EXPECT_TRUE(calls().isEmpty());

    EXPECT_FALSE(QFFileManager::copyFile(QString(), home.path() + "/x"));
    EXPECT_TRUE(log().contains(" - Error copying file: source path is nil"));
    EXPECT_FALSE(QFFileManager::copyFile(home.path() + "/folder", QString()));
    EXPECT_TRUE(log().contains(" - Error copying file " + home.path() +
                               "/folder: destination path is nil"));
    // A missing source fails the ordinary way, and the privileged copy refuses it too.
    EXPECT_FALSE(QFFileManager::copyFile(home.path() + "/missing", home.path() + "/x"));
    EXPECT_TRUE(calls().isEmpty());

    // Onto an existing file the copy goes through the privileged one.
    TempHome::write(home.path() + "/new.txt", "new");
    TempHome::write(home.path() + "/old.txt", "old");
    EXPECT_TRUE(QFFileManager::copyFile(home.path() + "/new.txt", home.path() + "/old.txt", 5));
    EXPECT_TRUE(log().contains(" - Error copying file: File exists. Authorizing..."));
    EXPECT_EQ(TempHome::read(home.path() + "/old.txt"), "new");
    EXPECT_TRUE(calls().contains("/bin/cp -f -p -R -- " + home.path() + "/new.txt " + home.path() +
                                 "/old.txt"));
}

TEST_F(FileTest, TrashFile)
{
    TempHome::write(home.path() + "/draft.txt", "x");
    EXPECT_TRUE(QFFileManager::trashFile(home.path() + "/draft.txt"));
    EXPECT_FALSE(QFile::exists(home.path() + "/draft.txt"));
    EXPECT_TRUE(QFile::exists(home.path() + "/.local/share/Trash/files/draft.txt"));
    EXPECT_TRUE(QFFileManager::trashFile(home.path() + "/never-there.txt"));
    EXPECT_FALSE(QFAuthorization::sharedController().authTrashFile("/usr"));
    EXPECT_TRUE(log().contains(" - Unable to trash path /usr because it is a system directory."));
}

TEST_F(FileTest, CompressMakesARealZip)
{
    QDir().mkpath(home.path() + "/Logs/sub");
    TempHome::write(home.path() + "/Logs/Cuebridge.1.log", "log one");
    TempHome::write(home.path() + "/Logs/sub/crash.crash", "crash");
    const QString zip = home.path() + "/Desktop/Cuebridge Logs.zip";
    QDir().mkpath(home.path() + "/Desktop");
    TempHome::write(zip, "an old archive in the way");

    ASSERT_TRUE(QFFileManager::compressFile(home.path() + "/Logs", zip));
    const QString listing = QFTaskEx::stringFromTask("/usr/bin/unzip", {"-l", zip});
    EXPECT_TRUE(listing.contains("Logs/Cuebridge.1.log")) << listing.toStdString();
    EXPECT_TRUE(listing.contains("Logs/sub/crash.crash"));

    EXPECT_FALSE(QFFileManager::compressFile(home.path() + "/missing", home.path() + "/m.zip"));
}

} // namespace
