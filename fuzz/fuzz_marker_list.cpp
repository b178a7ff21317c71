// Any bytes as a marker list: records always have seven or more trimmed fields.

#include "FuzzInput.h"
#include "import/QFFCP7MarkerListParser.h"
#include "import/TextEncoding.h"

namespace {

void check(const QString &text)
{
    for (const QFMarkerRecord &record : QFFCP7MarkerListParser::parseMarkersFromText(text)) {
        FUZZ_CHECK(record.fields.size() >= 7 && !record.lines.isEmpty());
        for (const QString &field : record.fields)
            FUZZ_CHECK(field == field.trimmed());
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char *>(data), qsizetype(size));
    const auto encoding = TextEncoding::detect(bytes);
    check(TextEncoding::decode(bytes, encoding.value_or(TextEncoding::utf16LE)));
    check(fuzzUtf8(data, size));
    check(fuzzUtf16(data, size));
    return 0;
}
