#include "MarkerListGenerator.h"
#include "import/QFFCP7MarkerListParser.h"

#include <benchmark/benchmark.h>

namespace {

void ParseMarkersFromText(benchmark::State &state)
{
    const QString text = generateMarkerList(int(state.range(0)));
    const qint64 utf8Bytes = text.toUtf8().size();
    for (auto _ : state) {
        const QList<QFMarkerRecord> records = QFFCP7MarkerListParser::parseMarkersFromText(text);
        benchmark::DoNotOptimize(records.size());
    }
    // Throughput in bytes of the file as it lies on disk (UTF-8).
    state.SetBytesProcessed(state.iterations() * utf8Bytes);
    state.counters["file_MB"] = double(utf8Bytes) / 1e6;
}
BENCHMARK(ParseMarkersFromText)->Arg(100000)->Unit(benchmark::kMillisecond)->ArgName("records");

} // namespace
