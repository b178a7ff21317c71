// The window as an editor uses it: documents open, targets are adopted and listed, the
// options become the settings, imports end with their alert sheet.

#include "MyDocument.h"
#include "AlertSheetPresenter.h"
#include "AppController.h"
#include "MarkerTableModel.h"
#include "SingleInstance.h"
#include "WaitFor.h"

#include "support/QFUserDefaults.h"

#include "QtPrinters.h"
#include "TempHome.h"

#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QDropEvent>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QMimeData>
#include <QPointer>
#include <QPushButton>
#include <QTest>
#include <QThread>
#include <QTimer>
#include <QUrl>

#include <future>

using namespace std::chrono_literals;

namespace {

/// A project and, in a project of its own, a clip: the clip is listed as an event clip.
const QByteArray projectAndClip =
    R"(<fcpxml version="1.8"><resources><format id="r1" frameDuration="1/25s"/></resources>
<library><event name="E"><project name="Cut"><sequence format="r1" duration="100s"><spine>
<gap name="g" offset="0s" duration="100s"/></spine></sequence></project><project name="Clips">
<clip name="Event clip" offset="0s" duration="100s" format="r1"><spine>
<gap name="h" offset="0s" duration="100s"/></spine></clip></project></event></library></fcpxml>)";

class Window : public testing::Test
{
protected:
    void SetUp() override
    {
        QFAlert::setPresenter(&alerts);
        // The preferences object outlives a test: what one test set must not leak.
        for (const QString &key : {u"offsetValue"_s, u"offsetUnit"_s})
            QFUserDefaults::standardUserDefaults().setObject(0, key);
        list = home.file(u"notes.txt"_s, "#\tTrack\tName\tComment\tStart\tDuration\tColor\n"
                                         "1\tV1\tA\tc\t01:00:10:00\t00:00:01:00\tRed\n");
    }
    /// A window on the marker list whose last target is the one given.
    MyDocument *open(const QString &target)
    {
        QFUserDefaults::standardUserDefaults().setObject(target, u"lastProject"_s);
        auto *document = new MyDocument(list);
        windows.append(document);
        settle(document);
        return document;
    }
    /// Waits until the document's work has ended and the window shows its end.
    static void settle(MyDocument *document)
    {
        EXPECT_TRUE(waitFor([&] { return !document->session().isBusy(); }));
        QCoreApplication::processEvents();
    }
    static QComboBox *popUp(MyDocument *document)
    {
        return document->findChild<QComboBox *>(u"sequencePopUp"_s);
    }
    static QMessageBox *sheet(MyDocument *document)
    {
        QMessageBox *box = nullptr;
        waitFor([&] {
            for (QMessageBox *child : document->findChildren<QMessageBox *>())
                if (child->isVisible())
                    box = child;
            return box != nullptr;
        });
        return box;
    }
    void TearDown() override
    {
        for (const QPointer<MyDocument> &window : windows)
            delete window.data();
        QFAlert::setPresenter(nullptr);
    }

    AlertSheetPresenter alerts;
    TempHome home;
    QString list;
    QList<QPointer<MyDocument>> windows;
};

TEST_F(Window, TheControlsBecomeTheSettings)
{
    MyDocument *document = open(home.file(u"clips.fcpxml"_s, projectAndClip));
    ASSERT_EQ(document->session().items().size(), 2);
    document->findChild<QLineEdit *>(u"frameOffsetText"_s)->setText(u"12abc"_s);
    document->findChild<QComboBox *>(u"offsetUnitPopUp"_s)->setCurrentIndex(3);
    document->findChild<QCheckBox *>(u"clearMarkerCheck"_s)->setChecked(true);
    document->findChild<QCheckBox *>(u"todoMarkerCheck"_s)->setChecked(true);
    popUp(document)->setCurrentIndex(1);
    document->session().chooseItem(document->session().items().at(1));

    const ImportSettings settings = document->session().settingsFor(document->options());
    EXPECT_EQ(settings.frameOffset, 12);
    EXPECT_EQ(settings.frameOffsetUnit, OffsetUnit::Hours);
    EXPECT_TRUE(settings.clearExistingMarkers);
    EXPECT_EQ(settings.todoMarkersEnabled, true);
    EXPECT_EQ(settings.sequenceXPath, u"/fcpxml/library/event/project[2]/clip"_s);
    EXPECT_TRUE(document->targetKind().isEvent);
}

TEST_F(Window, TheOffsetKeepsItsUnitTakesWholeNumbersAndReturnImports)
{
    const QString target = home.copyOfData(u"project.xml"_s);
    MyDocument *first = open(target);
    auto *offset = first->findChild<QLineEdit *>(u"frameOffsetText"_s);
    offset->setText(u"-3600"_s);
    emit offset->editingFinished();
    first->findChild<QComboBox *>(u"offsetUnitPopUp"_s)->setCurrentIndex(1);
    QString typed = u"1.5"_s;
    int at = 0;
    EXPECT_NE(offset->validator()->validate(typed, at), QValidator::Acceptable);

    MyDocument *second = open(target);
    EXPECT_EQ(second->options().frameOffset, -3600);
    EXPECT_EQ(second->options().frameOffsetUnit, OffsetUnit::Seconds);

    QTest::keyClick(second, Qt::Key_Return);
    QMessageBox *box = sheet(second);
    ASSERT_NE(box, nullptr) << "Return imports";
    box->buttons().first()->click();
}

TEST_F(Window, AnImportLocksTheWindowAndItsSheetCarriesTheReportAndTheResult)
{
    const QString target = home.copyOfData(u"project.xml"_s);
    MyDocument *document = open(target);
    document->reloadSequences();
    document->reloadSequences();
    settle(document);
    EXPECT_EQ(popUp(document)->count(), 2) << "a reload during discovery lists once";

    TempHome::write(list, TempHome::read(list) + "2\tV1\tB\tc\t01:00:11\t00:00:01:00\tRed\n");
    QPushButton *importButton = document->findChild<QPushButton *>(u"sendToFCPBtn"_s);
    importButton->click();
    EXPECT_FALSE(importButton->isEnabled()) << "a second press would import twice";
    EXPECT_FALSE(document->findChild<QWidget *>(u"timelineGroup"_s)->isEnabled());
    EXPECT_TRUE(document->findChild<QWidget *>(u"cancelButton"_s)->isVisible());
    QMessageBox *box = sheet(document);
    ASSERT_NE(box, nullptr);
    EXPECT_EQ(box->windowModality(), Qt::WindowModal);
    EXPECT_TRUE(box->text().contains(u"Some markers failed to import"_s));
    EXPECT_EQ(box->detailedText(),
              u"Result: %1\nLine 3: start timecode \"01:00:11\" is not HH:MM:SS:FF"_s.arg(target));
    QStringList buttons;
    for (QAbstractButton *button : box->buttons())
        buttons << button->text();
    EXPECT_TRUE(buttons.contains(u"Show in Folder"_s) && !buttons.contains(u"Open"_s));
    box->buttons().first()->click();
    EXPECT_TRUE(TempHome::read(target).contains("<name>A</name>"));
    // The file now lists its renamed sequences, and the table where markers would land.
    settle(document);
    EXPECT_TRUE(waitFor([&] { return importButton->isEnabled(); }));
    EXPECT_EQ(popUp(document)->itemText(0), u"Cut 3 -Cuebridge"_s);
}

TEST_F(Window, CancelStopsAnImportWithNothingWrittenAndNoSheet)
{
    // Long enough that the click on Cancel lands while the markers are placed.
    TempHome::write(list,
                    TempHome::read(list) +
                        QByteArray("1\tV1\tA\tc\t01:00:10:00\t00:00:01:00\tRed\n").repeated(20000));
    const QString target = home.copyOfData(u"sequence.xml"_s);
    MyDocument *document = open(target);
    document->findChild<QPushButton *>(u"sendToFCPBtn"_s)->click();
    document->findChild<QPushButton *>(u"cancelButton"_s)->click();
    settle(document);
    EXPECT_EQ(TempHome::read(target),
              TempHome::read(QStringLiteral(CUEBRIDGE_TEST_DATA "/sequence.xml")));
    const auto boxes = document->findChildren<QMessageBox *>();
    EXPECT_TRUE(std::none_of(boxes.begin(), boxes.end(), std::mem_fn(&QWidget::isVisible)));
    EXPECT_TRUE(document->findChild<QPushButton *>(u"sendToFCPBtn"_s)->isEnabled());
    EXPECT_FALSE(document->findChild<QWidget *>(u"cancelButton"_s)->isVisible());
}

TEST_F(Window, TheTableShowsWhereEachMarkerLandsAndTheTargetRowWhyNothingCan)
{
    const QString fcpx = home.file(u"clips.fcpxml"_s, projectAndClip);
    const struct
    {
        const char *name;
        QString target;
        const char *targetProblem; ///< beside the target; empty: none
        const char *status;        ///< of the table's first row
    } cases[] = {
        {"XMEML", home.copyOfData(u"project.xml"_s), "",
         "sequence “Cut 3 -Cuebridge” at frame 250"},
        // The timeline starts at zero: an hour in is past its end.
        {"FCPX", fcpx, "", "Skipped: outside every clip: 01:00:10:00"},
        {"NotXml", home.file(u"junk.xml"_s, "PNG"), "It is not an XML file: ", "—"},
        {"NoSequence", home.file(u"empty.xml"_s, "<xmeml><project/></xmeml>"),
         "It lists no sequence to import into.", "—"},
        {"FCP7ProjectWithoutTheEditor", home.file(u"cut.fcp"_s, "project"),
         "Final Cut Pro 7 is not running", "—"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        MyDocument *document = open(c.target);
        const auto *model = &document->markerTable();
        ASSERT_TRUE(waitFor([&] {
            return model->rowCount() == 1 &&
                   model->index(0, MarkerTableModel::Status).data() != QString();
        }));
        EXPECT_EQ(model->index(0, MarkerTableModel::Name).data(), u"A"_s);
        EXPECT_EQ(model->index(0, MarkerTableModel::Status).data().toString(),
                  QString::fromUtf8(c.status));
        const auto *beside = document->findChild<QLabel *>(u"targetProblemLabel"_s);
        const QString problem = QString::fromUtf8(c.targetProblem);
        EXPECT_EQ(beside->text().left(problem.size()), problem);
        EXPECT_EQ(beside->isVisible(), !problem.isEmpty());
        EXPECT_FALSE(document->findChild<QWidget *>(u"loadSpinner"_s)->isVisible());
    }
}

TEST_F(Window, CommandsThatCannotDoTheirWorkSaySoAndDropsOpenListsAndTargets)
{
    // A target to adopt: the browse sheet would keep drops from the window.
    QFUserDefaults::standardUserDefaults().setObject(home.copyOfData(u"project.xml"_s),
                                                     u"lastProject"_s);
    AppController controller;
    controller.openFiles({list});
    ASSERT_EQ(controller.documents().size(), 1);
    MyDocument *document = controller.documents().first();
    settle(document);
    EXPECT_EQ(AppController::recentMarkerLists(), QStringList(list));
    const auto trigger = [document](const QString &text) {
        for (QAction *action : document->menuBar()->findChildren<QAction *>())
            if (action->text() == text)
                action->trigger();
    };
    const struct
    {
        const char *name;
        std::function<void()> act;
        QString message;
        QString informative; ///< its start
    } cases[] = {
        {"AListThatIsNotThere", [&] { controller.openFiles({home.filePath(u"gone.txt"_s)}); },
         u"The marker list “gone.txt” cannot be opened"_s, u"There is no file "_s},
        // The offscreen platform has no browser.
        {"APageWithoutABrowser", [&] { controller.qfHome(); }, u"The page could not be opened"_s,
         u"No web browser could be started. The address is https://www.quillfen.com"_s},
        {"UpdatesWithoutTheUpdater", [&] { trigger(u"Check for Updates…"_s); },
         u"The updater is not installed"_s, u"Quillfen Software Update"_s},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        c.act();
        QMessageBox *box = nullptr;
        ASSERT_TRUE(waitFor([&] {
            for (QWidget *widget : QApplication::topLevelWidgets())
                if (auto *shown = qobject_cast<QMessageBox *>(widget);
                    shown && shown->isVisible() && shown->text().contains(c.message))
                    box = shown;
            return box != nullptr;
        }));
        EXPECT_TRUE(box->informativeText().startsWith(c.informative))
            << box->informativeText().toStdString();
        box->close();
    }

    // A dropped target becomes the window's; a dropped list opens in a window of its own.
    const QString target = home.copyOfData(u"sequence.xml"_s);
    const QString second = home.file(u"second.tsv"_s, TempHome::read(list));
    QMimeData dropped;
    dropped.setUrls({QUrl::fromLocalFile(target), QUrl::fromLocalFile(second)});
    // As a drag does it: it enters the window, which takes it, then drops.
    QDragEnterEvent enter(QPoint(10, 10), Qt::CopyAction, &dropped, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(document, &enter);
    QDropEvent drop(QPointF(10, 10), Qt::CopyAction, &dropped, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(document, &drop);
    EXPECT_EQ(document->session().targetPath(), target);
    ASSERT_EQ(controller.documents().size(), 2);
    EXPECT_EQ(controller.documents().last()->markerListPath(), second);
    for (MyDocument *window : controller.documents())
        settle(window);
}

TEST_F(Window, OnlyAClickAnswersAQuestionAPlainAlertClosedAnswersWithItsDefault)
{
    MyDocument *document = open(home.copyOfData(u"project.xml"_s));
    const auto escape = [](QMessageBox *box) { QTest::keyClick(box, Qt::Key_Escape); };
    const auto closeButton = [](QMessageBox *box) { box->close(); };
    struct Case
    {
        bool question;
        std::function<void(QMessageBox *)> dismiss;
        qint64 answer;
    };
    const Case cases[] = {{true, closeButton, QFAlert::noAnswerReturn},
                          {true, escape, QFAlert::noAnswerReturn},
                          {false, closeButton, QFAlert::defaultReturn},
                          {false, escape, QFAlert::alternateReturn}};
    for (const Case &c : cases) {
        QTimer::singleShot(0, document, [&] {
            QMessageBox *box = sheet(document);
            ASSERT_NE(box, nullptr);
            c.dismiss(box);
        });
        const qint64 answer =
            c.question
                ? QFAlert::questionWithMessageText(u"Share?"_s, u"Allow"_s, u"More"_s, u"Deny"_s,
                                                   QString(), document)
                : QFAlert::alertSheetWithMessageText(u"Replace?"_s, u"Replace"_s, u"Cancel"_s,
                                                     QString(), QString(), document, true);
        EXPECT_EQ(answer, c.answer) << c.question;
    }
}

TEST_F(Window, AWindowClosedDuringAnImportGoesOnceItEnds)
{
    const QString target = home.copyOfData(u"sequence.xml"_s);
    QPointer<MyDocument> document = open(target);
    document->sendToFCP();
    document->close();
    ASSERT_FALSE(document.isNull()) << "closed while the import ran";
    EXPECT_FALSE(document->isVisible());
    // The alert is shown free-standing, the window being gone.
    QMessageBox *box = nullptr;
    ASSERT_TRUE(waitFor([&] {
        box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
        return box && box->isVisible();
    }));
    EXPECT_EQ(box->parent(), nullptr);
    box->buttons().first()->click();
    EXPECT_TRUE(waitFor([&] { return document.isNull(); }));
    EXPECT_TRUE(TempHome::read(target).contains("<name>A</name>"));
}

TEST_F(Window, LaunchOpensTheFilesGivenOrAsksForMarkerLists)
{
    QFUserDefaults::standardUserDefaults().setObject(home.copyOfData(u"project.xml"_s),
                                                     u"lastProject"_s);
    const QString second = home.file(u"second.txt"_s, TempHome::read(list));
    {
        AppController controller;
        controller.applicationDidFinishLaunching({second, list});
        ASSERT_EQ(controller.documents().size(), 2);
        EXPECT_EQ(controller.documents()[0]->markerListPath(), second);
        EXPECT_EQ(controller.documents()[1]->markerListPath(), list);
        for (MyDocument *document : controller.documents())
            waitFor([&] { return !document->session().isBusy(); });
    }
    // The panel runs modally: the user's answer comes from a timer.
    QString title;
    QFileDialog::FileMode mode = QFileDialog::AnyFile;
    QTimer user;
    QObject::connect(&user, &QTimer::timeout, [&] {
        auto *panel = qobject_cast<QFileDialog *>(QApplication::activeModalWidget());
        if (!panel)
            return;
        user.stop();
        title = panel->windowTitle();
        mode = panel->fileMode();
        panel->setDirectory(home.path());
        // Both typed into the panel's name field, as a user picking two does.
        panel->findChild<QLineEdit *>(u"fileNameEdit"_s)
            ->setText(u"\"notes.txt\" \"second.txt\""_s);
        QMetaObject::invokeMethod(panel, "accept");
    });
    user.start(20);
    AppController controller;
    controller.applicationDidFinishLaunching({});
    ASSERT_TRUE(waitFor([&] { return controller.documents().size() == 2; }));
    EXPECT_EQ(title, u"Browse for a Final Cut Pro marker list"_s);
    EXPECT_EQ(mode, QFileDialog::ExistingFiles);
    EXPECT_EQ(QDir(home.path()).relativeFilePath(controller.documents()[0]->markerListPath()),
              u"notes.txt"_s);
    for (MyDocument *document : controller.documents())
        waitFor([&] { return !document->session().isBusy(); });
}

TEST_F(Window, ALaterLaunchHandsItsListsToTheRunningOneWhereEachListOpensOnce)
{
    const QString target = home.copyOfData(u"project.xml"_s);
    SingleInstance running(u"test.socket"_s);
    // A socket left by a launch that crashed does not stop the next one.
    TempHome::write(running.socketPath(), "");
    ASSERT_TRUE(running.listen());
    AppController controller;
    QObject::connect(&running, &SingleInstance::launched, &controller,
                     [&](const QStringList &files, const QString &laterTarget) {
                         controller.applicationLaunchedAgain(files, laterTarget);
                     });
    const auto launch = [](const QStringList &files, const QString &laterTarget) {
        auto handed = std::async(std::launch::async, [=] {
            return SingleInstance(u"test.socket"_s).handOff(files, laterTarget);
        });
        waitFor([&] { return handed.wait_for(0s) == std::future_status::ready; });
        return handed.get();
    };
    EXPECT_TRUE(launch({list}, target));
    EXPECT_TRUE(launch({list}, QString()));
    ASSERT_EQ(controller.documents().size(), 1) << "the list already open comes to the front";
    EXPECT_EQ(QFUserDefaults::standardUserDefaults().stringForKey(u"lastProject"_s), target);

    // The Window menu lists each shown window once, however often it opens.
    MyDocument *document = controller.documents().first();
    QMenu *menu = nullptr;
    for (QMenu *candidate : document->menuBar()->findChildren<QMenu *>())
        if (candidate->title() == u"&Window")
            menu = candidate;
    ASSERT_NE(menu, nullptr);
    for (int opened = 0; opened < 2; ++opened)
        QMetaObject::invokeMethod(menu, "aboutToShow");
    const auto titles = [menu] {
        QStringList shown;
        for (const QAction *item : menu->actions())
            shown << item->text();
        return shown;
    };
    EXPECT_EQ(titles(), QStringList({u"&Minimize"_s, QString(), document->windowTitle()}));
    settle(document);
    document->hide();
    QMetaObject::invokeMethod(menu, "aboutToShow");
    EXPECT_EQ(titles(), QStringList({u"&Minimize"_s, QString()}));

    running.close();
    EXPECT_FALSE(launch({list}, QString())) << "no running one: this launch goes on";
}

} // namespace

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QApplication::setOrganizationName(u"Quillfen"_s);
    QApplication::setApplicationName(u"CuebridgeTests"_s);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
