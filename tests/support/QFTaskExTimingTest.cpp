// The time-outs of the process runner, measured on the wall clock: run under the
// "slow" label, outside make test, since a loaded machine may stretch them.

#include "support/QFTaskEx.h"

#include "LoggedTest.h"
#include "QtPrinters.h"

#include <QElapsedTimer>

namespace {

using TaskTest = LoggedTest;

TEST_F(TaskTest, TimeoutTruncatesToWholeSecondsAndTerminates)
{
    QElapsedTimer timer;
    timer.start();
    const std::optional<QByteArray> data =
        QFTaskEx::dataFromTask("/bin/sh", {"-c", "echo started; exec sleep 10"}, 2.9);
    const qint64 ms = timer.elapsed();
    EXPECT_GE(ms, 1900);
    EXPECT_LT(ms, 2800);
    EXPECT_EQ(data, QByteArray("started\n")); // what it printed before the end
    EXPECT_TRUE(log().contains(" - Task /bin/sh timed out. Terminating..."));

    timer.restart();
    EXPECT_EQ(QFTaskEx::terminationCodeFromTask("/bin/sleep", {"10"}, 1.0), 15);
    EXPECT_LT(timer.elapsed(), 1900);
}

TEST_F(TaskTest, RunTaskTimeoutNeverFindsItsProcess)
{
    QElapsedTimer timer;
    timer.start();
    EXPECT_TRUE(QFTaskEx::runTask("/bin/sleep", {"2"}, 1.0));
    EXPECT_GE(timer.elapsed(), 1900);
    EXPECT_FALSE(log().contains("timed out"));
}

} // namespace
