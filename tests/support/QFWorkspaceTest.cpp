// The freedesktop workspace: desktop entries decide which program runs and opens files.

#include "support/QFWorkspace.h"

#include "QtPrinters.h"
#include "TempHome.h"

#include <QDir>
#include <QFile>
#include <QProcess>

#include <gtest/gtest.h>

namespace {

class Workspace : public testing::Test
{
protected:
    void writeEntry(const QString &id, const QByteArray &exec)
    {
        home.file(u".local/share/applications/"_qs + id + u".desktop"_qs,
                  "[Desktop Entry]\nType=Application\nName=Tool\nExec=" + exec +
                      "\n"
                      "[Desktop Action Other]\nExec=/bin/false\n");
    }

    TempHome home;
};

TEST_F(Workspace, AnApplicationRunsWhenItsEntrysProgramRuns)
{
    // A program of its own name, so that no other process can pass for it.
    const QString program = home.filePath(u"cuebridge-test-sleeper"_qs);
    ASSERT_TRUE(QFile::copy(u"/bin/sleep"_qs, program));
    writeEntry(u"com.example.Sleeper"_qs, QFile::encodeName(program) + " %f");
    EXPECT_FALSE(QFWorkspace::shared().isApplicationRunning(u"com.example.Sleeper"_qs));
    EXPECT_FALSE(QFWorkspace::shared().isApplicationRunning(u"com.example.Missing"_qs));

    QProcess sleeper;
    sleeper.start(program, {u"30"_qs});
    ASSERT_TRUE(sleeper.waitForStarted());
    EXPECT_TRUE(QFWorkspace::shared().isApplicationRunning(u"com.example.Sleeper"_qs));
    sleeper.kill();
    sleeper.waitForFinished();
    EXPECT_TRUE(QFWorkspace::shared().pathForApplication(u"com.example.Sleeper"_qs).isEmpty());
}

TEST_F(Workspace, FilesOpenWithTheEntrysCommandLine)
{
    const QString file = home.filePath(u"Cut 3 \u00e9.fcpxml"_qs);
    const QString opener = home.filePath(u"opener"_qs);
    TempHome::writeNotingProgram(opener, home.filePath(u"opened"_qs));
    writeEntry(u"com.example.Opener"_qs, "\"" + QFile::encodeName(opener) + "\" %f");
    ASSERT_TRUE(
        QFWorkspace::shared().openFile(file, u"com.example.Opener"_qs, QFWorkspace::Asynchronous));
    EXPECT_EQ(TempHome::noted(home.filePath(u"opened"_qs)), u'[' + file + u']');
}

} // namespace
