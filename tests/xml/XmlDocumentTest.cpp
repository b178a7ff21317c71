// Parsing (strict, repairing, hostile), editing and serialising documents.

#include "xml/XmlDocument.h"
#include "xml/QFXMLParser.h"

#include "LoggedTest.h"
#include "QtPrinters.h"
#include "XmlTestSupport.h"

#include <QDir>
#include <QElapsedTimer>
#include <QUrl>

namespace {

std::unique_ptr<XmlDocument> parse(const QByteArray &bytes,
                                   XmlDocument::Parsing parsing = XmlDocument::Parsing::Strict,
                                   QString *error = nullptr)
{
    return XmlDocument::fromBytes(bytes, parsing, error);
}

QByteArray nested(int depth)
{
    return QByteArray("<a>").repeated(depth) + QByteArray("x") + QByteArray("</a>").repeated(depth);
}

QByteArray entityExpansion()
{
    QByteArray dtd = "<!DOCTYPE lolz [<!ENTITY lol0 \"lollollollollollollollollollol\">";
    for (int i = 1; i < 10; ++i) {
        dtd += QByteArray("<!ENTITY lol") + QByteArray::number(i) + " \"";
        dtd += (QByteArray("&lol") + QByteArray::number(i - 1) + ";").repeated(10) + "\">";
    }
    return dtd + "]><lolz>&lol9;</lolz>";
}

TEST(RefusedByTheStrictParse, WithADescriptionWhileTheRepairingParseStaysBounded)
{
    const QByteArray documents[] = {
        "",
        "  \n\t ",
        "<a><b>x</a>",
        "<xmeml version=\"5\"><sequence><name>Cut",
        QByteArray("\x00\x01\xff\xfe<\x00a>\x89PNG", 12),
        QByteArray("<a>x\0y</a>", 10),
        "just some text",
        "<a/><b/>",
        entityExpansion(),
        "<!DOCTYPE a [<!ENTITY x \"&y;\"><!ENTITY y \"&x;\">]><a>&x;</a>",
        nested(10'000)};
    for (const QByteArray &bytes : documents) {
        SCOPED_TRACE(bytes.left(60).toHex().toStdString());
        QString error;
        EXPECT_FALSE(parse(bytes, XmlDocument::Parsing::Strict, &error));
        EXPECT_FALSE(error.isEmpty());
        error.clear();
        EXPECT_FALSE(XmlDocument::isWellFormed(bytes, &error));
        EXPECT_FALSE(error.isEmpty());

        QElapsedTimer timer;
        timer.start();
        if (const auto document = parse(bytes, XmlDocument::Parsing::Repairing)) {
            // Whatever came out can be searched, read and written without blowing up.
            qsizetype text = 0;
            for (const XmlNode &node : document->node().nodesForXPath(u"//node()"_s))
                text += node.stringValue().size();
            EXPECT_LT(text, 50'000'000);
            EXPECT_LT(document->toPrettyXml().size(), 50'000'000);
        }
        EXPECT_LT(timer.elapsed(), 20'000);
    }
    // Only hostile depths are refused.
    const auto document = parse(nested(200));
    ASSERT_TRUE(document);
    EXPECT_EQ(document->node().nodesForXPath(u"//a"_s).size(), 200);
}

TEST_F(LoggedTest, WellFormednessIsJudgedWithoutATreeAsTheStrictParseJudgesIt)
{
    for (const QByteArray &bytes :
         {QByteArray("<a/>"),
          QByteArray("<!DOCTYPE a [<!ENTITY e \"x &amp; y\">]><a b=\"&e;\">&e;</a>"),
          QByteArray("<a>&e;</a>"), QByteArray("<!DOCTYPE a [<!ENTITY e \"<b>\">]><a>&e;</a>"),
          QByteArray("<x:a/>"), QByteArray("<a>&#0;</a>"), QByteArray("<a>\xc3</a>")})
        EXPECT_EQ(XmlDocument::isWellFormed(bytes), bool(parse(bytes))) << bytes.data();
}

TEST_F(LoggedTest, FailuresSayWhyAndTheRepairingParseClosesMismatchedTagsAndLogsIt)
{
    const auto document = parse("<a><b>x</a>", XmlDocument::Parsing::Repairing);
    ASSERT_TRUE(document);
    EXPECT_EQ(describe(document->rootElement().nodesForXPath(u"./b/text()"_s)),
              QStringList{"text:x"});
    EXPECT_TRUE(log().contains(u"XML repaired: line 1: ")) << log().toStdString();

    // The strict parse, reading a file and making an element say why they fail.
    QString line, file, fragment, twoRoots;
    EXPECT_FALSE(parse("<a>\n<b>x</a>", XmlDocument::Parsing::Strict, &line));
    EXPECT_TRUE(line.startsWith(u"line 2: ")) << line.toStdString();
    EXPECT_FALSE(
        XmlDocument::fromFile(u"/nonexistent/cut.fcpxml"_s, XmlDocument::Parsing::Strict, &file));
    EXPECT_FALSE(XmlDocument::fromElementString(u"<marker value=\"a\"b\" />"_s, &fragment));
    EXPECT_FALSE(XmlDocument::fromElementString(u"<a/><b/>"_s, &twoRoots));
    for (const QString &error : {file, fragment, twoRoots})
        EXPECT_FALSE(error.isEmpty());
}

TEST_F(LoggedTest, TextThatCannotBeWrittenIsLoggedNotPrinted)
{
    // Found by fuzzing: a repaired document whose text is not UTF-8 any more.
    QString error;
    const auto document =
        XmlDocument::fromFile(QStringLiteral(CUEBRIDGE_TEST_DATA "/hostile/unwritable-text.fcpxml"),
                              XmlDocument::Parsing::Repairing, &error);
    ASSERT_TRUE(document) << error.toStdString();
    testing::internal::CaptureStderr();
    document->toPrettyXml();
    for (const XmlNode &element : document->node().nodesForXPath(u"//*"_s))
        element.toPrettyString();
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_TRUE(log().contains(u"XML output error: ")) << log().toStdString();
}

TEST(XmlDocument, ExternalEntitiesAndDtdsAreNeverRead)
{
    TempHome home;
    const QByteArray url =
        QUrl::fromLocalFile(home.file(u"secret.txt"_s, "TOP-SECRET")).toEncoded();
    const QByteArray dtdUrl =
        QUrl::fromLocalFile(home.file(u"x.dtd"_s, "<!ENTITY y SYSTEM \"" + url + "\">"))
            .toEncoded();

    const QList<QByteArray> documents = {
        "<!DOCTYPE a [<!ENTITY x SYSTEM \"" + url + "\">]><a>&x;</a>",
        "<!DOCTYPE a SYSTEM \"" + dtdUrl + "\"><a>&y;</a>",
        "<!DOCTYPE a [<!ENTITY % p SYSTEM \"" + dtdUrl + "\"> %p;]><a>&y;</a>",
    };
    for (const QByteArray &bytes : documents) {
        for (auto parsing : {XmlDocument::Parsing::Strict, XmlDocument::Parsing::Repairing}) {
            const auto document = parse(bytes, parsing);
            if (!document)
                continue;
            EXPECT_FALSE(document->node().stringValue().contains(u"TOP-SECRET")) << bytes.data();
            EXPECT_FALSE(document->toPrettyXml().contains("TOP-SECRET")) << bytes.data();
        }
    }
}

TEST(XmlDocument, PrettyPrintingReindentsInsertedElementsAndIsStable)
{
    const auto document = parse("<a><b/><d/></a>");
    ASSERT_TRUE(document);
    const auto fragment = XmlDocument::fromElementString(u"<c><e>x</e></c>"_s);
    ASSERT_TRUE(fragment);
    XmlNode root = document->rootElement();

    EXPECT_TRUE(root.insertChild(fragment->rootElement(), 1));
    EXPECT_TRUE(root.addChild(fragment->rootElement()));

    EXPECT_EQ(document->toPrettyXml(), "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                                       "<a>\n"
                                       "  <b/>\n"
                                       "  <c>\n"
                                       "    <e>x</e>\n"
                                       "  </c>\n"
                                       "  <d/>\n"
                                       "  <c>\n"
                                       "    <e>x</e>\n"
                                       "  </c>\n"
                                       "</a>\n");
    EXPECT_EQ(root.childAt(1).toPrettyString(), u"<c>\n  <e>x</e>\n</c>");

    // Printing what was printed gives the same text.
    const auto library = loadTestDocument("library.fcpxml");
    ASSERT_TRUE(library);
    const QByteArray once = library->toPrettyXml();
    const auto again = parse(once);
    ASSERT_TRUE(again);
    EXPECT_EQ(again->toPrettyXml(), once);
    EXPECT_TRUE(once.startsWith("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE fcpxml>\n"));
}

} // namespace
