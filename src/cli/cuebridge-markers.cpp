// Prints the markers of a marker list with their frame positions, as a quick look at
// what an import would place: start and end frame at 25 fps and at 29.97 drop frame.

#include "import/MarkerListText.h"
#include "import/QFFCP7MarkerListParser.h"
#include "time/QFTimecode.h"

#include <QCoreApplication>
#include <QFile>
#include <QTextStream>

namespace {

struct Rate
{
    const char *label;
    int timebase;
    bool ntsc;
    bool dropFrame;
};

constexpr Rate rates[] = {{"25 fps", 25, false, false}, {"29.97 DF", 30, true, true}};

QString framesAt(const Rate &rate, const QFMarkerRecord &record)
{
    const quint64 start =
        QFTimecode::frameCountFromTimecode(record[4], rate.timebase, rate.ntsc, rate.dropFrame, 0);
    const quint64 duration =
        QFTimecode::frameCountFromTimecode(record[5], rate.timebase, rate.ntsc, rate.dropFrame, 0);
    return QStringLiteral("%1 %2-%3")
        .arg(QLatin1StringView(rate.label))
        .arg(start)
        .arg(start + duration);
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QTextStream out(stdout);
    QTextStream err(stderr);
    const QStringList args = app.arguments();
    if (args.size() != 2 || args[1].startsWith(u'-')) {
        err << "usage: cuebridge-markers MARKER_LIST\n"
               "Prints each marker of a tab-separated marker list with its start and end frame\n"
               "at 25 fps and at 29.97 drop frame.\n";
        return 64;
    }
    QFile file(args[1]);
    if (!file.open(QIODevice::ReadOnly)) {
        err << "cuebridge-markers: cannot read " << args[1] << ": " << file.errorString() << '\n';
        return 1;
    }
    const QByteArray bytes = file.readAll();
    const auto encoding = MarkerListText::detectEncoding(bytes);
    if (!encoding) {
        err << "cuebridge-markers: " << args[1]
            << " is neither UTF-8 nor marked with a byte order mark; reading it as UTF-16 "
               "little-endian\n";
    }
    const QString text =
        MarkerListText::decode(bytes, encoding.value_or(QStringConverter::Utf16LE));

    const QList<QFMarkerRecord> records = QFFCP7MarkerListParser::parseMarkersFromText(text);
    if (records.size() < 2) {
        err << "cuebridge-markers: no markers in " << args[1]
            << " (a header line and at least one line of seven tab-separated fields)\n";
        return 1;
    }
    out << records.size() - 1 << " markers in " << args[1] << "\n\n";
    for (qsizetype i = 1; i < records.size(); ++i) {
        const QFMarkerRecord &record = records[i];
        QString comment = record[3];
        comment.replace(u'\n', QStringLiteral(" / "));
        out << qSetFieldWidth(3) << i << qSetFieldWidth(0) << "  " << record[2] << " [" << record[6]
            << "]  " << record[4] << " +" << record[5];
        for (const Rate &rate : rates)
            out << "  | " << framesAt(rate, record);
        out << "\n     " << comment << '\n';
    }
    return 0;
}
