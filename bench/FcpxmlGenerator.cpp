#include "FcpxmlGenerator.h"

#include <QRandomGenerator>

namespace {

const char *const words[] = {"Wide",     "Close",  "Insert",   "Reaction", "Pickup",  "Drone",
                             "Alt take", "B-roll", "Two-shot", "Ending",   "Opening", "Cutaway"};

QByteArray seconds(qint64 frames)
{
    return QByteArray::number(frames * 100) + "/2500s";
}

} // namespace

QByteArray generateFcpxml(int clipCount)
{
    QRandomGenerator random(20261121);
    QByteArray xml;
    xml.reserve(qsizetype(clipCount) * 420 + 4096);
    xml += "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE fcpxml>\n"
           "<fcpxml version=\"1.8\">\n  <resources>\n"
           "    <format id=\"r1\" name=\"FFVideoFormat1080p25\" frameDuration=\"100/2500s\" "
           "width=\"1920\" height=\"1080\"/>\n";
    for (int asset = 0; asset < 64; ++asset)
        xml += "    <asset id=\"a" + QByteArray::number(asset) + "\" name=\"A" +
               QByteArray::number(asset) + "_C00" + QByteArray::number(asset % 9) +
               "\" src=\"file:///Volumes/Media/A" + QByteArray::number(asset) +
               ".mov\" start=\"0s\" duration=\"36000s\" hasVideo=\"1\" hasAudio=\"1\" "
               "format=\"r1\"/>\n";
    xml += "  </resources>\n  <library>\n    <event name=\"Dailies\">\n"
           "      <project name=\"Stress\">\n"
           "        <sequence format=\"r1\" tcStart=\"3600s\" tcFormat=\"NDF\">\n"
           "          <spine>\n";

    qint64 offset = 90000; // one hour in, like most timelines
    for (int i = 0; i < clipCount; ++i) {
        const qint64 duration = 25 + random.bounded(500);
        const QByteArray name = words[random.bounded(12)] + QByteArray(" ") + QByteArray::number(i);
        const QByteArray timing = "offset=\"" + seconds(offset) + "\" duration=\"" +
                                  seconds(duration) + "\" start=\"" +
                                  seconds(random.bounded(10000)) + "\"";
        const QByteArray asset = "a" + QByteArray::number(random.bounded(64));
        const int kind = random.bounded(20);
        if (kind == 0) {
            xml += "            <gap name=\"Gap\" " + timing + "/>\n";
        } else if (kind == 1) {
            xml += "            <title name=\"" + name + "\" " + timing +
                   " ref=\"a0\">\n              <text>Lower third</text>\n            </title>\n";
        } else if (kind == 2) {
            xml += "            <transition name=\"Cross Dissolve\" offset=\"" + seconds(offset) +
                   "\" duration=\"" + seconds(10) + "\"/>\n";
        } else {
            const bool plainClip = kind < 8;
            xml += plainClip ? "            <clip name=\"" + name + "\" " + timing + ">\n" +
                                   "              <video ref=\"" + asset + "\" offset=\"0s\" " +
                                   "duration=\"" + seconds(duration) + "\"/>\n"
                             : "            <asset-clip name=\"" + name + "\" ref=\"" + asset +
                                   "\" " + timing + ">\n";
            if (random.bounded(4) == 0)
                xml += "              <asset-clip name=\"Cutaway\" lane=\"1\" ref=\"a1\" "
                       "offset=\"" +
                       seconds(duration / 2) + "\" duration=\"" + seconds(12) + "\"/>\n";
            for (int m = random.bounded(3); m > 0; --m)
                xml += "              <marker start=\"" + seconds(random.bounded(int(duration))) +
                       "\" duration=\"100/2500s\" value=\"Note " + QByteArray::number(m) + " on " +
                       name + "\"/>\n";
            if (random.bounded(3) == 0)
                xml += "              <keyword start=\"0s\" duration=\"" + seconds(duration) +
                       "\" value=\"Selects\"/>\n";
            if (random.bounded(5) == 0)
                xml += "              <filter-video ref=\"a2\" name=\"Colour Board\"/>\n";
            xml += plainClip ? "            </clip>\n" : "            </asset-clip>\n";
        }
        offset += duration;
    }
    xml += "          </spine>\n        </sequence>\n      </project>\n    </event>\n"
           "  </library>\n</fcpxml>\n";
    return xml;
}

int clipCountForSize(double megabytes)
{
    const double bytesPerClip = double(generateFcpxml(2000).size()) / 2000.0;
    return int(megabytes * 1e6 / bytesPerClip);
}
