#include "support/QFLocalPaths.h"
#include "support/QFLog.h"

#include <benchmark/benchmark.h>

#include <QTemporaryDir>

#include <thread>

namespace {

/// A log in a throw-away folder for the whole benchmark run.
void useTemporaryLog()
{
    static QTemporaryDir dir;
    static bool started = [] {
        qputenv("XDG_STATE_HOME", dir.path().toUtf8());
        qputenv("XDG_CONFIG_HOME", dir.path().toUtf8());
        // As root the log would go to the computer-wide folder, usually missing: measure
        // the user's log, as an editor runs the program.
        QFLocalPaths::setRealUserIdForTesting(1000);
        QFLog::createNewLog(QString(), true);
        return true;
    }();
    Q_UNUSED(started);
}

// 100,000 short entries from a worker thread, each waiting until it is written.
void AppendLogShortFromWorker(benchmark::State &state)
{
    useTemporaryLog();
    constexpr int entries = 100000;
    for (auto _ : state) {
        std::thread worker([] {
            for (int i = 0; i < entries; ++i)
                QFLog::appendLog(u"Marker start pos: %li", qint64(i));
        });
        worker.join();
    }
    state.SetItemsProcessed(state.iterations() * entries);
}
BENCHMARK(AppendLogShortFromWorker)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(3);

// Long entries never wait: the caller only formats and queues.
void AppendLogLongQueued(benchmark::State &state)
{
    useTemporaryLog();
    const QString comment(120, u'c');
    qint64 i = 0;
    for (auto _ : state)
        QFLog::appendLog(u"Comment: %@ (%li)", comment, i++);
    QFLog::finishWriting(); // outside the timed loop
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(AppendLogLongQueued)->Iterations(300000);

} // namespace
