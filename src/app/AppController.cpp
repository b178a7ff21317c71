#include "AppController.h"

#include "MyDocument.h"
#include "WebAddresses.h"
#include "ui_Preferences.h"

#include "analytics/QFQC.h"
#include "diagnostics/QFBugReporter.h"
#include "diagnostics/QFTroubleshootingUtils.h"
#include "import/UserTextEscaping.h"
#include "support/QFAlert.h"
#include "support/QFLog.h"
#include "support/QFSoftwareUpdate.h"
#include "support/QFUserDefaults.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QDesktopServices>
#include <QDialog>
#include <QFileDialog>
#include <QFileInfo>
#include <QFileOpenEvent>
#include <QKeySequence>
#include <QLineEdit>
#include <QMenuBar>
#include <QMessageBox>
#include <QStandardPaths>
#include <QTimer>

AppController::AppController(QObject *parent) : QObject(parent)
{
    // The crash check looks for a report newer than the last launch, so it runs before
    // anything of this launch is written; then crashes of this run leave a report.
    QFBugReporter::startBugReporter();
    QFBugReporter::installCrashReportWriter();
    QFLog::createNewLog();
    QFUserDefaults::standardUserDefaults().registerDefaults(
        {{QStringLiteral("SUCheckAtStartup"), true}, {QStringLiteral("offsetValue"), 0}});
    UserTextEscaping::registerDefaults(); // "stripWhitespace"
    QFAlert::setPresenter(&m_alerts);
    QApplication::setQuitOnLastWindowClosed(false);
    qApp->installEventFilter(this);
}

bool AppController::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::FileOpen) {
        openFiles({static_cast<QFileOpenEvent *>(event)->file()});
        return true;
    }
    return QObject::eventFilter(watched, event);
}

AppController::~AppController()
{
    for (MyDocument *document : QList(m_documents))
        delete document;
    QFAlert::setPresenter(nullptr);
}

void AppController::applicationDidFinishLaunching(const QStringList &files)
{
    if (files.isEmpty())
        QTimer::singleShot(0, this, &AppController::performStartupAction);
    else
        openFiles(files);
    m_softwareUpdate.startup();
    QTimer::singleShot(1000, this, [this] {
        platformDidFinishLaunching();
        if (!QApplication::activeWindow() && !QApplication::activeModalWidget() && !m_panelShown &&
            documents().isEmpty())
            performStartupAction();
    });
    QFQC::sharedController().loadQC(nullptr);
}

void AppController::applicationLaunchedAgain(const QStringList &files, const QString &target,
                                             bool firstLaunch)
{
    // A new window adopts the last target, so the one given becomes the last.
    if (!target.isEmpty())
        QFUserDefaults::standardUserDefaults().setObject(target, QStringLiteral("lastProject"));
    if (firstLaunch)
        applicationDidFinishLaunching(files);
    else if (!files.isEmpty())
        openFiles(files);
    else if (!documents().isEmpty())
        bringToFront(documents().constLast());
    else if (!m_panelShown)
        QTimer::singleShot(0, this, &AppController::performStartupAction);
}

void AppController::performStartupAction()
{
    openFile();
}

void AppController::openFile()
{
    QFileDialog panel(nullptr, QStringLiteral("Browse for a Final Cut Pro marker list"));
    panel.setWindowModality(Qt::ApplicationModal);
    panel.setFileMode(QFileDialog::ExistingFiles);
    // Our lists, the marker exports of other editors, subtitles; and whatever else a
    // list was saved as.
    panel.setNameFilters({QStringLiteral("Marker lists (*.txt *.tsv *.csv *.edl *.srt *.vtt)"),
                          QStringLiteral("All files (*)")});
    panel.setDirectory(QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation));
    m_panelShown = true;
    const bool chosen = panel.exec() == QDialog::Accepted;
    m_panelShown = false;
    if (chosen)
        openFiles(panel.selectedFiles());
    documentsDidChange();
}

void AppController::openFiles(const QStringList &paths)
{
    for (const QString &path : paths) {
        if (!QFileInfo(path).isFile()) {
            // Not waited for: several may be missing, and launching goes on.
            QFAlert::alertSheetWithMessageText(
                QStringLiteral("The marker list “%1” cannot be opened")
                    .arg(QFileInfo(path).fileName()),
                QString(), QString(), QString(),
                QFileInfo(path).isDir() ? QStringLiteral("%1 is a folder.").arg(path)
                                        : QStringLiteral("There is no file %1.").arg(path),
                nullptr, nullptr, nullptr, false, nullptr);
            continue;
        }
        const QString absolute = QFileInfo(path).absoluteFilePath();
        rememberRecent(absolute);
        const auto open = std::find_if(m_documents.cbegin(), m_documents.cend(), [&](auto *d) {
            return d->isVisible() && QFileInfo(d->markerListPath()) == QFileInfo(absolute);
        });
        if (open != m_documents.cend()) {
            bringToFront(*open);
            continue;
        }
        auto *document = new MyDocument(absolute);
        populateMenus(document->menuBar());
        connect(document, &MyDocument::markerListsDropped, this, &AppController::openFiles);
        m_documents.append(document);
        // Compared by address only: the object is no document any more when it says so.
        connect(document, &QObject::destroyed, this, [this, document] {
            m_documents.removeOne(document);
            documentsDidChange();
        });
    }
    emit documentsChanged();
}

QList<MyDocument *> AppController::documents() const
{
    return m_documents;
}

void AppController::documentsDidChange()
{
    emit documentsChanged();
    if (quitsWithoutDocuments() && documents().isEmpty() && !m_panelShown)
        QTimer::singleShot(0, this, [this] {
            if (documents().isEmpty() && !m_panelShown)
                QApplication::quit();
        });
}

void AppController::bringToFront(QWidget *window)
{
    window->showNormal();
    window->raise();
    window->activateWindow();
}

// ---- menus -----------------------------------------------------------------------------

void AppController::populateMenus(QMenuBar *bar)
{
    QMenu *file = bar->addMenu(QStringLiteral("&File"));
    file->addAction(QStringLiteral("&Open Marker List…"), QKeySequence::Open, this,
                    &AppController::openFile);
    QMenu *recent = file->addMenu(QStringLiteral("Open &Recent"));
    connect(recent, &QMenu::aboutToShow, recent, [this, recent] {
        recent->clear();
        const QStringList paths = recentMarkerLists();
        for (const QString &path : paths)
            recent->addAction(QFileInfo(path).fileName(), this, [this, path] { openFiles({path}); })
                ->setToolTip(path);
        if (!paths.isEmpty())
            recent->addSeparator();
        QAction *clear = recent->addAction(QStringLiteral("Clear Menu"), this, [] {
            QFUserDefaults::standardUserDefaults().removeObjectForKey(recentKey);
        });
        clear->setEnabled(!paths.isEmpty());
    });
    file->addAction(QStringLiteral("&Close"), QKeySequence::Close, this, [] {
        if (QWidget *window = QApplication::activeWindow())
            window->close();
    });
    file->addSeparator();
    // Windows whose import still runs go once it has ended; then the application quits.
    QAction *quit =
        file->addAction(QStringLiteral("&Quit Cuebridge"), QKeySequence::Quit, this, [this] {
            m_quitting = true;
            QApplication::closeAllWindows();
            documentsDidChange();
        });
    quit->setMenuRole(QAction::QuitRole);

    QMenu *edit = bar->addMenu(QStringLiteral("&Edit"));
    const auto onLineEdit = [](void (QLineEdit::*action)()) {
        return [action] {
            if (auto *field = qobject_cast<QLineEdit *>(QApplication::focusWidget()))
                (field->*action)();
        };
    };
    edit->addAction(QStringLiteral("Cu&t"), QKeySequence::Cut, this, onLineEdit(&QLineEdit::cut));
    edit->addAction(QStringLiteral("&Copy"), QKeySequence::Copy, this, [] {
        if (auto *field = qobject_cast<QLineEdit *>(QApplication::focusWidget()))
            field->copy();
    });
    edit->addAction(QStringLiteral("&Paste"), QKeySequence::Paste, this,
                    onLineEdit(&QLineEdit::paste));
    edit->addAction(QStringLiteral("Select &All"), QKeySequence::SelectAll, this,
                    onLineEdit(&QLineEdit::selectAll));
    edit->addSeparator();
    QAction *prefs = edit->addAction(QStringLiteral("Pr&eferences…"), QKeySequence::Preferences,
                                     this, &AppController::showPrefs);
    prefs->setMenuRole(QAction::PreferencesRole);

    QMenu *window = bar->addMenu(QStringLiteral("&Window"));
    // Rebuilt each time it opens: the shown documents, the active one checked.
    const auto rebuildWindowMenu = [this, window] {
        window->clear();
        window->addAction(QStringLiteral("&Minimize"), QKeySequence(Qt::CTRL | Qt::Key_M), this,
                          [] {
                              if (QWidget *active = QApplication::activeWindow())
                                  active->showMinimized();
                          });
        window->addSeparator();
        for (MyDocument *document : documents()) {
            if (!document->isVisible()) // closed, its import still running
                continue;
            QAction *item = window->addAction(document->windowTitle(), document,
                                              [document] { bringToFront(document); });
            item->setCheckable(true);
            item->setChecked(document->isActiveWindow());
        }
    };
    rebuildWindowMenu(); // its shortcut works before it is first opened
    connect(window, &QMenu::aboutToShow, window, rebuildWindowMenu);

    const QString version = QCoreApplication::applicationVersion();
    QMenu *help = bar->addMenu(QStringLiteral("&Help"));
    help->addAction(QStringLiteral("Cuebridge User Manual"), this, &AppController::userManual);
    help->addSeparator();
    help->addAction(QStringLiteral("Report a Bug…"), this, &AppController::bugReportHome);
    help->addAction(QStringLiteral("Request a Feature…"), this, &AppController::featureRequestHome);
    help->addAction(QStringLiteral("Cuebridge Support"), this, &AppController::supportHome);
    help->addSeparator();
    help->addAction(QStringLiteral("View Log"), this, &AppController::viewLog);
    help->addAction(QStringLiteral("Gather Logs"), this, &AppController::gatherLogs);
    help->addSeparator();
    help->addAction(QStringLiteral("Quillfen Home Page"), this, &AppController::qfHome);
    help->addAction(QStringLiteral("More Tools from Quillfen"), this,
                    &AppController::otherProductsHome);
    QAction *update = help->addAction(QStringLiteral("Check for Updates…"), this, [this] {
        if (QFSoftwareUpdate::updaterPath().isEmpty()) {
            QFAlert::alertSheetWithMessageText(
                QStringLiteral("The updater is not installed"), QString(), QString(), QString(),
                QStringLiteral("Quillfen Software Update, which checks for updates, is not "
                               "installed on this computer. The latest version of Cuebridge is "
                               "at %1")
                    .arg(WebAddresses::home().toString()),
                QApplication::activeWindow(), nullptr, nullptr, false, nullptr);
            return;
        }
        m_softwareUpdate.manualUpdateCheck();
    });
    update->setMenuRole(QAction::ApplicationSpecificRole);
    QAction *about = help->addAction(QStringLiteral("About Cuebridge"), this, [version] {
        QMessageBox::about(QApplication::activeWindow(), QStringLiteral("About Cuebridge"),
                           QStringLiteral("<b>Cuebridge %1</b><p>Marker lists onto Final Cut Pro "
                                          "timelines.</p><p>© Quillfen</p>")
                               .arg(version));
    });
    about->setMenuRole(QAction::AboutRole);
}

void AppController::showPrefs()
{
    if (!m_windowPrefs) {
        m_windowPrefs = new QDialog;
        m_windowPrefs->setAttribute(Qt::WA_DeleteOnClose);
        Ui::Preferences form;
        form.setupUi(m_windowPrefs);
        m_qcLoggingCheck = form.qcLoggingCheck;
        // For this run only: the consent file keeps the answer given to the question.
        connect(m_qcLoggingCheck, &QCheckBox::toggled, this,
                [](bool on) { QFQC::sharedController().setShouldLog(on); });
    }
    m_qcLoggingCheck->setChecked(QFQC::sharedController().shouldLog());
    m_windowPrefs->show();
    m_windowPrefs->raise();
    m_windowPrefs->activateWindow();
}

// ---- the maker's web pages -------------------------------------------------------------

void AppController::openPage(const QUrl &page)
{
    if (QDesktopServices::openUrl(page))
        return;
    QFAlert::alertSheetWithMessageText(
        QStringLiteral("The page could not be opened"), QString(), QString(), QString(),
        QStringLiteral("No web browser could be started. The address is %1").arg(page.toString()),
        QApplication::activeWindow(), nullptr, nullptr, false, nullptr);
}

void AppController::rememberRecent(const QString &path)
{
    QStringList paths = recentMarkerLists();
    paths.removeAll(path);
    paths.prepend(path);
    QFUserDefaults::standardUserDefaults().setObject(paths.mid(0, 10), recentKey);
}

QStringList AppController::recentMarkerLists()
{
    QStringList paths =
        QFUserDefaults::standardUserDefaults().objectForKey(recentKey).toStringList();
    paths.removeIf([](const QString &path) { return !QFileInfo(path).isFile(); });
    return paths;
}

void AppController::userManual()
{
    openPage(WebAddresses::userManual());
}

void AppController::bugReportHome()
{
    openPage(WebAddresses::bugReport(QCoreApplication::applicationVersion()));
}

void AppController::featureRequestHome()
{
    openPage(WebAddresses::featureRequest(QCoreApplication::applicationVersion()));
}

void AppController::supportHome()
{
    openPage(WebAddresses::support());
}

void AppController::qfHome()
{
    openPage(WebAddresses::home());
}

void AppController::otherProductsHome()
{
    openPage(WebAddresses::otherProducts());
}

// ---- support ---------------------------------------------------------------------------

void AppController::viewLog()
{
    const QString log = QFLog::sharedController().currentLogPath();
    // Without a log the utility says so itself; with one, only a failed open is ours.
    if (!QFTroubleshootingUtils::viewLogForApp(QStringLiteral("Cuebridge")) &&
        QFileInfo::exists(log))
        QFAlert::alertSheetWithMessageText(
            QStringLiteral("The log could not be opened"), QString(), QString(), QString(),
            QStringLiteral("No application here opens it. The log is the file %1").arg(log),
            QApplication::activeWindow(), nullptr, nullptr, false, nullptr);
}

void AppController::gatherLogs()
{
    QFTroubleshootingUtils::gatherLogsForAppWithName(QStringLiteral("Cuebridge"));
}
