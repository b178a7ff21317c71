#include "FCPXTimelineRate.h"

#include "support/QFFormat.h"
#include "time/QFFCPXMLParser.h"
#include "xml/QFXMLParser.h"

FCPXTimelineRate FCPXTimelineRate::of(const XmlNode &document, const XmlNode &sequence)
{
    FCPXTimelineRate timeline;
    timeline.formatId = sequence.attributeValue("format");
    for (const char16_t *resources :
         {u"./fcpxml[1]/project[1]/resources[1]", u"./fcpxml[1]/resources[1]"}) {
        if (!timeline.frameDuration.isNull())
            break;
        timeline.frameDuration = QFXMLParser::stringValueForQuery(
            QFFormat::format(u"%@/format[@id=\"%@\"]/@frameDuration[1]",
                             QString::fromUtf16(resources), timeline.formatId),
            document);
    }
    if (timeline.frameDuration.isNull())
        timeline.frameDuration = QFXMLParser::stringValueForQuery(
            QStringLiteral("./fcpxml[1]/resources[1]/format/@frameDuration[1]"), document);
    timeline.rate = FrameRate::fromFrameDuration(
        timeline.frameDuration, QFXMLParser::stringValueForQuery(
                                    QStringLiteral("./@tcFormat[1]/text()"), sequence) == u"DF");
    timeline.startFrames = QFFCPXMLParser::secondsFromTimeString(QFXMLParser::stringValueForQuery(
                               QStringLiteral("./@tcStart"), sequence)) *
                           timeline.rate.fps;
    return timeline;
}
