// The clip search of the FCPX import: whatever the clips, the logarithmic search
// answers what a scan in document order answers.

#include "import/FCPXPlacement.h"
#include "time/QFFCPXMLParser.h"
#include "xml/XmlDocument.h"

#include <gtest/gtest.h>

#include <QRandomGenerator>

#include <functional>

namespace {

constexpr double fps = 25.0;

struct Storyline
{
    const char *name;
    /// The time attributes of the next clip; cursor is where the previous one ended,
    /// in frames.
    std::function<QString(QRandomGenerator &, int &cursor)> clip;
    friend void PrintTo(const Storyline &s, std::ostream *os) { *os << s.name; }
};

QString times(int offset, int duration)
{
    return QStringLiteral("offset=\"%1/25s\" duration=\"%2/25s\"").arg(offset).arg(duration);
}

class ClipSearch : public testing::TestWithParam<Storyline>
{
};

TEST_P(ClipSearch, FindsTheFirstClipInDocumentOrderThatHoldsThePosition)
{
    QRandomGenerator random(20261121);
    for (int round = 0; round < 200; ++round) {
        QByteArray spine = "<spine>";
        int cursor = 0;
        const int count = int(random.bounded(1, 30));
        for (int i = 0; i < count; ++i)
            spine += "<clip " + GetParam().clip(random, cursor).toUtf8() + "/>";
        const auto document = XmlDocument::fromBytes(spine + "</spine>");
        ASSERT_TRUE(document);
        QList<XmlNode> clips;
        for (XmlNode c = document->rootElement().childAt(0); c; c = c.nextSibling())
            clips << c;
        const FCPXClipRanges ranges(clips, fps);

        const auto seconds = [](const XmlNode &clip, const char *name) {
            return QFFCPXMLParser::secondsFromTimeString(
                clip.attributeForName(QLatin1StringView(name)).stringValue());
        };
        for (double position = -2; position < cursor + 4; position += 0.5) {
            XmlNode expected;
            for (const XmlNode &clip : clips) {
                const double offset = seconds(clip, "offset") * fps;
                if (offset <= position && offset + seconds(clip, "duration") * fps > position) {
                    expected = clip;
                    break;
                }
            }
            const FCPXClipRanges::Clip *found = ranges.clipAt(position);
            ASSERT_EQ(found ? found->element : XmlNode(), expected)
                << "round " << round << " at " << position << " in " << spine.toStdString();
        }
    }
}

INSTANTIATE_TEST_SUITE_P(
    FCPX, ClipSearch,
    testing::Values(
        Storyline{"BackToBack",
                  [](QRandomGenerator &random, int &cursor) {
                      const int duration = int(random.bounded(1, 8));
                      cursor += duration;
                      return times(cursor - duration, duration);
                  }},
        Storyline{"OrderedWithHolesOverlapsAndEmptyClips",
                  [](QRandomGenerator &random, int &cursor) {
                      const int offset = cursor + int(random.bounded(0, 4));
                      const int duration = int(random.bounded(0, 12));
                      cursor = std::max(cursor, offset);
                      return times(offset, duration);
                  }},
        Storyline{"OutOfOrder",
                  [](QRandomGenerator &random, int &cursor) {
                      const int offset = int(random.bounded(0, 40));
                      cursor = 50;
                      return times(offset, int(random.bounded(0, 10)));
                  }},
        Storyline{"MissingAndUnreadableTimes", [](QRandomGenerator &random, int &cursor) {
                      cursor += 3;
                      switch (random.bounded(5)) {
                      case 0:
                          return QStringLiteral("duration=\"3/25s\"");
                      case 1:
                          return QStringLiteral("offset=\"%1/25s\" duration=\"1/0s\"").arg(cursor);
                      case 2:
                          return QStringLiteral("offset=\"0/0s\" duration=\"3/25s\"");
                      default:
                          return times(cursor - 3, 3);
                      }
                  }}));

} // namespace
