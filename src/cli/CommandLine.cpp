#include "CommandLine.h"

#include "import/ImportTarget.h"
#include "import/MarkerListText.h"
#include "import/TextEncoding.h"

#include <QCommandLineParser>
#include <QFileInfo>

namespace {

const QStringList units{QStringLiteral("frames"), QStringLiteral("seconds"),
                        QStringLiteral("minutes"), QStringLiteral("hours")};

} // namespace

QString CommandLine::helpText()
{
    return QStringLiteral(
        "Usage: cuebridge-import [options] MARKER_LIST TARGET\n"
        "       cuebridge-import --list TARGET\n"
        "       cuebridge-import --markers FCPX_TARGET\n"
        "\n"
        "Imports a tab-separated marker list into a Final Cut Pro 7 XML (XMEML) file, a\n"
        "project open in Final Cut Pro 7, or a Final Cut Pro X .fcpxml file or .fcpxmld\n"
        "bundle, as the Cuebridge window does. An XMEML file is rewritten (or written to\n"
        "--output); a Final Cut Pro X document is never written: a renamed copy with the\n"
        "markers goes to the temporary folder, and its path is printed.\n"
        "\n"
        "Options:\n"
        "  --list            print what TARGET holds, one item a line: title, a tab, the\n"
        "                    item to pass to --sequence; then exit\n"
        "  --markers         print the markers on the main storyline of a Final Cut Pro X\n"
        "                    .fcpxml file or .fcpxmld bundle as a marker list, to import\n"
        "                    into another target; then exit\n"
        "  --sequence ID     the item to import into (as --list prints it: a sequence\n"
        "                    uuid, or for FCPX a project's or event clip's XPath; a\n"
        "                    title also works); default: the first item listed\n"
        "  --dry-run         print where each marker would land (line, name, comment,\n"
        "                    start, duration, colour, kind, tab-separated, the status\n"
        "                    last) and write nothing; the exit status is the import's\n"
        "  --offset N        frame offset (integer, may be negative); default 0\n"
        "  --unit U          frames | seconds | minutes | hours; default frames\n"
        "  --clear           clear existing markers first\n"
        "  --todo            Final Cut Pro X targets: to-do markers\n"
        "  --output PATH     write the result to PATH instead of in place (XMEML) or of\n"
        "                    the temporary folder (FCPX: a file, or a bundle)\n"
        "  --open            Final Cut Pro X targets: hand the result to the editor (or\n"
        "                    the default application)\n"
        "  --encoding NAME   read the marker list in this encoding (an iconv name such\n"
        "                    as WINDOWS-1252 or MACINTOSH) instead of detecting it\n"
        "  -q, --quiet       print only the outcome\n"
        "  -h, --help        show this help\n"
        "\n"
        "The outcome is printed as one line on standard output, failures on standard\n"
        "error; the details of every run go to the log cuebridge-import.1.log of the\n"
        "maker's log folder (~/.local/state/Quillfen).\n"
        "\n"
        "Exit status: 0 markers imported; 1 some markers failed to import; 2 the import\n"
        "failed (the message says why); 3 nothing to import (fewer than one marker, or\n"
        "no sequence chosen); 64 a usage error.\n");
}

CommandLine CommandLine::parse(const QStringList &arguments)
{
    CommandLine line;
    QCommandLineParser parser;
    parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
    const QCommandLineOption list(QStringLiteral("list"));
    const QCommandLineOption markers(QStringLiteral("markers"));
    const QCommandLineOption sequence(QStringLiteral("sequence"), QString(), QStringLiteral("ID"));
    const QCommandLineOption offset(QStringLiteral("offset"), QString(), QStringLiteral("N"));
    const QCommandLineOption unit(QStringLiteral("unit"), QString(), QStringLiteral("U"));
    const QCommandLineOption clear(QStringLiteral("clear"));
    const QCommandLineOption todo(QStringLiteral("todo"));
    const QCommandLineOption output(QStringLiteral("output"), QString(), QStringLiteral("PATH"));
    const QCommandLineOption open(QStringLiteral("open"));
    const QCommandLineOption encoding(QStringLiteral("encoding"), QString(),
                                      QStringLiteral("NAME"));
    const QCommandLineOption dryRun(QStringLiteral("dry-run"));
    const QCommandLineOption quiet(QStringList{QStringLiteral("q"), QStringLiteral("quiet")});
    const QCommandLineOption help(QStringList{QStringLiteral("h"), QStringLiteral("help")});
    parser.addOptions({list, markers, sequence, dryRun, offset, unit, clear, todo, output, open,
                       encoding, quiet, help});

    if (!parser.parse(arguments)) {
        line.error = parser.errorText();
        return line;
    }
    if (parser.isSet(help)) {
        line.help = true;
        return line;
    }
    line.list = parser.isSet(list);
    line.dryRun = parser.isSet(dryRun);
    line.printsMarkers = parser.isSet(markers);
    const bool targetOnly = line.list || line.printsMarkers;
    QStringList positional = parser.positionalArguments();
    // Listing reads no marker list; one given anyway is left unread.
    if (targetOnly && positional.size() == 1)
        positional.prepend(QString());
    if (positional.size() != 2) {
        line.error =
            positional.size() < 2
                ? (targetOnly ? QStringLiteral("a target is needed")
                              : QStringLiteral("a marker list and a target are needed"))
                : QStringLiteral("too many arguments: %1").arg(positional.mid(2).join(u' '));
        return line;
    }
    line.markerList = positional[0];
    line.target = positional[1];
    line.clear = parser.isSet(clear);
    line.todo = parser.isSet(todo);
    line.open = parser.isSet(open);
    line.quiet = parser.isSet(quiet);
    if (parser.isSet(sequence))
        line.sequence = parser.value(sequence);
    if (parser.isSet(output)) {
        line.output = parser.value(output);
        if (line.output->isEmpty())
            line.error = QStringLiteral("--output needs a path");
    }
    if (parser.isSet(encoding)) {
        line.encoding = parser.value(encoding).toUpper().toLatin1();
        if (TextEncoding::decode(QByteArray(), line.encoding).isNull())
            line.error = QStringLiteral("--encoding: no encoding is called \"%1\" here; "
                                        "`iconv -l` lists them")
                             .arg(parser.value(encoding));
    }
    if (parser.isSet(offset)) {
        bool ok = false;
        line.offset = parser.value(offset).toLongLong(&ok);
        // Beyond a day of frames at any rate is a typing error, not an offset.
        if (!ok || qAbs(line.offset) > 100'000'000)
            line.error = QStringLiteral("--offset needs a whole number between -100000000 "
                                        "and 100000000, not \"%1\"")
                             .arg(parser.value(offset));
    }
    if (parser.isSet(unit)) {
        const qsizetype index = units.indexOf(parser.value(unit).toLower());
        line.unit = offsetUnitForIndex(index);
        if (index < 0)
            line.error = QStringLiteral("--unit must be frames, seconds, minutes or hours, not "
                                        "\"%1\"")
                             .arg(parser.value(unit));
    }
    return line;
}

QString CommandLine::checkPaths() const
{
    const QFileInfo markers(markerList);
    if (list || printsMarkers) {
        // Listing reads no marker list.
    } else if (!markers.exists()) {
        return QStringLiteral("%1: no such file").arg(markerList);
    } else if (markers.isDir()) {
        return QStringLiteral("%1 is a folder, not a marker list").arg(markerList);
    } else if (!markers.isReadable()) {
        return QStringLiteral("%1 cannot be read (permission denied)").arg(markerList);
    } else if (markers.size() > MarkerListText::maximumFileSize) {
        return QStringLiteral("%1 is %2 MB, too large for a marker list (up to %3 MB are read)")
            .arg(markerList)
            .arg(markers.size() / (1024 * 1024))
            .arg(MarkerListText::maximumFileSize / (1024 * 1024));
    }

    const QFileInfo targetFile(target);
    const TargetFormat format = targetFormatForPath(target);
    if (!targetFile.exists())
        return QStringLiteral("%1: no such file").arg(target);
    if (targetFile.isDir() && format != TargetFormat::FCPXBundle)
        return QStringLiteral("%1 is a folder, not an XML file or Final Cut Pro project")
            .arg(target);
    if (!targetFile.isReadable())
        return QStringLiteral("%1 cannot be read (permission denied)").arg(target);
    if (printsMarkers && format != TargetFormat::FCPXFile && format != TargetFormat::FCPXBundle)
        return QStringLiteral("--markers reads a Final Cut Pro X .fcpxml file or .fcpxmld "
                              "bundle, not %1")
            .arg(target);
    if (!output)
        return QString();
    if (format == TargetFormat::FCP7Project)
        return QStringLiteral("--output needs an XML file as the target; a Final Cut Pro 7 "
                              "project gets its result inside the editor");
    const QFileInfo outputFile(*output);
    if (outputFile.isDir())
        return QStringLiteral("--output %1 is a folder; give the path of the file to write")
            .arg(*output);
    if (!QFileInfo(outputFile.absolutePath()).isDir())
        return QStringLiteral("--output %1: the folder %2 does not exist")
            .arg(*output, outputFile.absolutePath());
    if (format != TargetFormat::XMEMLFile && outputFile.exists() &&
        outputFile.canonicalFilePath() == targetFile.canonicalFilePath())
        return QStringLiteral("--output %1 is the target itself; a Final Cut Pro X document is "
                              "never rewritten, give another path")
            .arg(*output);
    if (format == TargetFormat::FCPXBundle && outputFile.exists())
        return QStringLiteral("--output %1 already exists; a bundle is not written over")
            .arg(*output);
    return QString();
}
