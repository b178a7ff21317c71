#include "MyDocument.h"

#include "ui_MyDocument.h"

#include "AlertSheetPresenter.h"
#include "MarkerTableModel.h"

#include "fcp7link/QFAppleEvents.h"
#include "import/FCPXImport.h"
#include "import/TextEncoding.h"
#include "support/QFAlert.h"
#include "support/QFMainThread.h"
#include "support/QFUserDefaults.h"
#include "support/QFWorkspace.h"
#include "time/QFNumberReader.h"

#include <QCloseEvent>
#include <QDesktopServices>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFileDialog>
#include <QFileIconProvider>
#include <QFileInfo>
#include <QHeaderView>
#include <QIcon>
#include <QIntValidator>
#include <QLabel>
#include <QMimeData>
#include <QShortcut>
#include <QUrl>

namespace {

const QString lastProjectKey = QStringLiteral("lastProject");
const QString offsetValueKey = QStringLiteral("offsetValue");
const QString offsetUnitKey = QStringLiteral("offsetUnit");

QIcon imageNamed(SequenceItem::Image image)
{
    switch (image) {
    case SequenceItem::Image::Sequence:
        return QIcon(QStringLiteral(":/images/sequence.png"));
    case SequenceItem::Image::FCPXEvent:
        return QIcon(QStringLiteral(":/images/fcpx_event.png"));
    case SequenceItem::Image::None:
        break;
    }
    return QIcon();
}

} // namespace

MyDocument::MyDocument(const QString &markerListPath, QWidget *parent)
    : QMainWindow(parent), ui(std::make_unique<Ui::MyDocument>()), m_markerListPath(markerListPath),
      m_session(markerListPath)
{
    ui->setupUi(this);
    setAttribute(Qt::WA_DeleteOnClose);
    const QString name = QFileInfo(markerListPath).fileName();
    setWindowTitle(QStringLiteral("%1 — Cuebridge").arg(name));
    setAcceptDrops(true);
    setWindowFilePath(markerListPath);
    ui->markerListLabel->setText(QStringLiteral("Markers from %1").arg(name));
    for (QWidget *spinner :
         {static_cast<QWidget *>(ui->loadSpinner), static_cast<QWidget *>(ui->processSpinner)}) {
        QSizePolicy policy = spinner->sizePolicy();
        policy.setRetainSizeWhenHidden(true); // the layout does not jump when one starts
        spinner->setSizePolicy(policy);
        spinner->hide();
    }
    ui->projectTable->setColumnCount(1);
    ui->projectTable->setIconSize(QSize(16, 16));
    ui->projectTableLabel->hide();
    ui->projectTable->hide();
    QFUserDefaults &defaults = QFUserDefaults::standardUserDefaults();
    ui->frameOffsetText->setText(QString::number(defaults.integerForKey(offsetValueKey)));
    // Whole numbers only: "1.5" seconds would silently have been 1.
    ui->frameOffsetText->setValidator(new QIntValidator(-100'000'000, 100'000'000, this));
    // The unit goes with the value: -3600 seconds must not come back as frames.
    ui->offsetUnitPopUp->setCurrentIndex(
        int(offsetUnitForIndex(defaults.integerForKey(offsetUnitKey))));
    ui->todoMarkerCheck->setEnabled(false);
    disableUI();

    m_markerModel = new MarkerTableModel(this);
    ui->markerTable->setModel(m_markerModel);
    // Fixed widths: measuring fifty thousand rows would stall the window.
    const int widths[] = {40, 120, 170, 84, 84, 92, 60};
    for (int column = 0; column < int(std::size(widths)); ++column)
        ui->markerTable->setColumnWidth(column, widths[column]);
    ui->markerTable->verticalHeader()->setDefaultSectionSize(
        ui->markerTable->fontMetrics().height() + 6);
    ui->encodingPopUp->addItem(QStringLiteral("Detected encoding"), QByteArray());
    for (const QByteArray &encoding : TextEncoding::choices())
        ui->encodingPopUp->addItem(TextEncoding::displayName(encoding), encoding);
    ui->targetProblemLabel->hide();
    ui->previewProblemLabel->hide();
    ui->cancelButton->hide();

    connect(ui->browseButton, &QPushButton::clicked, this, &MyDocument::openProjectFile);
    connect(ui->sequenceReloadBtn, &QPushButton::clicked, this, &MyDocument::reloadSequences);
    connect(ui->sendToFCPBtn, &QPushButton::clicked, this, &MyDocument::sendToFCP);
    connect(ui->frameOffsetText, &QLineEdit::editingFinished, this, [this] {
        QFUserDefaults::standardUserDefaults().setObject(
            QFNumberReader::leadingInteger(ui->frameOffsetText->text()), offsetValueKey);
    });
    connect(ui->offsetUnitPopUp, &QComboBox::currentIndexChanged, this, [](int index) {
        QFUserDefaults::standardUserDefaults().setObject(index, offsetUnitKey);
    });
    // The table follows every change of item and option.
    for (QCheckBox *check : {ui->clearMarkerCheck, ui->todoMarkerCheck})
        connect(check, &QCheckBox::toggled, this, &MyDocument::requestPreview);
    for (QComboBox *popUp : {ui->offsetUnitPopUp, ui->sequencePopUp, ui->encodingPopUp})
        connect(popUp, &QComboBox::currentIndexChanged, this, &MyDocument::requestPreview);
    connect(ui->frameOffsetText, &QLineEdit::textChanged, this, &MyDocument::requestPreview);
    connect(&m_session, &ImportSession::previewFinished, this, &MyDocument::previewFinished);
    // Return imports, as the default button of a dialog would.
    for (const QKeySequence &key : {QKeySequence(Qt::Key_Return), QKeySequence(Qt::Key_Enter)}) {
        connect(new QShortcut(key, this), &QShortcut::activated, this, [this] {
            if (ui->sendToFCPBtn->isEnabled())
                ui->sendToFCPBtn->click();
        });
    }
    connect(ui->projectTable, &QTableWidget::cellDoubleClicked, this,
            [this](int row, int) { openFilename(m_projectArray.value(row)); });
    connect(&m_session, &ImportSession::discoveryStarted, this, [this](const QString &path) {
        m_discovering = true;
        ui->projectPathText->setText(path);
        ui->targetProblemLabel->hide();
        disableUI();
        setLoadSpinnerRunning(true);
    });
    connect(&m_session, &ImportSession::discoveryFinished, this, &MyDocument::discoveryFinished);
    connect(&m_session, &ImportSession::importStarted, this, [this] {
        m_importShown = false;
        setImporting(true);
    });
    connect(&m_session, &ImportSession::importProgress, this,
            [this](qsizetype done, qsizetype total) {
                ui->processSpinner->setMaximum(int(total));
                ui->processSpinner->setValue(int(done));
            });
    connect(ui->cancelButton, &QPushButton::clicked, this, [this] { m_session.cancelImport(); });
    connect(&m_session, &ImportSession::importFinished, this, &MyDocument::importFinished);
    connect(&m_session, &ImportSession::idle, this, [this] {
        if (m_closing && !busy()) // not the end of an earlier run
            deleteLater();
    });

    windowControllerDidLoadNib();
    requestPreview(); // the list's rows at once, before any target answers
}

MyDocument::~MyDocument() = default;

void MyDocument::windowControllerDidLoadNib()
{
    populateFinalCutProProjects();
    show();
    raise();
    activateWindow();
    const QString last = QFUserDefaults::standardUserDefaults().stringForKey(lastProjectKey);
    if (!last.isEmpty() && QFileInfo::exists(last)) {
        ui->projectPathText->setText(last);
        openFilename(last);
    } else {
        openProjectFile();
    }
}

// ---- actions -------------------------------------------------------------------------

void MyDocument::openProjectFile()
{
    auto *panel = new QFileDialog(this, QStringLiteral("Browse for an FCP 7 or FCPX XML file."));
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->setWindowModality(Qt::WindowModal);
    panel->setFileMode(QFileDialog::ExistingFile);
    panel->setNameFilters({QStringLiteral("Final Cut Pro projects and XML (*.fcp *.fcpxml "
                                          "*.fcpxmld *.xml)"),
                           QStringLiteral("All files (*)")});
    const QString last = QFUserDefaults::standardUserDefaults().stringForKey(lastProjectKey);
    if (!last.isEmpty())
        panel->setDirectory(QFileInfo(last).absolutePath());
    // An FCPXML bundle is a folder here: entering it chooses it.
    connect(panel, &QFileDialog::directoryEntered, panel, [this, panel](const QString &folder) {
        if (folder.endsWith(QStringLiteral(".fcpxmld"), Qt::CaseInsensitive)) {
            panel->close();
            openFilename(folder);
        }
    });
    connect(panel, &QFileDialog::fileSelected, this, &MyDocument::openFilename);
    panel->open();
}

void MyDocument::openFilename(const QString &path)
{
    if (path.isEmpty() || !QFileInfo::exists(path))
        return;
    QFUserDefaults::standardUserDefaults().setObject(path, lastProjectKey);
    m_session.openFilename(path);
}

void MyDocument::reloadSequences()
{
    m_session.reloadSequences();
}

ImportOptions MyDocument::options() const
{
    ImportOptions options;
    options.clearExistingMarkers = ui->clearMarkerCheck->isChecked();
    options.frameOffset = QFNumberReader::leadingInteger(ui->frameOffsetText->text());
    options.frameOffsetUnit = offsetUnitForIndex(ui->offsetUnitPopUp->currentIndex());
    options.todoMarkersEnabled = ui->todoMarkerCheck->isChecked();
    options.markerListEncoding = ui->encodingPopUp->currentData().toByteArray();
    return options;
}

void MyDocument::sendToFCP()
{
    if (ui->projectPathText->text().isEmpty())
        return;
    const int index = ui->sequencePopUp->currentIndex();
    m_session.chooseItem(index >= 0 && index < m_popUpItems.size()
                             ? std::optional(m_popUpItems.at(index))
                             : std::nullopt);
    m_session.sendToFCP(options());
}

void MyDocument::requestPreview()
{
    if (m_discovering || m_session.isImporting())
        return; // the end of either asks again
    const int index = ui->sequencePopUp->currentIndex();
    m_session.chooseItem(index >= 0 && index < m_popUpItems.size()
                             ? std::optional(m_popUpItems.at(index))
                             : std::nullopt);
    m_session.requestPreview(options());
}

void MyDocument::previewFinished(const MarkerPreview &preview)
{
    m_markerModel->setPreview(preview);
    ui->summaryLabel->setText(preview.summary());
    ui->previewProblemLabel->setText(preview.problem);
    ui->previewProblemLabel->setVisible(!preview.problem.isEmpty());
}

void MyDocument::setImporting(bool importing)
{
    // A second press, or a change of target or option, would act on what the import
    // is writing.
    for (QWidget *group :
         {static_cast<QWidget *>(ui->timelineGroup), static_cast<QWidget *>(ui->optionsGroup),
          static_cast<QWidget *>(ui->encodingPopUp)})
        group->setEnabled(!importing);
    ui->processSpinner->setRange(0, 0); // busy until the first count
    ui->processSpinner->setVisible(importing);
    ui->cancelButton->setVisible(importing);
    ui->sendToFCPBtn->setEnabled(!importing && ui->clearMarkerCheck->isEnabled());
}

void MyDocument::populateFinalCutProProjects()
{
    if (!QFAppleEvents::isFCPRunning())
        return;
    setLoadSpinnerRunning(true);
    m_projectArray = QFAppleEvents::listOfOpenFCPProjects().value_or(QStringList());
    setLoadSpinnerRunning(false);
    performOnMainThreadAndWait([this] {
        QFileIconProvider icons;
        ui->projectTable->setRowCount(int(m_projectArray.size()));
        for (int row = 0; row < m_projectArray.size(); ++row) {
            const QString path = m_projectArray.at(row);
            ui->projectTable->setItem(row, 0,
                                      new QTableWidgetItem(icons.icon(QFileInfo(path)), path));
        }
        ui->projectTableLabel->setVisible(!m_projectArray.isEmpty());
        ui->projectTable->setVisible(!m_projectArray.isEmpty());
    });
}

// ---- what the session tells -----------------------------------------------------------

void MyDocument::setLoadSpinnerRunning(bool running)
{
    performOnMainThreadAndWait([this, running] { ui->loadSpinner->setVisible(running); });
}

QList<QWidget *> MyDocument::importControls() const
{
    return {ui->sendToFCPBtn, ui->clearMarkerCheck, ui->frameOffsetText, ui->offsetUnitPopUp,
            ui->sequenceReloadBtn};
}

void MyDocument::disableUI()
{
    ui->sequencePopUp->clear();
    m_popUpItems.clear();
    for (QWidget *control : importControls())
        control->setEnabled(false);
    ui->sequencePopUp->setEnabled(false);
}

void MyDocument::enableUI(bool sequencePopUpEnabled)
{
    for (QWidget *control : importControls())
        control->setEnabled(true);
    ui->sequencePopUp->setEnabled(sequencePopUpEnabled);
}

void MyDocument::discoveryFinished(const DiscoveredItems &found)
{
    disableUI();
    for (const SequenceItem &item : found.items) {
        ui->sequencePopUp->addItem(imageNamed(item.image), item.title, item.representedObject);
        m_popUpItems.append(item);
    }
    if (found.controlsEnabled)
        enableUI(found.menuEnabled);
    ui->todoMarkerCheck->setEnabled(found.todoEnabled);
    setLoadSpinnerRunning(false);
    ui->targetProblemLabel->setText(found.problem);
    ui->targetProblemLabel->setVisible(!found.problem.isEmpty());
    m_discovering = false;
    requestPreview();
    if (found.outcome.hasAlert())
        showAlert(found.outcome);
}

void MyDocument::importFinished(const ImportOutcome &outcome)
{
    m_importShown = true;
    setImporting(false);
    delete m_finishingNote;
    m_finishingNote = nullptr;
    m_resultPath = outcome.resultPath;
    m_resultIsFCPX = targetKind().isFCPX;
    if (outcome.hasAlert())
        showAlert(outcome);
    // An XMEML file written in place holds renamed sequences with new uuids now: what it
    // lists is found anew, and the table follows.
    if (outcome.wroteResult() && !targetKind().isFCPX && !m_closing)
        reloadSequences();
    else
        requestPreview();
}

void MyDocument::showAlert(const ImportOutcome &outcome)
{
    // A closing window's outcome stands alone, so that the user still sees it; it then
    // names the list and the target.
    const bool onWindow =
        outcome.alertParent == ImportOutcome::AlertParent::DocumentWindow && !m_closing;
    QString informative = outcome.informativeText;
    if (m_closing)
        informative = QStringLiteral("%1 into %2:\n\n%3")
                          .arg(QFileInfo(m_markerListPath).fileName(),
                               QFileInfo(m_session.targetPath()).fileName(), informative);
    QStringList details = outcome.report.lineTexts();
    if (!outcome.resultPath.isEmpty())
        details.prepend(QStringLiteral("Result: %1").arg(outcome.resultPath));
    const bool written = !outcome.resultPath.isEmpty() && outcome.wroteResult();
    m_outcomeAlert = std::make_unique<QFAlert>();
    m_outcomeAlert->setDetailedText(details.join(u'\n'));
    // Not waited for: the window stays live while the user reads it.
    QFAlert::alertSheetWithMessageText(
        outcome.messageText, QString(), written ? QStringLiteral("Show in Folder") : QString(),
        written && m_resultIsFCPX ? QStringLiteral("Open") : QString(), informative,
        onWindow ? this : nullptr, this, "outcomeSheetDidEnd", false, m_outcomeAlert.get());
}

void MyDocument::outcomeSheetDidEnd(qint64 returnCode)
{
    if (m_resultPath.isEmpty())
        return;
    if (returnCode == QFAlert::alternateReturn)
        QDesktopServices::openUrl(QUrl::fromLocalFile(QFileInfo(m_resultPath).absolutePath()));
    else if (returnCode == QFAlert::otherReturn)
        QFWorkspace::shared().openFile(m_resultPath, FCPXImport::finalCutProBundleIdentifier,
                                       QFWorkspace::Asynchronous);
}

bool MyDocument::busy() const
{
    // An import whose end has not been shown yet still counts: its alert must not be lost.
    return m_session.isBusy() || !m_importShown;
}

void MyDocument::closeEvent(QCloseEvent *event)
{
    if (!busy()) {
        event->accept();
        return;
    }
    event->ignore();
    m_closing = true;
    AlertSheetPresenter::detachSheets(this);
    hide();
    if (m_session.isImporting() && !m_finishingNote) {
        m_finishingNote = new QLabel(QStringLiteral("Finishing the import of %1…")
                                         .arg(QFileInfo(m_markerListPath).fileName()));
        m_finishingNote->setWindowTitle(QStringLiteral("Cuebridge"));
        m_finishingNote->setWindowFlag(Qt::Tool);
        m_finishingNote->setMargin(16);
        m_finishingNote->show();
    }
}

void MyDocument::dragEnterEvent(QDragEnterEvent *event)
{
    if (event->mimeData()->hasUrls())
        event->acceptProposedAction();
}

void MyDocument::dropEvent(QDropEvent *event)
{
    QStringList lists;
    for (const QUrl &url : event->mimeData()->urls()) {
        const QString path = url.toLocalFile();
        if (path.isEmpty())
            continue;
        // What a target can be becomes the target; anything else is a marker list.
        if (targetFormatForPath(path) != TargetFormat::FCP7Project ||
            path.endsWith(QStringLiteral(".fcp"), Qt::CaseInsensitive))
            openFilename(path);
        else
            lists << path;
    }
    if (!lists.isEmpty())
        emit markerListsDropped(lists);
    event->acceptProposedAction();
}
