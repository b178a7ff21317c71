// Every form of marker list read here, end to end into both kinds of timeline: the
// marker "Café" lands ten seconds after the timeline's start, with its comment, and
// every line of the file is accounted for.

#include "import/FCP7Import.h"
#include "import/FCPXImport.h"
#include "xml/XmlDocument.h"

#include "HandOffTest.h"
#include "QtPrinters.h"

#include <QStringEncoder>

namespace {

/// A sequence of 25 fps starting at 01:00:00:00.
const QByteArray xmeml = R"(<?xml version="1.0" encoding="UTF-8"?>
<xmeml version="5"><project><name>P</name><children>
<sequence id="seq"><uuid>U-1</uuid><name>Cut</name>
<timecode><rate><timebase>25</timebase></rate><frame>90000</frame></timecode>
</sequence></children></project></xmeml>)";

/// A storyline of 25 fps whose timecode starts at 01:00:00:00, one gap an hour long.
const QByteArray fcpxml = R"(<?xml version="1.0" encoding="UTF-8"?>
<fcpxml version="1.8"><resources><format id="r1" frameDuration="100/2500s"/></resources>
<library><event name="E"><project name="Cut"><sequence format="r1" tcStart="3600s"><spine>
<gap name="G" offset="3600s" duration="3600s"/></spine></sequence></project></event></library>
</fcpxml>)";

QByteArray encoded(const QString &text, QStringConverter::Encoding encoding)
{
    QStringEncoder encoder(encoding, QStringConverter::Flag::WriteBom);
    return encoder(text);
}

class MarkerSources : public HandOffTest
{
};

TEST_F(MarkerSources, EachFormLandsInBothTimelinesAndAccountsForEveryLine)
{
    const QString native = u"#\tTrack\tName\tComment\tStart\tDuration\tColor\n"
                           u"1\tV1\tCafé\tnote\t01:00:10:00\t00:00:00:00\tRed\n"_s;
    const struct
    {
        const char *name;
        QByteArray bytes;
        const char16_t *comment;
    } forms[] = {
        {"NativeUtf8", native.toUtf8(), u"note"},
        {"NativeMacRoman", QByteArray(native.toUtf8()).replace("Caf\xc3\xa9", "Caf\x8e"), u"note"},
        {"NativeUtf16", encoded(native, QStringConverter::Utf16LE), u"note"},
        {"SpreadsheetQuotedCarriageReturns",
         "#\tTrack\tName\tComment\tStart\tDuration\tColor\r1\tV1\t\"Caf\xc3\xa9\"\t\"a "
         "\"\"b\"\"\"\t"
         "01:00:10:00\t00:00:00:00\tRed\r",
         u"a \"b\""},
        {"MediaComposerFiveColumns", "editor\t01:00:10:00\tV1\tred\tCaf\xc3\xa9\n", u""},
        {"PremiereInRussian",
         encoded(u"Имя\tОписание\tВход\tВыход\tДлительность\tТип\r\n"
                 u"Café\tnote\t01:00:10:00\t01:00:10:00\t00:00:00:00\tКомментарий\r\n"_s,
                 QStringConverter::Utf16LE),
         u"note"},
        {"PremiereAssets",
         "Asset Name\t\t\tIn Point\t\t\tDescription\nCaf\xc3\xa9\t\t\t01:00:10:00\t\t\tnote\n",
         u"note"},
        {"ResolveEdl",
         "TITLE: T\nFCM: NON-DROP FRAME\n\n001  001  V  C  01:00:10:00 01:00:10:01 01:00:10:00 "
         "01:00:10:01\nnote |C:ResolveColorBlue |M:Caf\xc3\xa9 |D:1\n",
         u"note"},
        {"Audition",
         "Name\tStart\tDuration\tTime Format\tType\tDescription\n"
         "Caf\xc3\xa9\t0:10.000\t0:00.000\tdecimal\tCue\tnote\n",
         u"note"},
        {"SubRip", "1\r\n00:00:10,000 --> 00:00:11,000\r\nCaf\xc3\xa9\r\nnote\r\n", u"note"},
        {"WebVtt", "WEBVTT\n\n00:10.000 --> 00:11.000\nCaf\xc3\xa9\nnote\n", u"note"},
        {"Chapters", "0:00 Start\n0:10 Caf\xc3\xa9\n", u""},
    };
    for (const auto &form : forms) {
        SCOPED_TRACE(form.name);
        const QString list = home.file(u"list.txt"_s, form.bytes);

        ImportSettings seven;
        seven.filename = home.file(u"cut.xml"_s, xmeml);
        seven.uuid = u"U-1"_s;
        const ImportOutcome intoXmeml =
            FCP7Import::startProcessingWithSettings({.isXMLFile = true}, list, seven);
        EXPECT_EQ(intoXmeml.status, ImportOutcome::Status::Imported)
            << intoXmeml.informativeText.toStdString();
        EXPECT_TRUE(intoXmeml.report.accountsForEveryLine());
        const auto doc = XmlDocument::fromFile(seven.filename);
        ASSERT_TRUE(doc);
        const XmlNode marker =
            doc->rootElement()
                .nodesForXPath(u"project/children/sequence/marker[name='Café']"_s)
                .value(0);
        EXPECT_EQ(marker.nodesForXPath(u"in"_s).value(0).stringValue(), u"250");
        EXPECT_EQ(marker.nodesForXPath(u"comment"_s).value(0).stringValue(),
                  QString::fromUtf16(form.comment));

        ImportSettings ten;
        ten.filename = home.file(u"cut.fcpxml"_s, fcpxml);
        ten.sequenceXPath = u"/fcpxml/library/event/project/sequence"_s;
        ten.handOffResult = false;
        const ImportOutcome intoFcpx = FCPXImport::startProcessingFCPXWithSettings(
            {.isFCPX = true, .isXMLFile = true}, list, ten);
        EXPECT_EQ(intoFcpx.status, ImportOutcome::Status::Imported)
            << intoFcpx.informativeText.toStdString();
        EXPECT_TRUE(intoFcpx.report.accountsForEveryLine());
        EXPECT_TRUE(TempHome::read(intoFcpx.resultPath)
                        .contains("start=\"25000/2500s\" duration=\"100/2500s\" value=\"Café"))
            << TempHome::read(intoFcpx.resultPath).toStdString();
    }
}

} // namespace
