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
        home.file(u".local/share/applications/"_s + id + u".desktop"_s,
                  "[Desktop Entry]\nType=Application\nName=Tool\nExec=" + exec +
                      "\n"
                      "[Desktop Action Other]\nExec=/bin/false\n");
    }

    TempHome home;
};

TEST_F(Workspace, AnApplicationRunsWhenItsEntrysProgramRuns)
{
    // A program of its own name, so that no other process can pass for it.
    const QString program = home.filePath(u"cuebridge-test-sleeper"_s);
    ASSERT_TRUE(QFile::copy(u"/bin/sleep"_s, program));
    writeEntry(u"com.example.Sleeper"_s, QFile::encodeName(program) + " %f");
    EXPECT_FALSE(QFWorkspace::shared().isApplicationRunning(u"com.example.Sleeper"_s));
    EXPECT_FALSE(QFWorkspace::shared().isApplicationRunning(u"com.example.Missing"_s));

    QProcess sleeper;
    sleeper.start(program, {u"30"_s});
    ASSERT_TRUE(sleeper.waitForStarted());
    EXPECT_TRUE(QFWorkspace::shared().isApplicationRunning(u"com.example.Sleeper"_s));
    sleeper.kill();
    sleeper.waitForFinished();
    EXPECT_TRUE(QFWorkspace::shared().pathForApplication(u"com.example.Sleeper"_s).isEmpty());
}

TEST_F(Workspace, FilesOpenWithTheEntrysCommandLine)
{
    const QString file = home.filePath(u"Cut 3 \u00e9.fcpxml"_s);
    const QString opener = home.filePath(u"opener"_s);
    TempHome::writeNotingProgram(opener, home.filePath(u"opened"_s));
    writeEntry(u"com.example.Opener"_s, "\"" + QFile::encodeName(opener) + "\" %f");
    ASSERT_TRUE(
        QFWorkspace::shared().openFile(file, u"com.example.Opener"_s, QFWorkspace::Asynchronous));
    EXPECT_EQ(TempHome::noted(home.filePath(u"opened"_s)), u'[' + file + u']');

    // Without an entry xdg-open opens it, unless it knows no application for it.
    TempHome::write(file, "<fcpxml/>");
    const QByteArray path = qgetenv("PATH");
    qputenv("PATH", home.filePath(u"bin"_s).toUtf8() + ":/usr/bin:/bin");
    TempHome::writeNotingProgram(home.filePath(u"bin/xdg-open"_s), home.filePath(u"opened"_s));
    const QString mime = home.filePath(u"bin/xdg-mime"_s);
    for (const QByteArray &application : {QByteArray("opener.desktop"), QByteArray()}) {
        TempHome::write(mime,
                        "#!/bin/sh\n[ $2 = filetype ] && echo text/xml || echo " + application);
        QFile::setPermissions(mime, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        EXPECT_EQ(QFWorkspace::shared().openFile(file, u"com.example.None"_s, {}),
                  !application.isEmpty());
    }
    qputenv("PATH", path);
}

} // namespace
