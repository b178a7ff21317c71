#include "support/QFTaskEx.h"
#include "support/QFLog.h"
#include "support/QFProcess.h"

#include "LoggedTest.h"
#include "QtPrinters.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QSet>

#include <condition_variable>
#include <cstring>
#include <mutex>

#include <unistd.h>

namespace {

using TaskTest = LoggedTest;

TEST_F(TaskTest, RunAndWaitAndTheExitStatus)
{
    EXPECT_TRUE(QFTaskEx::runTask("/bin/echo", {"hi"}));
    QFProcessPtr process;
    EXPECT_TRUE(QFTaskEx::runTask("/bin/sh", {"-c", "exit 4"}, &process));
    ASSERT_TRUE(process);
    EXPECT_FALSE(process->isRunning());
    EXPECT_EQ(process->terminationStatus(), 4); // not examined by runTask, but kept
    // A bare name is not checked and fails at launch, logged as an exception.
    EXPECT_FALSE(QFTaskEx::runTask("ls", {}));
    EXPECT_TRUE(log().contains(" - Exception running task ls: "));
    EXPECT_FALSE(QFTaskEx::runTask("/no/such/program", {}));
    EXPECT_TRUE(log().contains(" - Error: /no/such/program is not executable"));
    EXPECT_FALSE(QFTaskEx::runTask(home.path(), {}));
    EXPECT_FALSE(QFTaskEx::runTaskAndReturn(QString(), {}));
    QFProcessPtr running = QFTaskEx::runTaskAndReturn("/bin/sleep", {"5"});
    ASSERT_TRUE(running);
    EXPECT_TRUE(running->isRunning());
    running->terminate();
    EXPECT_EQ(running->waitUntilExit(), 15); // SIGTERM
    EXPECT_EQ(QFTaskEx::terminationCodeFromTask("/bin/sh", {"-c", "exit 3"}), 3);
    EXPECT_EQ(QFTaskEx::terminationCodeFromTask("/bin/true", {}), 0);
    EXPECT_EQ(QFTaskEx::terminationCodeFromTask(home.path(), {}), -1); // a folder
    EXPECT_EQ(QFTaskEx::terminationCodeFromTask(QString(), {}), -1);
    EXPECT_EQ(QFTaskEx::terminationCodeFromTask("/no/such/program", {}), -1);
}

/// The pipes among a process's open files, as "pipe:[inode]".
QSet<QString> pipesIn(const QString &fdFolder)
{
    QSet<QString> pipes;
    for (const QString &fd : QDir(fdFolder).entryList(QDir::AllEntries | QDir::System)) {
        char target[64] = {};
        const QByteArray path = QFile::encodeName(fdFolder + u'/' + fd);
        if (::readlink(path.constData(), target, sizeof target - 1) > 0 &&
            std::strncmp(target, "pipe:", 5) == 0)
            pipes.insert(QString::fromLatin1(target));
    }
    return pipes;
}

TEST_F(TaskTest, PipesOfOneChildStayOutOfTheOthers)
{
    // Another child inheriting a pipe's end would keep its reader waiting until that
    // child ends too. The pipes are told by their inodes: other threads of the test may
    // open files of their own meanwhile.
    const QSet<QString> before = pipesIn(u"/proc/self/fd"_s);
    QFProcess running("/bin/sleep", {"10"});
    running.setStandardOutput(QFProcess::Stream::Pipe);
    running.setStandardError(QFProcess::Stream::Pipe);
    running.setStandardInputPipe(true);
    ASSERT_TRUE(running.launch());
    const QSet<QString> ofRunning = pipesIn(u"/proc/self/fd"_s) - before;
    EXPECT_FALSE(ofRunning.isEmpty());
    const QString listing = QString::fromLatin1(
        QFTaskEx::dataFromTask("/bin/ls", {"-l", "/proc/self/fd"}).value_or(QByteArray()));
    EXPECT_TRUE(listing.contains(u"->")) << listing.toStdString();
    for (const QString &pipe : ofRunning)
        EXPECT_FALSE(listing.contains(pipe)) << pipe.toStdString() << " in\n"
                                             << listing.toStdString();
    running.terminate();
    EXPECT_EQ(running.waitUntilExit(), 15);
}

TEST_F(TaskTest, CaptureOutputElseErrors)
{
    EXPECT_EQ(QFTaskEx::stringFromTask("/bin/echo", {"hello", "world"}), "hello world\n");
    EXPECT_EQ(QFTaskEx::dataFromTask("/bin/sh", {"-c", "echo oops >&2"}), QByteArray("oops\n"));
    EXPECT_EQ(QFTaskEx::dataFromTask("/bin/sh", {"-c", "echo out; echo err >&2"}),
              QByteArray("out\n"));
    const std::optional<QByteArray> nothing = QFTaskEx::dataFromTask("/bin/true", {});
    ASSERT_TRUE(nothing.has_value()); // empty, not none
    EXPECT_TRUE(nothing->isEmpty());
    EXPECT_TRUE(QFTaskEx::stringFromTask("/bin/true", {}).isEmpty());
    EXPECT_FALSE(QFTaskEx::dataFromTask("/no/such/program", {}).has_value());
    EXPECT_EQ(QFTaskEx::stringFromTask("/no/such/program", {}), "");
    EXPECT_EQ(QFTaskEx::dataFromTask("/usr/bin/env", {}, nullptr, QStringList{"ONLY=this"}),
              QByteArray("ONLY=this\n"));
    // Standard input is an empty pipe: a program reading it ends at once.
    EXPECT_EQ(QFTaskEx::dataFromTask("/bin/cat", {}), QByteArray());
    // Without error capture, errors go nowhere.
    EXPECT_EQ(QFTaskEx::dataFromTask("/bin/sh", {"-c", "echo err >&2"}, nullptr, std::nullopt, true,
                                     false),
              QByteArray());
    // Strings default to seven-bit ASCII; megabytes come whole.
    EXPECT_EQ(QFTaskEx::stringFromTask("/bin/printf", {"caf\\303\\251"}), u"caf\uFFFD\uFFFD"_s);
    EXPECT_EQ(QFTaskEx::stringFromTask("/bin/printf", {"caf\\303\\251"}, QFTaskEx::Encoding::UTF8),
              QString::fromUtf8("café"));
    const std::optional<QByteArray> data =
        QFTaskEx::dataFromTask("/bin/sh", {"-c", "head -c 6000000 /dev/zero | tr '\\000' x"});
    ASSERT_TRUE(data);
    EXPECT_EQ(data->size(), 6000000);
}

TEST_F(TaskTest, StreamingDeliversChunksThenAnEmptyOneAndAMissingProgramNothing)
{
    std::mutex mutex;
    std::condition_variable done;
    QList<QByteArray> chunks;
    QVariant seenObject;
    bool finished = false;
    std::shared_ptr<QFTaskEx> runner = QFTaskEx::create();
    runner->asyncDataFromTask(
        "/bin/sh", {"-c", "printf one; sleep 0.3; printf two; sleep 0.3; printf three"},
        [&](const QByteArray &chunk, QFTaskEx *from, const QVariant &object) {
            std::lock_guard lock(mutex);
            EXPECT_EQ(from, runner.get());
            chunks << chunk;
            seenObject = object;
            if (chunk.isEmpty()) {
                finished = true;
                done.notify_all();
            }
        },
        QVariant(7));
    std::unique_lock lock(mutex);
    ASSERT_TRUE(done.wait_for(lock, std::chrono::seconds(10), [&] { return finished; }));
    // How the output is cut into chunks depends on the scheduler; their order and the
    // final empty chunk do not.
    EXPECT_EQ(chunks.join(), "onetwothree");
    EXPECT_EQ(chunks.last(), QByteArray());
    EXPECT_EQ(seenObject, QVariant(7));
    lock.unlock();
    for (int i = 0; i < 250 && runner->theTask(); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_FALSE(runner->theTask());

    // A missing program is logged and delivers nothing.
    std::atomic<int> calls = 0;
    runner->asyncDataFromTask("/no/such/program", {},
                              [&](const QByteArray &, QFTaskEx *, const QVariant &) { ++calls; });
    for (int i = 0; i < 100 && !log().contains("Unable to launch async task"); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_TRUE(log().contains(
        " - Unable to launch async task - task does not exist or is not executable"));
    EXPECT_EQ(calls, 0);
}

} // namespace
