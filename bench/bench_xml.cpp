#include "FcpxmlGenerator.h"
#include "xml/QFXMLParser.h"
#include "xml/XmlDocument.h"

#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

namespace {

const QString spineClips = QStringLiteral(
    "./spine[1]/(clip | mc-clip | asset-clip | sync-clip | gap | title | ref-clip | video)");

// One evaluation of the primary-storyline query; the complexity fit shows that the
// rewritten union step stays linear in the number of clips.
void UnionStepQueryOnSpine(benchmark::State &state)
{
    const auto document = XmlDocument::fromBytes(generateFcpxml(int(state.range(0))));
    const XmlNode sequence = QFXMLParser::nodeForQuery(
        QStringLiteral("./fcpxml[1]/library[1]/event[1]/project[1]/sequence[1]"), document->node());
    qsizetype found = 0;
    for (auto _ : state) {
        found = QFXMLParser::nodesForQuery(spineClips, sequence).size();
        benchmark::DoNotOptimize(found);
    }
    state.counters["elements"] = double(found);
    state.SetComplexityN(state.range(0));
}
BENCHMARK(UnionStepQueryOnSpine)
    ->RangeMultiplier(2)
    ->Range(2500, 20000)
    ->Unit(benchmark::kMillisecond)
    ->Complexity();

// The per-marker kind of lookup: one attribute of one clip.
void AttributeQueryOnClip(benchmark::State &state)
{
    const auto document = XmlDocument::fromBytes(generateFcpxml(100));
    const XmlNode clip = QFXMLParser::nodeForQuery(
        QStringLiteral("./fcpxml[1]/library[1]//spine[1]/clip[1]"), document->node());
    for (auto _ : state)
        benchmark::DoNotOptimize(
            QFXMLParser::stringValueForQuery(QStringLiteral("./@offset[1]"), clip));
}
BENCHMARK(AttributeQueryOnClip)->Unit(benchmark::kMicrosecond);

/// A 20 MB FCPXML written once for the parse-and-print comparison.
class TwentyMegabytes
{
public:
    TwentyMegabytes()
    {
        path = dir.filePath(QStringLiteral("stress.fcpxml"));
        QFile file(path);
        if (file.open(QIODevice::WriteOnly))
            size = file.write(generateFcpxml(clipCountForSize(20.0)));
    }
    QTemporaryDir dir;
    QString path;
    qint64 size = 0;
};

TwentyMegabytes &twentyMegabytes()
{
    static TwentyMegabytes file;
    return file;
}

void ParseAndPrettyPrint20MB(benchmark::State &state)
{
    const TwentyMegabytes &input = twentyMegabytes();
    for (auto _ : state) {
        const auto document = XmlDocument::fromFile(input.path);
        benchmark::DoNotOptimize(document->toPrettyXml().size());
    }
    state.SetBytesProcessed(state.iterations() * input.size);
    state.counters["file_MB"] = double(input.size) / 1e6;
}
BENCHMARK(ParseAndPrettyPrint20MB)->Unit(benchmark::kMillisecond)->Iterations(5);

// The reference: the same work by `xmllint --format`, output to /dev/null.
void XmllintFormat20MB(benchmark::State &state)
{
    const TwentyMegabytes &input = twentyMegabytes();
    for (auto _ : state) {
        QProcess xmllint;
        xmllint.setStandardOutputFile(QProcess::nullDevice());
        QElapsedTimer timer;
        timer.start();
        xmllint.start(QStringLiteral("xmllint"), {QStringLiteral("--format"), input.path});
        if (!xmllint.waitForFinished(60'000) || xmllint.exitCode() != 0) {
            state.SkipWithError("xmllint failed");
            break;
        }
        state.SetIterationTime(double(timer.nsecsElapsed()) / 1e9);
    }
    state.SetBytesProcessed(state.iterations() * input.size);
}
BENCHMARK(XmllintFormat20MB)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(5);

} // namespace
