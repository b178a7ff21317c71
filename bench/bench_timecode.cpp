#include "time/QFTimecode.h"

#include <benchmark/benchmark.h>

#include <QStringList>

namespace {

void FrameCountFromTimecode(benchmark::State &state)
{
    const bool dropFrame = state.range(0) != 0;
    const QStringList inputs = {"01:00:10:00", "00:59:59;29", "10:23:45;12", "23:59:59:24"};
    qsizetype i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            QFTimecode::frameCountFromTimecode(inputs[i++ & 3], 30, dropFrame, dropFrame, 90000));
    }
}
BENCHMARK(FrameCountFromTimecode)->Arg(0)->Arg(1)->ArgName("dropFrame");

void TimecodeFromFrameCount(benchmark::State &state)
{
    const bool dropFrame = state.range(0) != 0;
    quint64 frame = 107892;
    for (auto _ : state) {
        QString text = QFTimecode::timecodeFromFrameCount(frame++, 30, dropFrame, dropFrame, 0);
        benchmark::DoNotOptimize(text);
    }
}
BENCHMARK(TimecodeFromFrameCount)->Arg(0)->Arg(1)->ArgName("dropFrame");

} // namespace
