// cuebridge-import: the import of the document window, on the terminal.

#include "CommandLine.h"
#include "TerminalAlertPresenter.h"
#include "TerminalHost.h"
#include "TerminalOutput.h"

#include "import/ImportSession.h"
#include "import/UserTextEscaping.h"
#include "support/QFAlert.h"
#include "support/QFLog.h"

#include <QCoreApplication>
#include <QFileInfo>

#include <cstdio>

#ifdef __GLIBC__
#include <malloc.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <string>
#endif

namespace {

using namespace TerminalOutput;

#ifdef __GLIBC__
/// Holds, in the run started again, the caller's GLIBC_TUNABLES: "=value", or empty
/// when it had none.
constexpr char callersTunables[] = "CUEBRIDGE_IMPORT_CALLERS_TUNABLES";

/// A large document is almost all fresh memory, and where the kernel gives huge pages
/// only on request (transparent huge pages set to "madvise") every 4 KB of it is a page
/// fault of its own: a third of a parse, more on virtual machines. glibc asks for huge
/// pages for its heap when its settings say so, and reads them from the environment
/// only as a program starts: the program starts itself once more with that setting.
/// What it starts in turn gets the caller's environment back.
void startAgainWithHugePagesForTheHeap(char *argv[])
{
    if (const char *original = std::getenv(callersTunables)) {
        if (*original == '=')
            setenv("GLIBC_TUNABLES", original + 1, 1);
        else
            unsetenv("GLIBC_TUNABLES");
        unsetenv(callersTunables);
        return;
    }
    const char *tunables = std::getenv("GLIBC_TUNABLES");
    if (tunables && std::strstr(tunables, "glibc.malloc.hugetlb"))
        return; // the caller chose
    const std::string original = tunables ? std::string(tunables) : std::string();
    setenv(callersTunables, tunables ? ("=" + original).c_str() : "", 1);
    setenv("GLIBC_TUNABLES",
           (tunables ? original + ":" : std::string()).append("glibc.malloc.hugetlb=1").c_str(), 1);
    execv("/proc/self/exe", argv);
    // Not started again: go on as this run is.
    if (tunables)
        setenv("GLIBC_TUNABLES", original.c_str(), 1);
    else
        unsetenv("GLIBC_TUNABLES");
    unsetenv(callersTunables);
}
#endif

/// The dry run's table on standard output, its summary on standard error; the exit
/// status the import would end with.
int printPreview(const MarkerPreview &preview)
{
    for (const QString &row : preview.tableLines())
        std::printf("%s\n", row.toUtf8().constData());
    printError(preview.summary());
    if (!preview.problem.isEmpty())
        printError(preview.problem);
    if (preview.rows.isEmpty() || (!preview.problem.isEmpty() && preview.markerCount() > 0))
        return failureStatus;
    if (preview.markerCount() == 0)
        return nothingStatus;
    return preview.skippedCount() > 0 ? partlyStatus : 0;
}

int run(const CommandLine &line)
{
    if (line.printsMarkers)
        return printMarkers(line.target);
    if (ImportSession::needsMissingEditor(line.target)) {
        printError(QStringLiteral("Final Cut Pro 7 is not running: the project %1 can only be "
                                  "reached through it. Open it there, or export its sequence as "
                                  "XML and import into that file.")
                       .arg(line.target));
        return failureStatus;
    }
    TerminalHost host(line.markerList, line.quiet);
    ImportSession session(line.markerList);
    host.follow(session);
    session.openFilename(line.target);
    session.waitForIdle();
    host.showAlert(session.discoveryOutcome());
    const bool discovered = !session.discoveryOutcome().hasAlert(); // the alert said why not
    if (discovered && !session.targetProblem().isEmpty())
        printError(QStringLiteral("%1: %2").arg(line.target, session.targetProblem()));
    if (line.list) {
        for (const SequenceItem &item : session.items())
            std::printf("%s\t%s\n", item.title.toUtf8().constData(),
                        item.representedObject.toUtf8().constData());
        return discovered ? 0 : failureStatus;
    }
    if (!discovered)
        return failureStatus;
    const bool fcpx = session.targetKind().isFCPX;
    if (!fcpx && (line.todo || line.open))
        host.progress(QStringLiteral("--todo and --open apply to Final Cut Pro X targets only; "
                                     "ignored"));
    if (line.sequence && !session.chooseItemNamed(*line.sequence)) {
        printError(QStringLiteral("%1 holds no item \"%2\"; --list shows what it holds")
                       .arg(line.target, *line.sequence));
        return usageStatus;
    }
    if (!line.sequence && !session.items().isEmpty())
        session.chooseItem(session.items().first());

    // The run ends with this import: its document is left to the end of the process.
    const ImportOptions options{line.clear,  line.offset, line.unit,     line.todo,
                                line.output, line.open,   line.encoding, true};
    if (line.dryRun)
        return printPreview(session.preview(options));
    session.sendToFCP(options);
    session.waitForIdle();
    const ImportOutcome outcome = session.lastOutcome();
    const int status = TerminalHost::exitStatus(outcome);
    host.showAlert(outcome);
    host.printReport(outcome.report);
    if (outcome.status == ImportOutcome::Status::NothingImported && !outcome.hasAlert())
        printError(session.items().isEmpty() && !line.sequence
                       ? QStringLiteral("Nothing was imported: %1 lists no sequence to import "
                                        "into; name one with --sequence.")
                             .arg(line.target)
                       : QStringLiteral("Nothing was imported: %1 holds no complete marker "
                                        "line.")
                             .arg(line.markerList));
    if (outcome.resultPath.isEmpty())
        return status;
    if (!line.quiet)
        std::printf("Result: %s\n",
                    QFileInfo(outcome.resultPath).absoluteFilePath().toUtf8().constData());
    return status;
}

} // namespace

int main(int argc, char *argv[])
{
#ifdef __GLIBC__
    startAgainWithHugePagesForTheHeap(argv);
    // The import runs on a worker thread, and glibc gives each thread a heap of its own
    // that grows a few pages per system call: ten thousand of them for a large
    // document. The main heap grows in large steps; one thread works at a time anyway.
    mallopt(M_ARENA_MAX, 1);
    // A document is hundreds of thousands of small blocks. Kept in fast bins when
    // freed, they are gathered again and again as larger blocks are asked for, which
    // took a quarter of a large import; without fast bins they merge as they go.
    mallopt(M_MXFAST, 0);
#endif
    QCoreApplication app(argc, argv);
    TerminalAlertPresenter alerts;
    QFAlert::setPresenter(&alerts);
    const CommandLine line = CommandLine::parse(app.arguments());
    if (line.help) {
        std::fputs(CommandLine::helpText().toUtf8().constData(), stdout);
        return 0;
    }
    if (!line.error.isEmpty()) {
        printError(line.error);
        std::fputs("Try 'cuebridge-import --help' for more information.\n", stderr);
        return usageStatus;
    }
    if (const QString problem = line.checkPaths(); !problem.isEmpty()) {
        printError(problem);
        return usageStatus;
    }

    // A log of its own: a run here never rotates the log of a running window.
    QFLog::sharedController().setAppName(QStringLiteral("cuebridge-import"));
    QFLog::createNewLog(QString(), true);
    QFLog::installTerminateHandler();
    UserTextEscaping::registerDefaults();

    const int status = run(line);
    QFLog::finishWriting();
    QFLog::willTerminate();
    return status;
}
