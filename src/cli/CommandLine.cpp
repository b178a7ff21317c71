#include "CommandLine.h"

#include <QCommandLineParser>

namespace {

const QStringList units{QStringLiteral("frames"), QStringLiteral("seconds"),
                        QStringLiteral("minutes"), QStringLiteral("hours")};

} // namespace

QString CommandLine::helpText()
{
    return QStringLiteral(
        "Usage: cuebridge-import [options] MARKER_LIST TARGET\n"
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
        "  --sequence ID     the item to import into (as --list prints it: a sequence\n"
        "                    uuid, or for FCPX a project's or event clip's XPath; a\n"
        "                    title also works); default: the first item listed\n"
        "  --offset N        frame offset (integer, may be negative); default 0\n"
        "  --unit U          frames | seconds | minutes | hours; default frames\n"
        "  --clear           clear existing markers first\n"
        "  --todo            Final Cut Pro X targets: to-do markers\n"
        "  --output PATH     write the result to PATH instead of in place (XMEML); copy\n"
        "                    the result file or bundle to PATH (FCPX)\n"
        "  --open            Final Cut Pro X targets: hand the result to the editor (or\n"
        "                    the default application)\n"
        "  -q, --quiet       print only the outcome\n"
        "  -h, --help        show this help\n"
        "\n"
        "The outcome is printed as one line on standard output, failures on standard\n"
        "error; the details of every run go to the Cuebridge log.\n"
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
    const QCommandLineOption sequence(QStringLiteral("sequence"), QString(), QStringLiteral("ID"));
    const QCommandLineOption offset(QStringLiteral("offset"), QString(), QStringLiteral("N"));
    const QCommandLineOption unit(QStringLiteral("unit"), QString(), QStringLiteral("U"));
    const QCommandLineOption clear(QStringLiteral("clear"));
    const QCommandLineOption todo(QStringLiteral("todo"));
    const QCommandLineOption output(QStringLiteral("output"), QString(), QStringLiteral("PATH"));
    const QCommandLineOption open(QStringLiteral("open"));
    const QCommandLineOption quiet(QStringList{QStringLiteral("q"), QStringLiteral("quiet")});
    const QCommandLineOption help(QStringList{QStringLiteral("h"), QStringLiteral("help")});
    parser.addOptions({list, sequence, offset, unit, clear, todo, output, open, quiet, help});

    if (!parser.parse(arguments)) {
        line.error = parser.errorText();
        return line;
    }
    if (parser.isSet(help)) {
        line.help = true;
        return line;
    }
    const QStringList positional = parser.positionalArguments();
    if (positional.size() != 2) {
        line.error =
            positional.size() < 2
                ? QStringLiteral("a marker list and a target are needed")
                : QStringLiteral("too many arguments: %1").arg(positional.mid(2).join(u' '));
        return line;
    }
    line.markerList = positional[0];
    line.target = positional[1];
    line.list = parser.isSet(list);
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
        line.unitIndex = int(units.indexOf(parser.value(unit).toLower()));
        if (line.unitIndex < 0)
            line.error = QStringLiteral("--unit must be frames, seconds, minutes or hours, not "
                                        "\"%1\"")
                             .arg(parser.value(unit));
    }
    return line;
}
