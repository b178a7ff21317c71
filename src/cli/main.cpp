// cuebridge-import: the import of the document window, on the terminal.

#include "cli/CommandLine.h"
#include "cli/TerminalHost.h"

#include "diagnostics/QFLog.h"
#include "fcp7link/QFAppleEvents.h"
#include "import/FCP7Import.h"
#include "import/MarkerListText.h"
#include "import/TargetDiscovery.h"
#include "import/UserTextEscaping.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QThread>

#include <cstdio>

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
    if (line.output && extension == u"xml") {
        const QFileInfo output(*line.output);
        if (output.isDir())
            return QStringLiteral("--output %1 is a folder; give the path of the file to write")
                .arg(*line.output);
        if (!QFileInfo(output.absolutePath()).isDir())
            return QStringLiteral("--output %1: the folder %2 does not exist")
                .arg(*line.output, output.absolutePath());
    }
    return QString();
}

/// The uuid to import into: the item named by --sequence (its represented object,
/// or failing that its title), else the first item listed. When discovery listed
/// nothing, the procedure gets what was asked for (or nothing) and says itself why it
/// finds no sequence. Nothing when --sequence names no listed item.
std::optional<QString> chooseUuid(const QList<SequenceItem> &items,
                                  const std::optional<QString> &wanted)
{
    if (items.isEmpty())
        return wanted.value_or(QStringLiteral(""));
    if (!wanted)
        return items.first().representedObject;
    for (const SequenceItem &item : items) {
        if (item.representedObject == *wanted)
            return item.representedObject;
    }
    for (const SequenceItem &item : items) {
        if (item.title == *wanted)
            return item.representedObject;
    }
    return std::nullopt;
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
    if (kind.isFCPX) {
        printError(QStringLiteral("importing into Final Cut Pro X files is not available in this "
                                  "version; %1 was left as it is")
                       .arg(line.target));
        return failureStatus;
    }
    if (line.todo || line.open)
        host.progress(QStringLiteral("--todo and --open apply to Final Cut Pro X targets only; "
                                     "ignored"));

    const std::optional<QString> uuid = chooseUuid(items, line.sequence);
    if (!uuid) {
        printError(QStringLiteral("%1 holds no item \"%2\"; --list shows what it holds")
                       .arg(line.target, *line.sequence));
        return usageStatus;
    }

    ImportSettings settings;
    settings.filename = line.target;
    settings.clearExistingMarkers = line.clear;
    settings.frameOffset = line.offset;
    settings.frameOffsetUnitIndex = line.unitIndex;
    settings.uuid = *uuid;
    settings.outputPath = line.output;
    FCP7Import::startProcessingWithSettings(host, settings);

    const int status = TerminalHost::exitStatus(host.alerts());
    if (status == 3)
        host.progress(QStringLiteral("Nothing was imported: %1 holds no complete marker line (or "
                                     "no sequence was chosen).")
                          .arg(line.markerList));
    if (status == 0 && kind.isXMLFile && !line.quiet)
        std::printf(
            "Result: %s\n",
            QFileInfo(line.output.value_or(line.target)).absoluteFilePath().toUtf8().constData());
    return status;
}

} // namespace

int main(int argc, char *argv[])
{
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
