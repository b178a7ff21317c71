// Any bytes as the target of both whole imports, as a Final Cut Pro 7 XML file and as
// a Final Cut Pro X document, with a fixed marker list.

#include "FuzzImport.h"

namespace {

const QByteArray markerList = "#\tTrack\tName\tComment\tStart\tDuration\tColor\n"
                              "1\tV1\tOne\tFirst & best\t00:00:00:00\t00:00:01:00\tRed\n"
                              "2\tV1\tTwo\t\t01:00:00;02\t00:00:00:00\tBlue\n"
                              "3\tV1\tThree\t<b>\t10:00:10:10\t00:00:00:10\tGreen\n";

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray target(reinterpret_cast<const char *>(data), qsizetype(size));
    const QString markers = fuzzWrite(QStringLiteral("markers.txt"), markerList);
    fuzzImport(markers, fuzzWrite(QStringLiteral("target.xml"), target));
    fuzzImport(markers, fuzzWrite(QStringLiteral("target.fcpxml"), target));
    return 0;
}
