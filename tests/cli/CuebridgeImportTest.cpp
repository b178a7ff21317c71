// cuebridge-import run as a user runs it, on copies of the files in tests/data.

#include "xml/XmlDocument.h"

#include "QtPrinters.h"
#include "TempHome.h"

#include <QProcess>

namespace {

struct Outcome
{
    int status = -1;
    QString out;
    QString err;
};

using Record = std::array<const char *, 5>; // name, comment, start, duration, colour
using InOut = std::pair<int, int>;

/// The text of the first node the path finds from the node.
QString valueAt(const XmlNode &node, const QString &path)
{
    return node.nodesForXPath(path).value(0).stringValue();
}

QByteArray markerList(std::initializer_list<Record> records, const char *newline = "\n")
{
    QByteArray text = "#\tTrack\tName\tComment\tStart\tDuration\tColor";
    int index = 1;
    for (const Record &r : records)
        text += newline + QByteArray::number(index++) + "\tV1\t" + r[0] + '\t' + r[1] + '\t' +
                r[2] + '\t' + r[3] + '\t' + r[4];
    return text + newline;
}

class Cli : public testing::Test
{
protected:
    QString markers(const QByteArray &bytes) { return home.file(u"markers.txt"_s, bytes); }

    static Outcome run(const QStringList &arguments)
    {
        QProcess process;
        process.start(QStringLiteral(CUEBRIDGE_IMPORT), arguments);
        EXPECT_TRUE(process.waitForFinished(60000)) << arguments.join(u' ').toStdString();
        return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
                QString::fromUtf8(process.readAllStandardError())};
    }

    /// The in and out of each marker the import added to the sequence (the copy in the
    /// bin for a project).
    static QList<InOut> inOut(const QString &file)
    {
        const auto doc = XmlDocument::fromFile(file);
        QList<InOut> list;
        if (!doc)
            return list;
        for (const XmlNode &m : doc->rootElement().nodesForXPath(
                 u"sequence/marker|project/children/bin/children/sequence/marker"_s)) {
            if (valueAt(m, u"name"_s) != u"Sequence marker")
                list.append({valueAt(m, u"in"_s).toInt(), valueAt(m, u"out"_s).toInt()});
        }
        return list;
    }

    TempHome home;
};

TEST_F(Cli, OutputGoesElsewhereAndListShowsTheItems)
{
    const QString target = home.copyOfData(u"project.xml"_s);
    const QByteArray before = TempHome::read(target);
    const QString windowsLog = home.file(u".local/state/Quillfen/Cuebridge.1.log"_s, "window");
    const Outcome result =
        run({u"--output"_s, home.filePath(u"out.xml"_s),
             markers(markerList({{"A", "c", "01:00:10:00", "00:00:05:00", "Red"}})), target});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(TempHome::read(target), before);
    EXPECT_EQ(inOut(home.filePath(u"out.xml"_s)), QList<InOut>({{250, 375}}));
    EXPECT_TRUE(result.out.contains(u"Result: "_s + home.filePath(u"out.xml"_s)));
    EXPECT_EQ(TempHome::read(windowsLog), "window") << "the window's log is not rotated";

    // A dry run prints where each marker would land, writes nothing, and exits as the
    // import would.
    const Outcome dry = run({u"--dry-run"_s,
                             markers(markerList({{"A", "c", "01:00:10:00", "00:00:05:00", "Red"},
                                                 {"B", "c", "01:00:10", "00:00:05:00", "Red"}})),
                             target});
    EXPECT_EQ(dry.status, 1);
    EXPECT_EQ(dry.out, u"2\tA\tc\t01:00:10:00\t00:00:05:00\tRed\tmarker\tsequence “Cut 3 "
                       u"-Cuebridge” at frame 250\n3\tB\tc\t01:00:10\t00:00:05:00\tRed\tmarker\t"
                       u"skipped: start timecode \"01:00:10\" is not HH:MM:SS:FF\n"_s);
    EXPECT_TRUE(dry.err.contains(u"2 markers · 1 line skipped · UTF-8"_s)) << dry.err.toStdString();
    EXPECT_EQ(TempHome::read(target), before);

    const Outcome list = run({u"--list"_s, target}); // no marker list needed
    EXPECT_EQ(list.status, 0);
    EXPECT_EQ(list.out, u"Cut 3\t0F2D6C31-4B1E-4C55-9C3E-2A1B8F7D0001\n"
                        u"No uuid\t/xmeml/project/children/sequence[2]\n");
}

// --- Final Cut Pro X targets ------------------------------------------------------------

const QString librarySequence = u"/fcpxml/library/event/project/sequence"_s;

/// The path printed after "Result: ".
QString resultPath(const Outcome &outcome)
{
    const qsizetype at = outcome.out.indexOf(u"Result: ");
    return at < 0 ? QString() : outcome.out.mid(at + 8).trimmed();
}

TEST_F(Cli, AnFcpxLibraryIsListedImportedIntoACopyAndHandedToTheEditorsDesktopEntry)
{
    const QString target = home.copyOfData(u"library.fcpxml"_s);
    EXPECT_EQ(run({u"--list"_s, target}).out, u"Cut 3\t%1\n"_s.arg(librarySequence));
    // A stand-in for the editor that notes which file it was given.
    const QString opened = home.filePath(u"opened"_s);
    const QString editor = home.filePath(u"editor.sh"_s);
    TempHome::writeNotingProgram(editor, opened);
    home.file(u".local/share/applications/com.apple.FinalCut.desktop"_s,
              "[Desktop Entry]\nType=Application\nName=Final Cut Pro\nExec=" + editor.toUtf8() +
                  " %f\n");

    const Outcome result =
        run({u"--open"_s, u"--todo"_s, u"--sequence"_s, librarySequence,
             markers(markerList({{"A", "b", "00:01:50:00", "00:00:05:00", "Red"}})), target});
    EXPECT_EQ(result.status, 0) << result.err.toStdString();
    EXPECT_TRUE(result.out.startsWith(u"Markers successfully imported: A copy of your project "
                                      u"was sent to Final Cut Pro."));
    const QString written = resultPath(result);
    EXPECT_TRUE(written.startsWith(home.tempPath()) && written.endsWith(u".fcpxml"))
        << result.out.toStdString();
    EXPECT_TRUE(TempHome::read(written).contains(
        R"(<marker start="37500/2500s" duration="100/2500s" value="A -  b" completed="0"/>)"));
    EXPECT_EQ(TempHome::noted(opened), u'[' + written + u']');
}

TEST_F(Cli, OtherEditorsMarkerExportsLandAsOurListsDo)
{
    // The same three markers in each editor's export, and a line that gives none.
    const std::pair<const char *, QString> exports[] = {
        {"avid.txt", u"Line 4: no timecode in the second column"_s},
        {"premiere.csv", u"Line 5: the In column holds no timecode"_s},
        {"resolve.edl", u"Line 13: neither an event nor a marker line"_s}};
    for (const auto &[file, skipped] : exports) {
        SCOPED_TRACE(file);
        const QString xmeml = home.copyOfData(u"project.xml"_s);
        const Outcome result =
            run({home.copyOfData(u"exports/"_s + QLatin1StringView(file)), xmeml});
        EXPECT_EQ(result.status, 1) << result.err.toStdString();
        EXPECT_TRUE(result.err.contains(skipped)) << result.err.toStdString();
        EXPECT_EQ(inOut(xmeml), QList<InOut>({{250, 255}, {500, -1}, {750, 751}}));
    }
}

TEST_F(Cli, TheMarkersOfAnFcpxDocumentComeOutAsAListThatPutsThemBackInPlace)
{
    const QString library = home.copyOfData(u"library.fcpxml"_s);
    const Outcome printed = run({u"--markers"_s, library});
    EXPECT_EQ(printed.status, 0) << printed.err.toStdString();
    EXPECT_TRUE(printed.out.startsWith(u"#\tTrack\tName\tComment\tStart\tDuration\tColor\n"
                                       u"1\tV1\tTen\t\t00:01:45:00\t00:00:00:00\tRed\n"_s))
        << printed.out.toStdString();

    const Outcome imported = run({markers(printed.out.toUtf8()), library});
    const QByteArray output = TempHome::read(resultPath(imported));
    // Ten seconds into the interview, and 61 into the closing clip, as before.
    EXPECT_TRUE(output.contains(R"(<marker start="25000/2500s" duration="100/2500s" value="Ten")"));
    EXPECT_TRUE(
        output.contains(R"(<marker start="152500/2500s" duration="100/2500s" value="An hour in")"));
    EXPECT_EQ(run({u"--markers"_s, home.copyOfData(u"project.xml"_s)}).status, 64);
}

} // namespace
