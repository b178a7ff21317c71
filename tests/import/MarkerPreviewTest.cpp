// The dry run behind the window's marker table and --dry-run: every line of the list
// with where its marker would land or why it is skipped, and nothing written.

#include "import/MarkerPreview.h"

#include "LoggedTest.h"
#include "QtPrinters.h"

#include <cstring>

namespace {

const QByteArray list = "#\tTrack\tName\tComment\tStart\tDuration\tColor\n"
                        "1\tV1\tIn\tc\t01:00:01:00\t00:00:00:00\tMauve\n"
                        "2\tV1\tBad\tc\t01:00:01:30\t00:00:00:00\tRed\n"
                        "3\tV1\tLate\tc\t02:00:00:00\t00:00:00:00\tRed\n"
                        "4\tV1\tcut short\n";

const QByteArray xmeml = R"(<?xml version="1.0"?><xmeml version="5"><sequence id="S">
<uuid>U</uuid><name>Cut</name><timecode><rate><timebase>25</timebase></rate>
<frame>90000</frame></timecode></sequence></xmeml>)";

const QByteArray fcpxml = R"(<?xml version="1.0"?><fcpxml version="1.8"><resources>
<format id="r1" frameDuration="100/2500s"/></resources><library><event name="E">
<project name="P"><sequence format="r1" tcStart="3600s"><spine>
<gap name="G" offset="3600s" duration="60s"/></spine></sequence></project></event></library>
</fcpxml>)";

using State = MarkerPreview::Row::State;

ImportSettings settingsFor(const QString &target, std::optional<QString> uuid = std::nullopt,
                           std::optional<QString> xpath = std::nullopt)
{
    ImportSettings settings;
    settings.filename = target;
    settings.uuid = std::move(uuid);
    settings.sequenceXPath = std::move(xpath);
    return settings;
}

TEST_F(LoggedTest, EachLineShowsWhereItsMarkerLandsOrWhyNotAndNothingIsWrittenOrLogged)
{
    const QString markers = home.file(u"m.txt"_s, list);
    const struct
    {
        const char *name;
        TargetKind kind;
        ImportSettings settings;
        QList<std::pair<State, QString>> rows; ///< the status's start, line 2 onwards
    } cases[] = {
        {"XMEML",
         {.isXMLFile = true, .isSequenceOnly = true},
         settingsFor(home.file(u"cut.xml"_s, xmeml), u"U"_s),
         {{State::Lands, u"sequence “S-Cuebridge” at frame 25"_s},
          {State::Skipped, u"start timecode \"01:00:01:30\" has frame 30"_s},
          {State::Lands, u"sequence “S-Cuebridge” at frame 90000"_s},
          {State::Skipped, u"seven columns expected, found 3"_s}}},
        {"FCPX",
         {.isFCPX = true, .isXMLFile = true},
         settingsFor(home.file(u"cut.fcpxml"_s, fcpxml), std::nullopt,
                     u"/fcpxml/library/event/project/sequence"_s),
         {{State::Lands, u"gap “G” at 2500/2500s"_s},
          {State::Skipped, u"start timecode \"01:00:01:30\" has frame 30"_s},
          {State::Skipped, u"outside every clip: 02:00:00:00"_s},
          {State::Skipped, u"seven columns expected, found 3"_s}}},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        const QByteArray before = TempHome::read(c.settings.filename);
        const qsizetype logged = log().size();
        const MarkerPreview preview = MarkerPreview::make(c.kind, markers, c.settings);
        EXPECT_EQ(preview.problem, QString());
        ASSERT_EQ(preview.rows.size(), c.rows.size());
        for (qsizetype i = 0; i < c.rows.size(); ++i) {
            EXPECT_EQ(preview.rows[i].line, i + 2);
            EXPECT_EQ(preview.rows[i].state, c.rows[i].first) << i;
            EXPECT_TRUE(preview.rows[i].status.startsWith(c.rows[i].second))
                << preview.rows[i].status.toStdString();
        }
        EXPECT_EQ(preview.rows[0].note.isEmpty(), c.kind.isFCPX) << "the unknown colour";
        EXPECT_EQ(TempHome::read(c.settings.filename), before);
        EXPECT_EQ(log().size(), logged);
    }
}

TEST_F(LoggedTest, AListOrTargetThatCannotTellSaysWhyInTheSummary)
{
    const QString target = home.file(u"cut.xml"_s, xmeml);
    const struct
    {
        QByteArray list;
        ImportSettings settings;
        const char *summary;
        const char *problem;
    } cases[] = {
        {list, settingsFor(QString()), "3 markers · 1 line skipped · UTF-8", "Choose a target"},
        {list, settingsFor(target), "3 markers · 1 line skipped · UTF-8", "The target lists no"},
        {"#\tTrack\tName\tComment\tStart\tDuration\tColor\n", settingsFor(target),
         "0 markers · UTF-8", "The list holds no marker."},
        {QByteArray("\x00\x01\xfe\x80\n", 5) + QByteArray(300, '\x9c'), settingsFor(target),
         "0 markers · UTF-8", "The file is none of the forms read here"},
        {"1\tV1\t25 \x80\tc\t01:00:01:00\t00:00:00:00\tRed\n" // no header: skipped
         "2\tV1\tNi\xf1o\tc\t01:00:01:00\t00:00:00:00\tRed\n",
         settingsFor(target, u"U"_s), "1 marker · 1 line skipped · Windows-1252", ""},
    };
    for (const auto &c : cases) {
        const MarkerPreview preview = MarkerPreview::make(
            {.isXMLFile = true, .isSequenceOnly = true}, home.file(u"m.txt"_s, c.list), c.settings);
        EXPECT_EQ(preview.summary(), QString::fromUtf8(c.summary));
        EXPECT_EQ(preview.problem.left(qsizetype(std::strlen(c.problem))),
                  QLatin1StringView(c.problem));
    }
}

} // namespace
