#include "import/MarkerListText.h"
#include "import/QFFCP7MarkerListParser.h"

#include "QtPrinters.h"

#include <gtest/gtest.h>

#include <QFile>

namespace {

using MarkerListText::decode;
using MarkerListText::detectEncoding;

QByteArray readExample(const char *name)
{
    QFile file(QStringLiteral(CUEBRIDGE_SOURCE_DIR "/examples/") + QLatin1StringView(name));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << name;
    return file.readAll();
}

QList<QFMarkerRecord> parseBytes(const QByteArray &bytes)
{
    const auto encoding = detectEncoding(bytes).value_or(QStringConverter::Utf16LE);
    return QFFCP7MarkerListParser::parseMarkersFromText(decode(bytes, encoding));
}

TEST(DetectEncoding, CertainOnlyWithByteOrderMarkOrValidUtf8)
{
    EXPECT_EQ(detectEncoding(QByteArray("\xff\xfe"
                                        "a\0",
                                        4)),
              QStringConverter::Utf16LE);
    EXPECT_EQ(detectEncoding(QByteArray("\xfe\xff\0a", 4)), QStringConverter::Utf16BE);
    EXPECT_EQ(detectEncoding("\xef\xbb\xbf"
                             "caf\xc3\xa9"),
              QStringConverter::Utf8);
    EXPECT_EQ(detectEncoding("caf\xc3\xa9"), QStringConverter::Utf8);
    EXPECT_EQ(detectEncoding(QByteArray()), QStringConverter::Utf8);
    EXPECT_EQ(detectEncoding("caf\xe9"), std::nullopt); // Latin-1
    EXPECT_EQ(detectEncoding("\xc3\x28"), std::nullopt);
}

TEST(Decode, DropsByteOrderMark)
{
    EXPECT_EQ(decode(QByteArray("\xff\xfe"
                                "a\0",
                                4),
                     QStringConverter::Utf16LE),
              "a");
    EXPECT_EQ(decode("\xef\xbb\xbf"
                     "caf\xc3\xa9",
                     QStringConverter::Utf8),
              QString::fromUtf8("café"));
}

TEST(Examples, Utf8AndUtf16ListsGiveTheSameMarkers)
{
    const QList<QFMarkerRecord> utf8 = parseBytes(readExample("review-notes.txt"));
    const QList<QFMarkerRecord> utf16 = parseBytes(readExample("review-notes-utf16.txt"));
    ASSERT_EQ(utf8.size(), 21); // header and twenty markers
    EXPECT_EQ(utf16, utf8);
    for (const QFMarkerRecord &record : utf8)
        EXPECT_EQ(record.size(), 7) << record.join(u'|').toStdString();
    EXPECT_EQ(utf8[9][3], "Line 14 re-recorded,\nuse take 3 from the pickup session");
    EXPECT_EQ(utf8[11][2], QString::fromUtf8("Björk's line"));
}

TEST(Examples, Utf16WithoutByteOrderMarkFallsBackToUtf16)
{
    // Its letters past ASCII are no valid UTF-8, so detection is unsure and the
    // UTF-16 little-endian fallback reads the list whole.
    const QByteArray withoutMark = readExample("review-notes-utf16.txt").mid(2);
    EXPECT_EQ(detectEncoding(withoutMark), std::nullopt);
    EXPECT_EQ(parseBytes(withoutMark), parseBytes(readExample("review-notes.txt")));
}

} // namespace
