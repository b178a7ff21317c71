// The waiting file operations, measured on the clocks: run under the "slow" label.

#include "support/QFAuthorization.h"
#include "support/QFFileManager.h"

#include "QtPrinters.h"
#include "TempHome.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>

#include <ctime>

namespace {

TEST(WaitingFileOperations, WaitOnTheMainThreadWithoutSpinning)
{
    int argc = 0;
    QCoreApplication app(argc, nullptr);
    TempHome home;
    // The folder cannot be made the ordinary way, and the privileged mkdir "succeeds"
    // without making it: the full time-out is spent waiting for it.
    const QString runner = home.file(u"privileged"_s, "#!/bin/sh\nexit 0\n");
    QFile::setPermissions(runner, QFile::permissions(runner) | QFile::ExeOwner);
    QFAuthorization::setPrivilegedRunnerForTesting(runner);
    TempHome::write(home.path() + "/file", "in the way");

    const std::clock_t cpu = std::clock();
    QElapsedTimer wall;
    wall.start();
    EXPECT_FALSE(QFFileManager::createDirectory(home.path() + "/file/sub", 1));
    EXPECT_GE(wall.elapsed(), 1000);
    EXPECT_LT(double(std::clock() - cpu) / CLOCKS_PER_SEC, 0.25) << "processor time while waiting";
    QFAuthorization::setPrivilegedRunnerForTesting("/usr/bin/pkexec");
}

} // namespace
