#pragma once

#include "AlertSheetPresenter.h"

#include "support/QFSoftwareUpdate.h"

#include <QList>
#include <QObject>
#include <QPointer>
#include <QStringList>

class MyDocument;
class QCheckBox;
class QDialog;
class QMenuBar;
class QUrl;

/// The application: start-up, the marker-list panel, the open documents, the menus,
/// the preferences window and the maker's web pages. The application never makes an
/// untitled document: it asks for marker lists instead.
class AppController : public QObject
{
    Q_OBJECT

public:
    /// Starts the log, registers the default preferences and installs the alert sheets.
    explicit AppController(QObject *parent = nullptr);
    ~AppController() override;

    /// After launch: opens the files given, in their order, or else the marker-list
    /// panel; one second later the panel again if no window is active. Then the usage
    /// analytics, which may ask for consent.
    void applicationDidFinishLaunching(const QStringList &files);
    /// A launch with its files and target (null for none): the target becomes the one
    /// new windows adopt. A later launch of the application lands here too: its lists
    /// open, or with none a window comes to the front (the panel when there is none).
    void applicationLaunchedAgain(const QStringList &files, const QString &target,
                                  bool firstLaunch = false);
    /// The marker-list panel, application-modal; each chosen list opens as a document.
    void openFile();
    /// Opens each marker list as a document, in the given order; a list already open
    /// brings its window to the front instead.
    void openFiles(const QStringList &paths);
    QList<MyDocument *> documents() const;

    /// The menus of a document window (on macOS they become the application's).
    void populateMenus(QMenuBar *bar);
    void showPrefs();

    void userManual();
    void bugReportHome();
    void featureRequestHome();
    void supportHome();
    void qfHome();
    void otherProductsHome();
    /// The current log in its default viewer.
    void viewLog();
    /// The logs, crash reports and preferences in an archive on the desktop.
    void gatherLogs();

    /// File > Open Recent: the marker lists opened last, newest first, that still exist.
    static QStringList recentMarkerLists();
    static inline const QString recentKey = QStringLiteral("recentMarkerLists");

signals:
    void documentsChanged();

protected:
    /// Marker lists opened from the desktop (macOS sends them as events).
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void performStartupAction();
    static void bringToFront(QWidget *window);
    /// Opens the page in the browser, or says where it is when no browser starts.
    static void openPage(const QUrl &page);
    static void rememberRecent(const QString &path);
    /// Where the application stands once the documents change: it quits with no
    /// document left where the platform says so.
    void documentsDidChange();

    // The platform's own pieces, in AppController_linux.cpp and AppController_mac.cpp.
    /// Once launching is over: on macOS the menu bar for when no window is open, and a
    /// click on the Dock icon with no document asks for marker lists, as at launch.
    void platformDidFinishLaunching();
    /// Whether the application quits once its last document has gone: always on Linux,
    /// where there is no menu bar without a window; on macOS only when the user quit.
    bool quitsWithoutDocuments() const;

    AlertSheetPresenter m_alerts;
    QFSoftwareUpdate m_softwareUpdate;
    QList<MyDocument *> m_documents; // each removed as it is destroyed
    QPointer<QDialog> m_windowPrefs;
    QCheckBox *m_qcLoggingCheck = nullptr; // in the preferences window
    bool m_panelShown = false;
    bool m_quitting = false;
};
