// The link to Final Cut Pro 7, driven through a simulated editor.

#include "fcp7link/QFAppleEvents.h"

#include "LoggedTest.h"
#include "QtPrinters.h"
#include "SimulatedFinalCutPro.h"
#include "support/QFPropertyList.h"

#include <QDir>
#include <QMutex>
#include <QRandomGenerator>
#include <QRegularExpression>

#include <stdexcept>

namespace {

/// The messages the link writes to the system console while it lives.
class ConsoleCapture
{
public:
    ConsoleCapture() { s_previous = qInstallMessageHandler(&ConsoleCapture::handle); }
    ~ConsoleCapture() { qInstallMessageHandler(s_previous); }
    static QStringList messages()
    {
        QMutexLocker lock(&s_mutex);
        return s_messages;
    }
    static void clear()
    {
        QMutexLocker lock(&s_mutex);
        s_messages.clear();
    }

private:
    static void handle(QtMsgType, const QMessageLogContext &context, const QString &message)
    {
        if (QByteArrayView(context.category) == "com.quillfen.fcp7link") {
            QMutexLocker lock(&s_mutex);
            s_messages << message;
        }
    }
    static inline QtMessageHandler s_previous = nullptr;
    static inline QMutex s_mutex;
    static inline QStringList s_messages;
};

const QByteArray itemXml = "<?xml version=\"1.0\"?><xmeml version=\"5\"><sequence id=\"S\">"
                           "<uuid>U-1</uuid><name>Cut</name></sequence></xmeml>";

class LinkTest : public LoggedTest
{
protected:
    void SetUp() override
    {
        LoggedTest::SetUp();
        ConsoleCapture::clear();
        project = addProject(u"Review Cut.fcp"_s);
        editor.openProjects << project;
    }

    QString addProject(const QString &name)
    {
        const QString path = home.file(name, "FCP project");
        SimulatedFinalCutPro::Project contents;
        contents.xml = itemXml;
        contents.tableOfContents = "<xmeml version=\"5\"><bin><children>"
                                   "<sequence><name>A</name></sequence><sequence/>"
                                   "<clip><sequence><name>B</name></sequence></clip>"
                                   "</children></bin></xmeml>";
        contents.items.insert(u"U-1"_s, itemXml + QByteArray(1, '\0'));
        editor.projects.insert(path, contents);
        return path;
    }

    const AppleEvent &lastEvent() const { return editor.events.last(); }

    /// An installed editor whose Info.plist holds the version (none: no version key).
    void install(const std::optional<QString> &shortVersion)
    {
        editor.applicationPath = home.filePath(u"Final Cut Pro.app"_s);
        QVariantMap info{{u"CFBundleIdentifier"_s, u"com.apple.FinalCutPro"_s}};
        if (shortVersion)
            info.insert(u"CFBundleShortVersionString"_s, *shortVersion);
        QDir().mkpath(editor.applicationPath + u"/Contents"_s);
        ASSERT_TRUE(QFPropertyList::writeDictionary(info, editor.applicationPath +
                                                              u"/Contents/Info.plist"_s));
    }

    ConsoleCapture console;
    SimulatedFinalCutPro editor;
    QString project;
};

QList<FourCharCode> ids(std::initializer_list<const char *> codes)
{
    QList<FourCharCode> list;
    for (const char *code : codes)
        list << (FourCharCode(quint8(code[0])) << 24 | FourCharCode(quint8(code[1])) << 16 |
                 FourCharCode(quint8(code[2])) << 8 | FourCharCode(quint8(code[3])));
    return list;
}

QList<FourCharCode> keywords(const AppleEvent &event)
{
    QList<FourCharCode> list;
    for (const auto &[keyword, value] : event.parameters)
        list << keyword;
    return list;
}

AESendResult replyWith(QList<std::pair<FourCharCode, AEDescriptor>> fields)
{
    AESendResult result;
    result.reply = AEDescriptor::record(std::move(fields));
    return result;
}

AESendResult failure(AESendStage stage, qint32 status, FourCharCode parameter = 0)
{
    AESendResult result;
    result.stage = stage;
    result.status = status;
    result.failedParameter = parameter;
    return result;
}

TEST_F(LinkTest, AnItemIsFetchedWithItsProjectReferenceAndUuid)
{
    const std::optional<QByteArray> data = QFAppleEvents::getItemXMLData(u"U-1"_s, project);
    ASSERT_TRUE(data);
    EXPECT_EQ(*data, itemXml) << "the trailing zero byte is dropped";

    const AppleEvent &event = lastEvent();
    EXPECT_EQ(event.eventClass, fourCharCode("KeyG"));
    EXPECT_EQ(keywords(event), ids({"fcpP", "fcIU"}));
    EXPECT_EQ(event.parameter(fourCharCode("fcIU"))->data(), "U-1");
    EXPECT_EQ(QFAppleEvents::getItemXML(u"U-1"_s, project), QString::fromUtf8(itemXml));

    // Opening the item names it the same way.
    QFAppleEvents::openItem(u"U-1"_s, project, true);
    EXPECT_EQ(lastEvent().eventID, fourCharCode("fcOI"));
    EXPECT_EQ(keywords(lastEvent()), ids({"fcpP", "fcIU"}));
    EXPECT_EQ(editor.openedItems, QStringList{"U-1"});
}

TEST_F(LinkTest, SendingXmlEscapesItWaitsTenMinutesAndWordsItsFailuresWithTheStatus)
{
    EXPECT_TRUE(QFAppleEvents::sendXMLToFCP(u"<name>Caf\u00e9\r</name>"_s, project));
    const AppleEvent &event = lastEvent();
    EXPECT_EQ(event.eventID, fourCharCode("iXML"));
    EXPECT_EQ(event.timeoutTicks, 36000);
    EXPECT_EQ(keywords(event), ids({"fcpP", "xmlD"}));
    EXPECT_EQ(editor.imported, QList<QByteArray>{"<name>Caf&#233;&#13;</name>"});

    // A path that names no file goes without a project reference, and so does none.
    EXPECT_TRUE(QFAppleEvents::sendXMLToFCP(u"<x/>"_s, project + u".gone"_s));
    EXPECT_EQ(keywords(lastEvent()), ids({"xmlD"}));
    EXPECT_TRUE(QFAppleEvents::sendXMLToFCP(u"<x/>"_s, QString()));
    EXPECT_EQ(keywords(lastEvent()), ids({"xmlD"}));

    // Failures name the step and give the status.
    for (const AESendResult &result :
         {failure(AESendStage::PutParameter, -1703, fourCharCode("xmlD")),
          failure(AESendStage::PutParameter, -43, fourCharCode("fcpP")),
          failure(AESendStage::Send, AEStatus::errAETimeout)}) {
        editor.fault = [&result](const AppleEvent &) { return std::optional(result); };
        EXPECT_FALSE(QFAppleEvents::sendXMLToFCP(u"<x/>"_s, project));
    }
    EXPECT_EQ(ConsoleCapture::messages(), (QStringList{"Error adding XML data to event: -1703",
                                                       "Error creating project FSRef: -43",
                                                       "Error sending AppleEvent: -1712"}));
}

TEST_F(LinkTest, SavingAndClosingNameTheProjectByReferenceAndUrlAndCarryTheirFlags)
{
    const QString awkward = addProject(u"Caf\u00e9 100% final.fcp"_s);
    editor.openProjects << awkward;

    EXPECT_TRUE(QFAppleEvents::saveProject(awkward));
    EXPECT_EQ(keywords(lastEvent()), ids({"fcpP", "fcpU", "fsOF"}));
    EXPECT_EQ(lastEvent().parameter(fourCharCode("fcpU"))->data(),
              home.filePath(u"Caf%C3%A9%20100%25%20final.fcp"_s).toUtf8());
    for (const bool saveChanges : {false, true}) {
        QFAppleEvents::closeProject(awkward, saveChanges);
        EXPECT_EQ(lastEvent().parameter(fourCharCode("fcCF"))->data(),
                  QByteArray::fromHex(saveChanges ? "00000000" : "01000000"));
    }
}

TEST_F(LinkTest, AProjectThatIsNotOpenIsOnlyOpenedWhenAllowed)
{
    editor.openProjects.clear();
    EXPECT_FALSE(QFAppleEvents::getProjectXMLData(project));
    EXPECT_EQ(ConsoleCapture::messages(), QStringList{"Error: project is not open."});
    EXPECT_EQ(editor.eventIDs(), ids({"fcLP"}));

    EXPECT_FALSE(QFAppleEvents::getTOCData(project)) << "the table of contents stops silently";
    EXPECT_EQ(ConsoleCapture::messages().size(), 1);
    EXPECT_TRUE(QFAppleEvents::getTOCData(project, true));
    ASSERT_EQ(editor.openRequests.size(), 1);
    EXPECT_EQ(editor.openRequests.first().second, QFWorkspace::WithoutActivation);
}

TEST_F(LinkTest, OpenProjectsAreListedUntilOneCannotBeRead)
{
    editor.openProjects.clear();
    EXPECT_EQ(QFAppleEvents::listOfOpenFCPProjects(), QStringList{}) << "empty, not nil";

    const QString second = addProject(u"Second.fcp"_s);
    editor.openProjects = {project, u"/nowhere/Lost.fcp"_s, second};
    EXPECT_EQ(QFAppleEvents::listOfOpenFCPProjects(), QStringList{project});

    editor.running = false;
    EXPECT_EQ(QFAppleEvents::listOfOpenFCPProjects(), std::nullopt);
    EXPECT_EQ(ConsoleCapture::messages(), QStringList{"Error: Final Cut Pro is not running."});
    EXPECT_FALSE(QFAppleEvents::saveProject(project));
}

TEST_F(LinkTest, BadRepliesToTheItemFetchGiveNilWithTheirMessage)
{
    const auto xml = [](AEDescriptor descriptor) {
        return replyWith({{fourCharCode("xmlD"), std::move(descriptor)}});
    };
    const struct
    {
        AESendResult reply;
        std::optional<QByteArray> expected;
        const char *console; // none: nothing
    } cases[] = {
        {xml(AEDescriptor(AEType::utf8Text, QByteArray("<a/>\0\0", 6))), QByteArray("<a/>\0", 5),
         nullptr},
        {replyWith({}), std::nullopt, "Error getting XML information"},
        {xml(AEDescriptor(AEType::utf8Text, {})), std::nullopt,
         "Unable to communicate with Final Cut Pro. Please make sure it is running."},
        {failure(AESendStage::PutParameter, -1700, fourCharCode("fcIU")), std::nullopt,
         "Error adding destination project file to AppleEvent query"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.console ? c.console : "a reply");
        ConsoleCapture::clear();
        // Only the item fetch fails; the project list is answered normally.
        editor.fault = [&c](const AppleEvent &event) -> std::optional<AESendResult> {
            if (event.eventID != fourCharCode("gXML"))
                return std::nullopt;
            return c.reply;
        };
        EXPECT_EQ(QFAppleEvents::getItemXMLData(u"U-1"_s, project), c.expected);
        EXPECT_EQ(ConsoleCapture::messages(),
                  c.console ? QStringList(QString::fromUtf8(c.console)) : QStringList());
    }
}

TEST_F(LinkTest, SequencesComeFromTheTableOfContentsFromVersionSeven)
{
    const std::optional<QFSequenceList> sequences = QFAppleEvents::sequencesInProject(project);
    ASSERT_TRUE(sequences);
    EXPECT_EQ(editor.eventIDs().last(), fourCharCode("eTCX"));
    ASSERT_EQ(sequences->sequences.size(), 2) << "only sequences with a name";
    EXPECT_EQ(sequences->sequences.at(1).stringValue(), u"B");

    editor.projects[project].tableOfContents = "<xmeml><sequence/></xmeml>";
    EXPECT_EQ(QFAppleEvents::sequencesInProject(project)->sequences.size(), 0);

    editor.projects[project].tableOfContents = "not XML at all";
    EXPECT_FALSE(QFAppleEvents::sequencesInProject(project));
    ASSERT_EQ(ConsoleCapture::messages().size(), 1);
    EXPECT_TRUE(ConsoleCapture::messages().first().startsWith(u"Error: "))
        << ConsoleCapture::messages().first().toStdString();

    editor.projects[project].tableOfContents.clear();
    EXPECT_FALSE(QFAppleEvents::sequencesInProject(project));
}

TEST_F(LinkTest, TheInstalledVersionMapsToTheXmemlVersion)
{
    const struct
    {
        std::optional<QString> shortVersion; // none: no Info.plist key
        int major;
        int xmeml;
    } versions[] = {{u"7.0.3"_s, 7, 5}, {u"6.0.6"_s, 6, 4}, {u"5.1.2"_s, 5, 3},   {u"5.1"_s, 5, 2},
                    {u"4.5"_s, 4, 1},   {u"10.1"_s, 1, 5},  {std::nullopt, 7, 1}, {u"7"_s, 7, 0}};
    for (const auto &v : versions) {
        SCOPED_TRACE(v.shortVersion.value_or(u"none"_s).toStdString());
        install(v.shortVersion);
        EXPECT_EQ(QFAppleEvents::finalCutProVersionString(), v.shortVersion.value_or(QString()));
        EXPECT_EQ(QFAppleEvents::finalCutProMajorVersion(), v.major);
        EXPECT_EQ(QFAppleEvents::maximumXMEMLVersion(), v.xmeml);
    }
    // Before version 7, sequences come from the whole project.
    install(u"6.0.6"_s);
    EXPECT_EQ(QFAppleEvents::sequencesInProject(project)->sequences.size(), 1);
    EXPECT_EQ(editor.eventIDs().last(), fourCharCode("eXML"));
    // A one-component version is logged, not fatal.
    EXPECT_TRUE(log().contains(u"+[QFAppleEvents maximumXMEMLVersion]")) << log().toStdString();

    editor.applicationPath = home.filePath(u"missing.app"_s); // none installed: version 7
    EXPECT_EQ(QFAppleEvents::finalCutProVersionString(), u"7.0");
    EXPECT_EQ(QFAppleEvents::maximumXMEMLVersion(), 5);
}

TEST(QFAppleEvents, EscapingGivesTheSameBytesFromUtf8AsFromUtf16)
{
    EXPECT_EQ(QFAppleEvents::escapeCharactersInXMLString(u"Caf\u00e9\r\n"_s), u"Caf&#233;&#13;\n");
    EXPECT_EQ(
        QFAppleEvents::escapeCharactersInXMLString(QString::fromUcs4(U"\U0001F3AC\U0001D11E")),
        u"&#127916;&#119070;");
    const QString high = QString(QChar(128)) + QChar(159) + u"<&>"_s;
    EXPECT_EQ(QFAppleEvents::escapeCharactersInXMLString(high), high);
    EXPECT_TRUE(QFAppleEvents::escapeCharactersInXMLString(QString()).isNull());
    // The UTF-8 form gives the bytes of the UTF-16 one, for malformed input too.
    // ASCII, CR, C1 controls, U+00A0, 2-, 3- and 4-byte forms, a cut-off form, a surrogate,
    // an overlong form, a value past U+10FFFF and lone bytes, joined at random.
    const QList<QByteArray> pieces =
        QByteArray("a|\r|\xc2\x85|\xc2\xa0|\xc3\xa9|\xe2\x82|\xe2\x82\xac|\xed\xa0\x80|\xc0\xaf|"
                   "\xf0\x9f\x8e\xac|\xf4\x90\x80\x80|\x80|\xff")
            .split('|');
    QRandomGenerator random(3);
    for (int round = 0; round < 3000; ++round) {
        QByteArray utf8;
        for (int n = int(random.bounded(6)); n > 0; --n)
            utf8 += pieces[random.bounded(int(pieces.size()))];
        ASSERT_EQ(QFAppleEvents::escapeCharactersInXMLString(utf8),
                  QFAppleEvents::escapeCharactersInXMLString(QString::fromUtf8(utf8)).toUtf8())
            << utf8.toHex().toStdString();
    }
}

TEST(AEFileReference, FollowsTheFileNotTheName)
{
    TempHome home;
    const QString path = home.filePath(u"a b.fcp"_s);
    EXPECT_FALSE(AEFileReference::fromPath(path));
    TempHome::write(path, "x");
    const std::optional<QByteArray> reference = AEFileReference::fromPath(path);
    ASSERT_TRUE(reference);
    EXPECT_EQ(reference->size(), 80);
    EXPECT_EQ(AEFileReference::toPath(*reference), path);
    ASSERT_TRUE(QFile::rename(path, path + u".moved"_s));
    TempHome::write(path, "another file under the old name");
    EXPECT_FALSE(AEFileReference::toPath(*reference));
}

} // namespace
