#pragma once

#include "import/ImportSession.h"

#include <QMainWindow>
#include <QStringList>

#include <memory>

class MarkerTableModel;
class QFAlert;
class QLabel;

namespace Ui {
class MyDocument;
}

/// One marker list document and its window: the user picks a target, the window lists
/// what discovery finds in it, and the import runs with the options of the window.
/// The workflow is the import session's; this class presents what its signals tell.
class MyDocument : public QMainWindow
{
    Q_OBJECT

public:
    /// Opens the window for the marker list: the last target is adopted again, or the
    /// browse sheet asks for one.
    explicit MyDocument(const QString &markerListPath, QWidget *parent = nullptr);
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

    TargetKind targetKind() const { return m_session.targetKind(); }
    QString markerListPath() const { return m_markerListPath; }
    /// The marker table's rows: what the import would do with the window's options.
    const MarkerTableModel &markerTable() const { return *m_markerModel; }

    /// The end of the outcome sheet: "Show in Folder" (0) shows the result among its
    /// folder's files, "Open" (-1) opens an FCPX result in the editor.
    Q_INVOKABLE void outcomeSheetDidEnd(qint64 returnCode);

protected:
    /// A window closed while its work runs goes away once the work has ended, so that
    /// the result and its alert are not lost.
    void closeEvent(QCloseEvent *event) override;
    /// Marker lists dropped on the window open in windows of their own; a target
    /// dropped on it becomes its target.
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dropEvent(QDropEvent *event) override;

signals:
    /// Marker lists dropped on the window, for the application to open.
    void markerListsDropped(const QStringList &paths);

private:
    void windowControllerDidLoadNib();
    void setLoadSpinnerRunning(bool running);
    /// Empties the sequence menu and disables the import controls.
    void disableUI();
    /// Enables the import controls; the sequence menu only when asked.
    void enableUI(bool sequencePopUpEnabled);
    void discoveryFinished(const DiscoveredItems &found);
    void importFinished(const ImportOutcome &outcome);
    void showAlert(const ImportOutcome &outcome);
    /// Asks for the rows of the marker table with the item and options now chosen.
    void requestPreview();
    void previewFinished(const MarkerPreview &preview);
    /// Locks the controls while an import runs, and unlocks them.
    void setImporting(bool importing);
    /// The controls that enabling and disabling switch together (the to-do box and the
    /// sequence pop-up follow rules of their own).
    QList<QWidget *> importControls() const;

    std::unique_ptr<Ui::MyDocument> ui;
    const QString m_markerListPath;
    /// The items of the sequence pop-up, in its order.
    QList<SequenceItem> m_popUpItems;
    QStringList m_projectArray;
    bool busy() const;

    MarkerTableModel *m_markerModel = nullptr;
    std::unique_ptr<QFAlert> m_outcomeAlert;
    QString m_resultPath; // of the outcome the sheet shows
    bool m_resultIsFCPX = false;
    QLabel *m_finishingNote = nullptr; // while a closed window's import ends
    bool m_discovering = false;
    bool m_closing = false;
    bool m_importShown = true;
    ImportSession m_session;
};
