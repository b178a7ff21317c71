#pragma once

// A test of an import that may hand its result to the editor: a private home and log,
// and a workspace that records what it was asked to open instead of opening it.

#include "support/QFWorkspace.h"

#include "LoggedTest.h"

#include <QDir>
#include <QStringList>

class RecordingWorkspace : public QFWorkspace
{
public:
    bool isApplicationRunning(const QString &) override { return false; }
    QString pathForApplication(const QString &) override { return QString(); }
    bool openFile(const QString &path, const QString &bundleIdentifier,
                  LaunchOptions options) override
    {
        opened << QStringLiteral("%1 with %2%3")
                      .arg(path, bundleIdentifier,
                           options.testFlag(Asynchronous) ? u" async"_qs : u""_qs);
        return false;
    }
    QStringList opened;
};

class HandOffTest : public LoggedTest
{
protected:
    void SetUp() override
    {
        LoggedTest::SetUp();
        QFWorkspace::setSharedForTesting(&workspace);
    }
    void TearDown() override
    {
        QFWorkspace::setSharedForTesting(nullptr);
        LoggedTest::TearDown();
    }

    /// Writes a file of the test's home; its path.
    QString file(const QString &name, const QByteArray &bytes)
    {
        const QString path = QDir(home.path()).filePath(name);
        TempHome::write(path, bytes);
        return path;
    }

    RecordingWorkspace workspace;
};
