#pragma once

#include "import/ImportHost.h"
#include "import/ImportSession.h"

#include <QMainWindow>
#include <QStringList>

#include <memory>

namespace Ui {
class MyDocument;
}

/// One marker list document and its window: the user picks a target, the window lists
/// what discovery finds in it, and the import runs with the options of the window.
/// The workflow is the import session's; this class presents it. Members of
/// ImportHost may be called from the session's worker threads; the widgets change on
/// the main thread only, and the caller waits until they have.
class MyDocument : public QMainWindow, public ImportHost
{
    Q_OBJECT

public:
    /// Opens the window for the marker list: the last target is adopted again, or the
    /// browse sheet asks for one.
    explicit MyDocument(const QString &markerListPath, QWidget *parent = nullptr);
    /// Waits, with events served, for discovery or an import still under way.
    ~MyDocument() override;

    ImportSession &session() { return m_session; }

    /// The browse sheet for a target.
    void openProjectFile();
    /// Adopts a target and starts its discovery; nothing for a path where nothing exists.
    void openFilename(const QString &path);
    void reloadSequences();
    /// Starts the import with the window's options; nothing without a target.
    void sendToFCP();
    /// The options as the window's controls set them.
    ImportOptions options() const;

    /// The projects open in Final Cut Pro 7, listed in the window's table.
    void populateFinalCutProProjects();
    QStringList projectArray() const { return m_projectArray; }

    // ImportHost
    TargetKind &targetKind() override { return m_kind; }
    QString markerListPath() const override { return m_markerListPath; }
    void setProjectPath(const QString &path) override;
    void setLoadSpinnerRunning(bool running) override;
    void setProcessSpinnerRunning(bool running) override;
    void disableUI() override;
    void enableUI(bool sequencePopUpEnabled) override;
    void addItemToSequencePopUp(const SequenceItem &item) override;
    void setToDoMarkerCheckEnabled(bool enabled) override;
    void showAlert(const ImportOutcome &outcome) override;

protected:
    /// A window closed while its work runs goes away once the work has ended, so that
    /// the result and its alert are not lost.
    void closeEvent(QCloseEvent *event) override;

private:
    void windowControllerDidLoadNib();
    /// The controls that enabling and disabling switch together (the to-do box and the
    /// sequence pop-up follow rules of their own).
    QList<QWidget *> importControls() const;

    std::unique_ptr<Ui::MyDocument> ui;
    TargetKind m_kind;
    const QString m_markerListPath;
    /// The items of the sequence pop-up, in its order.
    QList<SequenceItem> m_popUpItems;
    QStringList m_projectArray;
    bool m_closing = false;
    ImportSession m_session; // last: its workers use everything above
};
