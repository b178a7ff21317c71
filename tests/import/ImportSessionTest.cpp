// One marker list document's workflow through the session, as every front end runs
// it: adopt, discover, choose, import, and the typed outcome.

#include "import/ImportSession.h"
#include "xml/XmlDocument.h"

#include "HandOffTest.h"
#include "QtPrinters.h"

#include <QDir>
#include <QFile>

namespace {

using Status = ImportOutcome::Status;

const QByteArray markerList = "#\tTrack\tName\tComment\tStart\tDuration\tColor\n"
                              "1\tV1\tA\tc\t00:00:01:00\t00:00:00:00\tRed\n";

/// A project holding a sequence and a clip of its own, listed with the event image.
const QByteArray eventClip = R"(<?xml version="1.0"?>
<fcpxml version="1.8"><resources><format id="r1" frameDuration="100/2500s"/></resources>
<library><event name="E"><project name="P"><sequence format="r1"><spine>
<gap name="G" offset="0s" duration="10s"/></spine></sequence>
<clip name="Event clip" duration="10s" format="r1"/></project></event></library></fcpxml>)";

class SessionTest : public HandOffTest
{
protected:
    /// Discovers the target, chooses the listed item with that title (or the first,
    /// or none), imports and waits for the outcome.
    ImportOutcome import(const QString &target, const QString &title = QString())
    {
        EXPECT_TRUE(session.openFilename(target));
        session.waitForIdle();
        const QList<SequenceItem> items = session.items();
        for (const SequenceItem &item : items) {
            if (title.isNull() || item.title == title) {
                session.chooseItem(item);
                break;
            }
        }
        EXPECT_TRUE(session.sendToFCP(ImportOptions()));
        session.waitForIdle();
        return session.lastOutcome();
    }

    QString markers = home.file(u"markers.txt"_s, markerList);
    ImportSession session{markers};
};

TEST_F(SessionTest, EveryKindOfTargetEndsWithItsOutcome)
{
    struct
    {
        const char *name;
        QString target;
        QString title;
        Status status;
        bool eventClip;
    } const cases[] = {
        {"XMEML project", home.copyOfData(u"project.xml"_s), {}, Status::Imported, false},
        {"the second of two", home.copyOfData(u"project.xml"_s, u"two.xml"_s), u"No uuid"_s,
         Status::Imported, false},
        {"bare sequence", home.copyOfData(u"sequence.xml"_s), {}, Status::Imported, false},
        {"FCPX project", home.copyOfData(u"library.fcpxml"_s), {}, Status::Imported, false},
        {"FCPX event clip", home.file(u"e.fcpxml"_s, eventClip), u"Event clip"_s, Status::Imported,
         true},
        // Other editors' exports have no uuids: their sequences are found by path.
        {"no uuid",
         home.file(u"nouuid.xml"_s, "<xmeml><sequence id=\"s\"><name>S</name></sequence>"
                                    "</xmeml>"),
         {},
         Status::Imported,
         false},

        {"not XMEML", home.file(u"png.xml"_s, "\x89PNG\r\n"), {}, Status::NothingImported, false},
    };
    for (const auto &c : cases) {
        const QByteArray before = TempHome::read(c.target);
        const ImportOutcome outcome = import(c.target, c.title);
        EXPECT_EQ(outcome.status, c.status) << c.name << ": " << outcome.messageText.toStdString();
        EXPECT_EQ(session.targetKind().isFCPX && session.targetKind().isEvent, c.eventClip)
            << c.name;
        if (c.status == Status::NothingImported)
            EXPECT_EQ(TempHome::read(c.target), before) << c.name;
        else
            EXPECT_TRUE(XmlDocument::fromFile(outcome.resultPath)) << c.name;
    }
    EXPECT_EQ(workspace.opened().size(), 2) << "both FCPX results handed to the editor";
}

TEST_F(SessionTest, AnFcpxResultThatCannotBeWrittenIsAFailureAndNotHandedOver)
{
    qputenv("TMPDIR", "/proc"); // where not even the superuser makes files
    const ImportOutcome outcome = import(home.copyOfData(u"library.fcpxml"_s));
    EXPECT_EQ(outcome.status, Status::Failed);
    EXPECT_EQ(outcome.messageText, u"Failed to write marker data to disk.");
    EXPECT_TRUE(workspace.opened().isEmpty());
}

TEST_F(SessionTest, AnXmemlFileIsLeftAloneUnlessTheResultParses)
{
    // The output escaping turns every character from 160 up into a reference, names
    // too, so an element named beyond ASCII would come out unreadable: the file stays.
    const QString target = home.file(
        u"p.xml"_s, QByteArray(TempHome::read(QStringLiteral(CUEBRIDGE_TEST_DATA "/project.xml")))
                        .replace("<name>Cut 3</name>", "<name>Cut 3</name><\xc3\xbc"
                                                       "ber/>"));
    const QByteArray before = TempHome::read(target);
    const ImportOutcome outcome = import(target);
    EXPECT_EQ(outcome.messageText, u"Failed to write marker data to disk.");
    EXPECT_EQ(TempHome::read(target), before);

    const QByteArray sequence = R"(<?xml version="1.0"?>
<!DOCTYPE xmeml [<!ENTITY studio "Quill &amp; Fen">]>
<xmeml version="4"><sequence id="S"><uuid>U</uuid><name>By &studio;</name></sequence></xmeml>)";
    const QString bare = home.file(u"bare.xml"_s, sequence);
    TempHome::write(markers, markerList);
    EXPECT_EQ(import(bare).status, Status::Imported);
    const auto written = XmlDocument::fromFile(bare);
    ASSERT_TRUE(written) << TempHome::read(bare).toStdString();
    EXPECT_TRUE(written->internalSubsetDeclaration().contains(u"<!ENTITY studio"));
}

TEST_F(SessionTest, TheImportTakesTheDiscoveredDocumentOnlyWhileTheFileIsUnchanged)
{
    const auto fingerprint = [](const QByteArray &bytes) {
        QFFileContents::Fingerprint of;
        of.add(bytes.constData(), bytes.size());
        return of;
    };
    const QByteArray document = "<a><b>x</b></a>";
    ParsedTarget parsed(XmlDocument::fromBytes(document, XmlDocument::Parsing::Repairing),
                        fingerprint(document));
    EXPECT_EQ(parsed.take(fingerprint("<a><b>y</b></a>")), nullptr);
    ParsedTarget same(XmlDocument::fromBytes(document, XmlDocument::Parsing::Repairing),
                      fingerprint(document));
    EXPECT_NE(same.take(fingerprint(document)), nullptr);
    EXPECT_EQ(same.take(fingerprint(document)), nullptr) << "taken once";
    // A strict parse must still refuse what only the repairing one accepted.
    const QByteArray broken = "<a><b>x</a>";
    ParsedTarget repaired(XmlDocument::fromBytes(broken, XmlDocument::Parsing::Repairing),
                          fingerprint(broken));
    EXPECT_EQ(repaired.take(fingerprint(broken)), nullptr);

    // Through the session: a target changed between discovery and import is read again,
    // and so is a marker list changed after the session read it ahead.
    const QString target = home.copyOfData(u"sequence.xml"_s);
    ASSERT_TRUE(session.openFilename(target));
    session.waitForIdle();
    session.chooseItem(session.items().value(0));
    QByteArray changed = TempHome::read(target);
    TempHome::write(target, changed.replace("<name>Selects</name>", "<name>Changed</name>"));
    TempHome::write(markers, QByteArray(markerList).replace("\tA\t", "\tB\t"));
    session.sendToFCP(ImportOptions());
    session.waitForIdle();
    EXPECT_EQ(session.lastOutcome().status, Status::Imported);
    EXPECT_TRUE(log().contains(u"Marker name: B"));
}

TEST_F(SessionTest, ChoosingByNameFindsTheItemOrStandsForWhatWasAsked)
{
    ASSERT_TRUE(session.openFilename(home.file(u"e.fcpxml"_s, eventClip)));
    session.waitForIdle();
    EXPECT_TRUE(session.chooseItemNamed(u"Event clip"_s));
    EXPECT_TRUE(session.targetKind().isEvent);
    EXPECT_TRUE(session.chooseItemNamed(u"/fcpxml/library/event/project/sequence"_s));
    EXPECT_FALSE(session.targetKind().isEvent);
    EXPECT_EQ(session.settingsFor({}).sequenceXPath, u"/fcpxml/library/event/project/sequence"_s);
    EXPECT_FALSE(session.chooseItemNamed(u"nothing of that name"_s));

    ASSERT_TRUE(session.openFilename(home.file(u"nouuid.xml"_s, "<xmeml><sequence/></xmeml>")));
    session.waitForIdle();
    EXPECT_FALSE(session.settingsFor({}).uuid) << "nothing listed, nothing chosen";
    EXPECT_TRUE(session.chooseItemNamed(u"U-9"_s));
    EXPECT_EQ(session.settingsFor({}).uuid, u"U-9"_s);
}

} // namespace
