// cuebridge-import: the import of the document window, on the terminal.

#include "cli/CommandLine.h"
#include "cli/TerminalHost.h"

#include "diagnostics/QFLog.h"
#include "fcp7link/QFAppleEvents.h"
#include "import/FCP7Import.h"
#include "import/FCPXImport.h"
#include "import/MarkerListText.h"
#include "import/TargetDiscovery.h"
#include "import/UserTextEscaping.h"
#include "support/QFFileContents.h"
#include "support/QFFileManager.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QThread>

#include <cstdio>

#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace {

constexpr int usageStatus = 64;
constexpr int failureStatus = 2;

void printError(const QString &text)
{
    std::fputs(QStringLiteral("cuebridge-import: %1\n").arg(text).toUtf8().constData(), stderr);
}

/// What must hold before anything is read: both paths usable, options that fit the
/// target. An empty text when all is well.
QString checkPaths(const CommandLine &line)
{
    const QFileInfo markers(line.markerList);
    if (!markers.exists())
        return QStringLiteral("%1: no such file").arg(line.markerList);
    if (markers.isDir())
        return QStringLiteral("%1 is a folder, not a marker list").arg(line.markerList);
    if (!markers.isReadable())
        return QStringLiteral("%1 cannot be read (permission denied)").arg(line.markerList);
    if (markers.size() > MarkerListText::maximumFileSize)
        return QStringLiteral("%1 is %2 MB, too large for a marker list (up to %3 MB are read)")
            .arg(line.markerList)
            .arg(markers.size() / (1024 * 1024))
            .arg(MarkerListText::maximumFileSize / (1024 * 1024));

    const QFileInfo target(line.target);
    const QString extension = target.suffix().toLower();
    if (!target.exists())
        return QStringLiteral("%1: no such file").arg(line.target);
    if (target.isDir() && extension != u"fcpxmld")
        return QStringLiteral("%1 is a folder, not an XML file or Final Cut Pro project")
            .arg(line.target);
    if (!target.isReadable())
        return QStringLiteral("%1 cannot be read (permission denied)").arg(line.target);
    const bool fileTarget =
        extension == u"xml" || extension == u"fcpxml" || extension == u"fcpxmld";
    if (line.output && !fileTarget)
        return QStringLiteral("--output needs an XML file as the target; a Final Cut Pro 7 "
                              "project gets its result inside the editor");
    if (line.output) {
        const QFileInfo output(*line.output);
        if (output.isDir())
            return QStringLiteral("--output %1 is a folder; give the path of the file to write")
                .arg(*line.output);
        if (!QFileInfo(output.absolutePath()).isDir())
            return QStringLiteral("--output %1: the folder %2 does not exist")
                .arg(*line.output, output.absolutePath());
        if (extension != u"xml" && output.exists() &&
            output.canonicalFilePath() == target.canonicalFilePath())
            return QStringLiteral("--output %1 is the target itself; a Final Cut Pro X "
                                  "document is never rewritten, give another path")
                .arg(*line.output);
        if (extension == u"fcpxmld" && output.exists())
            return QStringLiteral("--output %1 already exists; a bundle is not written over")
                .arg(*line.output);
    }
    return QString();
}

/// The item to import into: the one named by --sequence (its represented object, or
/// failing that its title), else the first listed. When discovery listed nothing, the
/// procedure gets what was asked for (or nothing) and says itself why it finds no
/// sequence. Nothing when --sequence names no listed item.
std::optional<SequenceItem> chooseItem(const QList<SequenceItem> &items,
                                       const std::optional<QString> &wanted)
{
    if (items.isEmpty()) {
        const QString asked = wanted.value_or(QStringLiteral(""));
        return SequenceItem{asked, asked};
    }
    if (!wanted)
        return items.first();
    for (const SequenceItem &item : items) {
        if (item.representedObject == *wanted)
            return item;
    }
    for (const SequenceItem &item : items) {
        if (item.title == *wanted)
            return item;
    }
    return std::nullopt;
}

/// Copies an FCPX result (file or bundle) to where --output asked for it.
bool deliverFCPXResult(const QString &result, const QString &output)
{
    QFError error;
    bool copied = false;
    if (QFileInfo(result).isDir()) {
        copied = QFFileManager::copyFile(result, output, false);
    } else {
        const std::optional<QByteArray> bytes = QFFileContents::read(result, &error);
        copied = bytes && QFFileContents::writeAtomically(output, *bytes, &error);
    }
    if (!copied)
        printError(QStringLiteral("the result %1 could not be copied to %2%3")
                       .arg(result, output,
                            error.domain.isEmpty()
                                ? QString()
                                : QStringLiteral(": ") + error.localizedDescription()));
    return copied;
}

void printResult(const QString &path)
{
    std::printf("Result: %s\n", QFileInfo(path).absoluteFilePath().toUtf8().constData());
}

int run(const CommandLine &line)
{
    TerminalHost host(line.markerList, line.quiet);
    const TargetKind &kind = host.targetKind();
    TargetDiscovery::openFilename(host, line.target);
    if (!kind.isXMLFile && !QFAppleEvents::isFCPRunning()) {
        printError(QStringLiteral("Final Cut Pro 7 is not running: the project %1 can only be "
                                  "reached through it. Open it there, or export its sequence as "
                                  "XML and import into that file.")
                       .arg(line.target));
        return failureStatus;
    }
    TargetDiscovery::updateProject(host, line.target);
    const QList<SequenceItem> items = host.items();

    if (line.list) {
        for (const SequenceItem &item : items)
            std::printf("%s\t%s\n", item.title.toUtf8().constData(),
                        item.representedObject.toUtf8().constData());
        return host.alerts().isEmpty() ? 0 : failureStatus;
    }
    if (!host.alerts().isEmpty())
        return failureStatus; // discovery already said why
    if (!kind.isFCPX && (line.todo || line.open))
        host.progress(QStringLiteral("--todo and --open apply to Final Cut Pro X targets only; "
                                     "ignored"));

    const std::optional<SequenceItem> item = chooseItem(items, line.sequence);
    if (!item) {
        printError(QStringLiteral("%1 holds no item \"%2\"; --list shows what it holds")
                       .arg(line.target, *line.sequence));
        return usageStatus;
    }

    ImportSettings settings;
    settings.filename = line.target;
    settings.clearExistingMarkers = line.clear;
    settings.frameOffset = line.offset;
    settings.frameOffsetUnitIndex = line.unitIndex;
    QString result;
    if (kind.isFCPX) {
        // Choosing an event clip imports onto that clip rather than a storyline.
        host.targetKind().isEvent = item->image == SequenceItem::Image::FCPXEvent;
        settings.sequenceXPath = item->representedObject;
        settings.todoMarkersEnabled = line.todo;
        settings.handOffResult = line.open;
        result = FCPXImport::startProcessingFCPXWithSettings(host, settings);
    } else {
        settings.uuid = item->representedObject;
        settings.outputPath = line.output;
        FCP7Import::startProcessingWithSettings(host, settings);
        if (kind.isXMLFile)
            result = line.output.value_or(line.target);
    }

    int status = TerminalHost::exitStatus(host.alerts());
    if (status == 3)
        host.progress(QStringLiteral("Nothing was imported: %1 holds no complete marker line (or "
                                     "no sequence was chosen).")
                          .arg(line.markerList));
    const bool written = status == 0 || (status == 1 && kind.isFCPX);
    if (!written || result.isEmpty())
        return status;
    if (kind.isFCPX) {
        const QString file = QFileInfo(result).isDir()
                                 ? QDir(result).filePath(QStringLiteral("Info.fcpxml"))
                                 : result;
        if (!QFileInfo(file).isFile()) {
            printError(QStringLiteral("the result could not be written to %1").arg(file));
            return failureStatus;
        }
    }
    if (kind.isFCPX && line.output) {
        if (!deliverFCPXResult(result, *line.output))
            return failureStatus;
        result = *line.output;
    }
    if (!line.quiet)
        printResult(result);
    return status;
}

} // namespace

int main(int argc, char *argv[])
{
#ifdef __GLIBC__
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
    if (const QString problem = checkPaths(line); !problem.isEmpty()) {
        printError(problem);
        return usageStatus;
    }

    // The same log as the window's, under the application's name.
    QFLog::sharedController().setAppName(QStringLiteral("Cuebridge"));
    QFLog::createNewLog(QString(), true);
    QFLog::installTerminateHandler();
    UserTextEscaping::registerDefaults();

    // The procedures run on a worker thread as they do under the window, and reach
    // the terminal through the main thread.
    int status = failureStatus;
    QThread *worker = QThread::create([&line, &status] { status = run(line); });
    QObject::connect(worker, &QThread::finished, &app, &QCoreApplication::quit);
    worker->start();
    app.exec();
    worker->wait();
    delete worker;
    QFLog::finishWriting();
    QFLog::willTerminate();
    return status;
}
