// Where the FCPX import puts markers: the clip search answers what a scan in document
// order answers, and the insertion keeps every clip valid under its version's DTD.

#include "import/FCPXPlacement.h"
#include "xml/FCPXMLDtd.h"
#include "xml/XmlDocument.h"

#include <gtest/gtest.h>

#include <QRandomGenerator>

#include <QStringList>
#include <cmath>

using namespace Qt::StringLiterals;

namespace {

constexpr double fps = 25.0;

QString times(int offset, int duration)
{
    return u"offset=\"%1/25s\" duration=\"%2/25s\""_s.arg(offset).arg(duration);
}

TEST(ClipSearch, FindsTheFirstClipInDocumentOrderThatHoldsThePosition)
{
    // Each storyline gives the time attributes of its next clip; cursor is where the
    // previous one ended, in frames.
    const std::pair<const char *, QString (*)(QRandomGenerator &, int &cursor)> storylines[] = {
        {"BackToBack",
         [](QRandomGenerator &random, int &cursor) {
             const int duration = int(random.bounded(1, 8));
             cursor += duration;
             return times(cursor - duration, duration);
         }},
        {"OrderedWithHolesOverlapsAndEmptyClips",
         [](QRandomGenerator &random, int &cursor) {
             const int offset = cursor + int(random.bounded(0, 4));
             const int duration = int(random.bounded(0, 12));
             cursor = std::max(cursor, offset);
             return times(offset, duration);
         }},
        {"OutOfOrder",
         [](QRandomGenerator &random, int &cursor) {
             const int offset = int(random.bounded(0, 40));
             cursor = 50;
             return times(offset, int(random.bounded(0, 10)));
         }},
        {"MissingAndUnreadableTimes", [](QRandomGenerator &random, int &cursor) {
             cursor += 3;
             switch (random.bounded(5)) {
             case 0:
                 return u"duration=\"3/25s\""_s;
             case 1:
                 return u"offset=\"%1/25s\" duration=\"1/0s\""_s.arg(cursor);
             case 2:
                 return u"offset=\"0/0s\" duration=\"3/25s\""_s;
             default:
                 return times(cursor - 3, 3);
             }
         }}};
    for (const auto &[name, nextClip] : storylines) {
        SCOPED_TRACE(name);
        QRandomGenerator random(20261121);
        for (int round = 0; round < 200; ++round) {
            QByteArray spine = "<spine>";
            int cursor = 0;
            const int count = int(random.bounded(1, 30));
            for (int i = 0; i < count; ++i)
                spine += "<clip " + nextClip(random, cursor).toUtf8() + "/>";
            const auto document = XmlDocument::fromBytes(spine + "</spine>");
            ASSERT_TRUE(document);
            QList<XmlNode> clips;
            for (XmlNode c = document->rootElement().childAt(0); c; c = c.nextSibling())
                clips << c;
            const FCPXClipRanges ranges(clips, fps);

            // Frames of "a/bs" as whole numbers: exact, unlike seconds times the rate.
            const auto frames = [](const XmlNode &clip, const char *attribute) {
                const QStringList parts = clip.attributeValue(attribute).chopped(1).split(u'/');
                if (parts.size() != 2 || parts[1].toInt() == 0)
                    return std::nan("");
                return double(parts[0].toInt()) * fps / parts[1].toInt();
            };
            for (double position = -2; position < cursor + 4; position += 0.5) {
                XmlNode expected;
                for (const XmlNode &clip : clips) {
                    const double offset =
                        clip.attributeValue("offset").isNull() ? 0 : frames(clip, "offset");
                    if (offset <= position && offset + frames(clip, "duration") > position) {
                        expected = clip;
                        break;
                    }
                }
                const FCPXClipRanges::Clip *found =
                    ranges.clipAt(RationalTime{qint64(position * 2), qint64(fps * 2)});
                ASSERT_EQ(found ? found->element : XmlNode(), expected)
                    << "round " << round << " at " << position << " in " << spine.toStdString();
            }
        }
    }
}

// --- Insertion among a clip's children ------------------------------------------

/// Children real exports carry, each list in the order of the newest DTD. A clip gets
/// those its version allows it, so the same list serves every version and kind.
const QStringList childLists[] = {
    {u"note"_s, u"conform-rate"_s, u"adjust-colorConform"_s},
    {u"conform-rate"_s, u"timeMap"_s, u"adjust-crop"_s, u"adjust-transform"_s, u"adjust-volume"_s,
     u"filter-video"_s, u"filter"_s, u"filter-audio"_s},
    {u"adjust-stabilization"_s, u"keyword"_s, u"rating"_s, u"audio-channel-source"_s,
     u"audio-role-source"_s, u"sync-source"_s, u"metadata"_s},
    {u"mc-source"_s, u"video"_s, u"marker"_s, u"chapter-marker"_s, u"keyword"_s,
     u"filter-video-mask"_s, u"metadata"_s},
};

/// The storyline elements markers go into, and whether each names its media.
const std::pair<const char16_t *, bool> clipKinds[] = {
    {u"asset-clip", true}, {u"clip", false}, {u"ref-clip", true}, {u"sync-clip", false},
    {u"mc-clip", true},    {u"gap", false},  {u"title", true},    {u"video", true}};

TEST(MarkerInsertion, KeepsEveryClipKindValidInEveryVersion)
{
    int checked = 0;
    for (const QString &version : FCPXMLDtd::versions()) {
        const FCPXMLDtd &dtd = FCPXMLDtd::forVersion(version);
        ASSERT_EQ(dtd.version(), version);
        for (const auto &[kind, namesMedia] : clipKinds) {
            const QString clipName = QString::fromUtf16(kind);
            const FCPXMLDtd::MarkerOrder &order = dtd.markerOrder(clipName);
            if (order.before.isEmpty() && order.after.isEmpty())
                continue; // the kind is not in this version
            for (const QStringList &children : childLists) {
                QString xml = u"<"_s + clipName + u" duration=\"10s\""_s +
                              (namesMedia ? u" ref=\"r1\">"_s : u">"_s);
                for (const QString &child : children) {
                    if (child == u"marker" || order.before.contains(child) ||
                        order.after.contains(child))
                        xml += u"<"_s + child + u"/>"_s;
                }
                xml += u"</"_s + clipName + u">"_s;
                SCOPED_TRACE(u"FCPXML %1: %2"_s.arg(version, xml).toStdString());
                const auto document = XmlDocument::fromBytes(xml.toUtf8());
                XmlNode clip = document->rootElement();
                ASSERT_EQ(dtd.checkElements({clip}), QString()) << "the input is valid";

                FCPXMarkerInsertion insertion(dtd);
                for (const char *start : {"1s", "2s"})
                    ASSERT_TRUE(insertion.insertNew(clip, {{u"start"_s, QString::fromLatin1(start)},
                                                           {u"duration"_s, u"1/25s"_s},
                                                           {u"value"_s, u"New"_s},
                                                           {u"completed"_s, u"0"_s}}));
                EXPECT_EQ(insertion.check(), QString());
                EXPECT_EQ(dtd.checkElements({clip}), QString());
                ++checked;

                // A marker behind what follows the markers' group breaks the clip, and
                // the check says so.
                static const QSet<QString> behindMarkers = {
                    u"filter"_s,   u"filter-video"_s,      u"filter-audio"_s,
                    u"metadata"_s, u"filter-video-mask"_s, u"sync-source"_s};
                if (behindMarkers.contains(clip.childAt(clip.childCount() - 1).name())) {
                    clip.insertNewElement(XmlNode::Place::LastChild, u"marker"_s,
                                          {{u"start"_s, u"3s"_s}, {u"value"_s, u"Late"_s}});
                    EXPECT_NE(dtd.checkElements({clip}), QString());
                }
            }
        }
    }
    EXPECT_GE(checked, 300) << "versions times kinds times child lists";
    EXPECT_EQ(FCPXMLDtd::forVersion(u"1.99").version(), FCPXMLDtd::versions().last());
    EXPECT_EQ(FCPXMLDtd::versions().first(), u"1.0");
}

} // namespace
