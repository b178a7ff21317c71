// Reading markers back out of FCPXML documents.

#include "xml/QFFCPXMLMarkerReader.h"

#include "QtPrinters.h"
#include "TempHome.h"

#include <gtest/gtest.h>

namespace {

const QString library = QStringLiteral(CUEBRIDGE_TEST_DATA "/library.fcpxml");

/// "name@seconds" or "name@timecode" for each record; "{}" for a record without keys.
QStringList describe(const QList<QVariantMap> &records)
{
    QStringList descriptions;
    for (const QVariantMap &record : records) {
        if (record.isEmpty()) {
            descriptions << u"{}"_s;
            continue;
        }
        const QVariant position = record.contains(u"seconds"_s) ? record.value(u"seconds"_s)
                                                                : record.value(u"startTimecode"_s);
        descriptions << record.value(u"name"_s).toString() + u'@' + position.toString();
    }
    return descriptions;
}

// The clip "Interview" uses its media from 5 s for 20 s at timeline 100 s: "Ten" (10 s)
// lands at 105 s, "Too early" (4 s) is skipped, "At the end" (25 s) is kept. The
// asset clips are not among the element names read, so their markers never count.
TEST(QFFCPXMLMarkerReader, MarkersOfTheLibraryAreReadInDocumentOrder)
{
    const struct
    {
        bool useTimecode;
        bool stripDuplicates;
        bool mainStorylineOnly;
        qint64 relativeHour;
        QStringList expected;
    } cases[] = {
        {false,
         false,
         true,
         -1,
         {"Ten@105", "At the end@120", "Ten again@105", "In the gap@150", "An hour in@3661"}},
        {false,
         false,
         false,
         -1,
         {"Connected@7", "Ten@105", "At the end@120", "Ten again@105", "In the gap@150",
          "An hour in@3661"}},
        {false, true, true, -1, {"Ten@105", "At the end@120", "In the gap@150", "An hour in@3661"}},
        {true,
         false,
         true,
         -1,
         {"Ten@00:01:45:00", "At the end@00:02:00:00", "Ten again@00:01:45:00",
          "In the gap@00:02:30:00", "An hour in@01:01:01:00"}},
        // Relative hour 1: hour 1 becomes 0 and hour 0 (below it) becomes 0 + 1.
        {true,
         true,
         true,
         1,
         {"Ten@01:01:45:00", "At the end@01:02:00:00", "In the gap@01:02:30:00",
          "An hour in@00:01:01:00"}},
        {true,
         true,
         true,
         0,
         {"Ten@00:01:45:00", "At the end@00:02:00:00", "In the gap@00:02:30:00",
          "An hour in@01:01:01:00"}}};
    for (const auto &c : cases) {
        const QList<QVariantMap> records = QFFCPXMLMarkerReader::markersFromXMLFile(
            library, c.useTimecode, c.stripDuplicates, c.mainStorylineOnly, c.relativeHour);
        EXPECT_EQ(describe(records), c.expected) << "row " << &c - cases;
        // Seconds are numbers, timecodes strings.
        EXPECT_EQ(
            records.value(0).value(c.useTimecode ? u"startTimecode"_s : u"seconds"_s).typeId(),
            c.useTimecode ? QMetaType::QString : QMetaType::Double);
    }
}

TEST(QFFCPXMLMarkerReader, ProjectFormMissingAndBrokenFilesGiveNothing)
{
    TempHome home;
    for (const QString &path :
         {QStringLiteral(CUEBRIDGE_TEST_DATA "/project.fcpxml"), home.filePath(u"missing.fcpxml"_s),
          home.file(u"broken.fcpxml"_s, "<fcpxml><library><event>"), home.path()})
        EXPECT_TRUE(QFFCPXMLMarkerReader::markersFromXMLFile(path, true).isEmpty())
            << path.toStdString();
}

TEST(QFFCPXMLMarkerReader, SequenceStartDropFrameAndMissingValues)
{
    TempHome home;
    const QString path = home.file(u"dropframe.fcpxml"_s, R"(<fcpxml version="1.8">
  <resources><format id="r1" frameDuration="1001/30000s"/></resources>
  <library><event><project name="P"><sequence format="r1" tcStart="10s" tcFormat="DF"><spine>
    <clip offset="0s" duration="120s">
      <marker start="60s" value="A minute"/>
      <marker start="30s"/>
    </clip>
  </spine></sequence></project></event></library>
</fcpxml>)");
    // 60 s is 1798 frames at 29.97; the start adds ceil(299.7) = 300: frame 2098 is 00:01:10;00.
    EXPECT_EQ(describe(QFFCPXMLMarkerReader::markersFromXMLFile(path, true)),
              (QStringList{"A minute@00:01:10;00", "{}"}));
    // With a relative hour the drop-frame separator becomes a colon.
    EXPECT_EQ(describe(QFFCPXMLMarkerReader::markersFromXMLFile(path, true, false, true, 5)),
              (QStringList{"A minute@05:01:10:00", "{}"}));
    EXPECT_EQ(describe(QFFCPXMLMarkerReader::markersFromXMLFile(path, false)),
              (QStringList{"A minute@60", "{}"}));
}

} // namespace
