// Any bytes as the marker list of both whole imports: into a small Final Cut Pro 7
// project file and into a small Final Cut Pro X library.

#include "FuzzImport.h"

namespace {

const QByteArray project = R"(<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE xmeml>
<xmeml version="5"><project><name>P</name><children>
<sequence id="Cut"><uuid>U-1</uuid><name>Cut</name><duration>5000</duration>
<rate><ntsc>TRUE</ntsc><timebase>30</timebase></rate>
<timecode><rate><ntsc>TRUE</ntsc><timebase>30</timebase></rate><frame>107892</frame>
<displayformat>DF</displayformat></timecode>
<marker><name>Old</name><in>1</in><out>-1</out></marker>
<media><video><track><clipitem id="c1"><name>A</name><start>0</start><end>100</end>
<marker><name>On A</name><in>5</in><out>-1</out></marker></clipitem></track></video></media>
</sequence></children></project></xmeml>
)";

const QByteArray library = R"(<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE fcpxml>
<fcpxml version="1.8">
  <resources>
    <format id="r1" frameDuration="1001/30000s"/>
    <asset id="r2" name="M" src="file:///m.mov" start="0s" duration="7200s" hasVideo="1"/>
  </resources>
  <library>
    <event name="E">
      <project name="P">
        <sequence format="r1" tcStart="3600s" tcFormat="DF">
          <spine>
            <asset-clip name="A" ref="r2" offset="3600s" duration="10s">
              <keyword start="0s" duration="10s" value="k"/>
            </asset-clip>
            <gap name="G" offset="36010s" duration="5s"/>
            <clip name="C" offset="36015s" start="100s" duration="1001/30s">
              <video ref="r2" offset="0s" duration="2s"/>
              <marker start="101s" duration="1001/30000s" value="old"/>
            </clip>
          </spine>
        </sequence>
      </project>
    </event>
  </library>
</fcpxml>
)";

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString markers =
        fuzzWrite(QStringLiteral("markers.txt"),
                  QByteArray(reinterpret_cast<const char *>(data), qsizetype(size)));
    fuzzImport(markers, fuzzWrite(QStringLiteral("cut.xml"), project));
    fuzzImport(markers, fuzzWrite(QStringLiteral("cut.fcpxml"), library));
    return 0;
}
