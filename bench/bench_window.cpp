// How responsive the window stays with a large list and FCPX library: a 10 ms timer on
// the main thread, and the longest gap between two of its ticks from the moment the
// window is up until its marker table is filled from the dry run, and from the click on
// Import until the result's sheet is up.
//
//   cuebridge-window-bench [TSV]
//   (TSV: "import-gap-ms median-import-s ticks table-gap-ms median-table-s open-ms")

#include "AlertSheetPresenter.h"
#include "FcpxmlGenerator.h"
#include "MarkerListGenerator.h"
#include "MarkerTableModel.h"
#include "MyDocument.h"

#include "support/QFLocalPaths.h"
#include "support/QFLog.h"
#include "support/QFUserDefaults.h"
#include "support/QFWorkspace.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QMessageBox>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTimer>
#include <QWindow>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <memory>

using namespace Qt::StringLiterals;

namespace {

constexpr int clips = 20000;
constexpr int markers = 50000;
constexpr int runs = 3;

/// The result stays where it was written: nothing is launched.
class QuietWorkspace : public QFWorkspace
{
public:
    bool isApplicationRunning(const QString &) override { return false; }
    QString pathForApplication(const QString &) override { return {}; }
    bool openFile(const QString &, const QString &, LaunchOptions) override { return true; }
};

struct Run
{
    qint64 longestGapMs = 0;
    qint64 importMs = 0;
    int ticks = 0;
    qint64 openMs = 0;     // until the window is up and painted once
    qint64 tableGapMs = 0; // from then until its table is filled
    qint64 tableMs = 0;
};

/// Ticks every 10 ms on the main thread and keeps the longest gap between two ticks.
class Ticker
{
public:
    Ticker()
    {
        m_timer.setTimerType(Qt::PreciseTimer);
        QObject::connect(&m_timer, &QTimer::timeout, [this] {
            m_longest = std::max(m_longest, m_sinceTick.restart());
            ++m_ticks;
        });
        m_sinceTick.start();
        m_timer.start(10);
    }
    qint64 longestGapMs() const { return m_longest; }
    int ticks() const { return m_ticks; }

private:
    QTimer m_timer;
    QElapsedTimer m_sinceTick;
    qint64 m_longest = 0;
    int m_ticks = 0;
};

bool serveEventsUntil(const std::function<bool()> &condition)
{
    QElapsedTimer limit;
    limit.start();
    while (!condition()) {
        if (limit.elapsed() > 120000)
            return false;
        QApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents, 5);
    }
    return true;
}

bool write(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

Run importOnce(const QString &listPath, const QString &target)
{
    QFUserDefaults::standardUserDefaults().setObject(target, u"lastProject"_s);
    Run run;
    QElapsedTimer opening;
    opening.start();
    MyDocument document(listPath);
    document.show();
    // The window's making, first layout and paint, which any window costs whatever its
    // list, are reported on their own; the ticks from then on see discovery and the dry
    // run, which began with the window.
    serveEventsUntil(
        [&] { return document.windowHandle() && document.windowHandle()->isExposed(); });
    QApplication::processEvents();
    run.openMs = opening.elapsed();
    auto table = std::make_unique<Ticker>();
    // The table is full once the dry run against the discovered item has answered.
    const auto filled = [&] {
        const MarkerPreview &preview = document.markerTable().preview();
        return preview.rows.size() >= markers && preview.problem.isEmpty();
    };
    if (!serveEventsUntil([&] { return filled() && !document.session().isBusy(); }) ||
        document.session().items().isEmpty()) {
        std::fprintf(stderr, "discovery or the dry run of the library did not finish\n");
        std::exit(1);
    }
    run.tableMs = opening.elapsed();
    run.tableGapMs = table->longestGapMs();
    table.reset();

    QElapsedTimer import;
    import.start();
    Ticker ticker;
    document.findChild<QPushButton *>(u"sendToFCPBtn"_s)->click();
    QMessageBox *sheet = nullptr;
    if (!serveEventsUntil([&] { return (sheet = document.findChild<QMessageBox *>()); })) {
        std::fprintf(stderr, "the import did not end with its sheet\n");
        std::exit(1);
    }
    run.importMs = import.elapsed();
    run.longestGapMs = ticker.longestGapMs();
    run.ticks = ticker.ticks();
    // About one marker in twenty falls on a gap or a title of the generated storyline.
    const QString text = sheet->text();
    if (!text.contains(u"Markers successfully imported"_s) &&
        !text.contains(u"Some markers failed to import"_s)) {
        std::fprintf(stderr, "the import failed: %s\n%s\n", qPrintable(text),
                     qPrintable(sheet->informativeText().left(2000)));
        std::exit(1);
    }
    sheet->buttons().constFirst()->click();
    serveEventsUntil([&] { return !document.session().isBusy(); });
    return run;
}

} // namespace

int main(int argc, char **argv)
{
    QTemporaryDir home;
    // A home of its own, so that the log, the defaults and the result stay inside it.
    for (const char *variable :
         {"XDG_CONFIG_HOME", "XDG_STATE_HOME", "XDG_CACHE_HOME", "XDG_RUNTIME_DIR", "TMPDIR"})
        qputenv(variable, home.path().toUtf8());
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    // As root the log would go to the computer-wide folder: measure an editor's run.
    QFLocalPaths::setRealUserIdForTesting(1000);

    QApplication app(argc, argv);
    QApplication::setOrganizationName(u"Quillfen"_s);
    QApplication::setApplicationName(u"Cuebridge"_s);
    QFLog::createNewLog(QString(), true);
    AlertSheetPresenter alerts;
    QFAlert::setPresenter(&alerts);
    QuietWorkspace workspace;
    QFWorkspace::setSharedForTesting(&workspace);

    const QString list = home.path() + u"/markers.txt"_s;
    const QString library = home.path() + u"/library.fcpxml"_s;
    if (!write(list, generateMarkerList(markers).toUtf8()) ||
        !write(library, generateFcpxml(clips))) {
        std::fprintf(stderr, "cannot write the inputs in %s\n", qPrintable(home.path()));
        return 1;
    }

    QList<Run> all;
    for (int i = 0; i < runs; ++i)
        all.append(importOnce(list, library));
    const auto longestOf = [&all](qint64 Run::*gap) {
        qint64 longest = 0;
        for (const Run &run : all)
            longest = std::max(longest, run.*gap);
        return longest;
    };
    const qint64 longest = longestOf(&Run::longestGapMs);
    const qint64 tableLongest = longestOf(&Run::tableGapMs);
    std::sort(all.begin(), all.end(),
              [](const Run &a, const Run &b) { return a.tableMs < b.tableMs; });
    const double tableSeconds = double(all.at(runs / 2).tableMs) / 1000.0;
    std::sort(all.begin(), all.end(),
              [](const Run &a, const Run &b) { return a.openMs < b.openMs; });
    const qint64 openMs = all.at(runs / 2).openMs;
    std::sort(all.begin(), all.end(),
              [](const Run &a, const Run &b) { return a.importMs < b.importMs; });
    const Run &median = all.at(runs / 2);

    std::printf("%d markers into a %d-clip FCPX library from the window, %d runs:\n"
                "  window up and painted in %lld ms (median)\n"
                "  table: longest gap between 10 ms ticks %lld ms; filled in %.3f s (median)\n"
                "  import: longest gap between 10 ms ticks %lld ms; %.3f s (median), %d ticks\n",
                markers, clips, runs, static_cast<long long>(openMs),
                static_cast<long long>(tableLongest), tableSeconds, static_cast<long long>(longest),
                double(median.importMs) / 1000.0, median.ticks);
    QFLog::finishWriting();
    if (argc > 1) {
        FILE *tsv = std::fopen(argv[1], "w");
        if (!tsv)
            return 1;
        std::fprintf(tsv, "%lld\t%.3f\t%d\t%lld\t%.3f\t%lld\n", static_cast<long long>(longest),
                     double(median.importMs) / 1000.0, median.ticks,
                     static_cast<long long>(tableLongest), tableSeconds,
                     static_cast<long long>(openMs));
        std::fclose(tsv);
    }
    QFAlert::setPresenter(nullptr);
    QFWorkspace::setSharedForTesting(nullptr);
    return 0;
}
