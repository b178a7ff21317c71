// Any text as an FCPX time string or frame duration.

#include "FuzzInput.h"
#include "time/QFFCPXMLParser.h"

#include <cmath>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString text = fuzzUtf8(data, size);
    const double seconds = QFFCPXMLParser::secondsFromTimeString(text);
    const double fps = QFFCPXMLParser::fpsFromFrameDuration(text);
    const qint64 multiplier = QFFCPXMLParser::multiplierFromFrameDuration(text);
    QFFCPXMLParser::framesFromTimeString(text, quint64(multiplier));
    QFFCPXMLParser::framesFromTimeString(text, 0);
    // Without a "/" there is no division, so no not-a-number (an exponent past the
    // range still reads as infinity, as strtod does).
    if (!text.contains(u'/')) {
        FUZZ_CHECK(!std::isnan(seconds));
        FUZZ_CHECK(!std::isnan(fps));
    }
    return 0;
}
