// The freedesktop workspace: desktop entries decide which program runs and opens files.

#include "support/QFWorkspace.h"

#include "QtPrinters.h"
#include "TempHome.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QThread>

#include <gtest/gtest.h>

namespace {

class Workspace : public testing::Test
{
protected:
    void writeEntry(const QString &id, const QByteArray &exec)
    {
        const QString folder = QDir(home.path()).filePath(u".local/share/applications"_qs);
        QDir().mkpath(folder);
        TempHome::write(folder + u'/' + id + u".desktop"_qs,
                        "[Desktop Entry]\nType=Application\nName=Tool\nExec=" + exec +
                            "\n"
                            "[Desktop Action Other]\nExec=/bin/false\n");
    }

    TempHome home;
};

TEST_F(Workspace, AnApplicationRunsWhenItsEntrysProgramRuns)
{
    // A program of its own name, so that no other process can pass for it.
    const QString program = QDir(home.path()).filePath(u"cuebridge-test-sleeper"_qs);
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
    const QString file = QDir(home.path()).filePath(u"Cut 3 \u00e9.fcpxml"_qs);
    const QString out = QDir(home.path()).filePath(u"opened.txt"_qs);
    const QString script =
        home.file(u"opener"_qs, "#!/bin/sh\nprintf '%s' \"$1\" > \"$0.tmp\" && mv \"$0.tmp\" \"" +
                                    QFile::encodeName(out) + "\"\n");
    QFile::setPermissions(script, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    writeEntry(u"com.example.Opener"_qs, "\"" + QFile::encodeName(script) + "\" %f");
    ASSERT_TRUE(
        QFWorkspace::shared().openFile(file, u"com.example.Opener"_qs, QFWorkspace::Asynchronous));
    const QDeadlineTimer deadline(10'000);
    while (!QFile::exists(out) && !deadline.hasExpired())
        QThread::msleep(10);
    EXPECT_EQ(QString::fromUtf8(TempHome::read(out)), file);
}

} // namespace
