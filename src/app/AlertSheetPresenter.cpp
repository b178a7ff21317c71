#include "AlertSheetPresenter.h"

#include "support/QFUserDefaults.h"

#include <QApplication>
#include <QCheckBox>
#include <QMessageBox>
#include <QPushButton>

#include <QCloseEvent>
#include <QKeyEvent>

#include <memory>

namespace {

/// A message box that Escape and the close button close without pressing a button
/// (a plain one presses its escape button, or refuses to close without one).
class QuestionBox : public QMessageBox
{
public:
    using QMessageBox::QMessageBox;

protected:
    void keyPressEvent(QKeyEvent *event) override
    {
        if (event->matches(QKeySequence::Cancel))
            close();
        else
            QMessageBox::keyPressEvent(event);
    }
    void closeEvent(QCloseEvent *event) override { QDialog::closeEvent(event); }
};

} // namespace

bool AlertSheetPresenter::hasSheet(QObject *window) const
{
    const auto *widget = qobject_cast<QWidget *>(window);
    if (!widget)
        return false;
    const QList<QWidget *> children = widget->findChildren<QWidget *>();
    return std::any_of(children.begin(), children.end(), [](const QWidget *child) {
        return child->isWindow() && child->isVisible() &&
               child->windowModality() == Qt::WindowModal;
    });
}

QObject *AlertSheetPresenter::show(const Content &content, QObject *window,
                                   std::function<void(qint64)> answered)
{
    auto *parent = qobject_cast<QWidget *>(window);
    if (parent && !parent->isVisible()) // a window closed while its import ran
        parent = nullptr;
    auto *box = content.answerOnlyByClick ? new QuestionBox(parent) : new QMessageBox(parent);
    box->setAttribute(Qt::WA_DeleteOnClose);
    // As on macOS: the application's icon and the message in bold.
    box->setIconPixmap(QApplication::windowIcon().pixmap(64, 64));
    box->setWindowTitle(QStringLiteral("Cuebridge"));
    box->setTextFormat(Qt::RichText);
    box->setText(QStringLiteral("<b>%1</b>").arg(content.messageText.toHtmlEscaped()));
    box->setInformativeText(content.informativeText);
    if (!content.detailedText.isEmpty())
        box->setDetailedText(content.detailedText);

    // The default button is 1, the alternate 0, the other -1.
    QPushButton *defaultButton = box->addButton(
        content.defaultButtonTitle.isNull() ? QStringLiteral("OK") : content.defaultButtonTitle,
        QMessageBox::AcceptRole);
    QPushButton *alternate =
        content.alternateButtonTitle.isNull()
            ? nullptr
            : box->addButton(content.alternateButtonTitle, QMessageBox::RejectRole);
    QPushButton *other =
        content.otherButtonTitle.isNull()
            ? nullptr
            : box->addButton(content.otherButtonTitle, QMessageBox::DestructiveRole);
    box->setDefaultButton(defaultButton);
    box->setEscapeButton(alternate ? alternate : defaultButton);

    if (!content.suppressionBinding.isNull()) {
        auto *check = new QCheckBox(QStringLiteral("Do not show this message again"));
        const QString key = content.suppressionBinding;
        check->setChecked(QFUserDefaults::standardUserDefaults().boolForKey(key));
        QObject::connect(check, &QCheckBox::toggled, [key](bool on) {
            QFUserDefaults::standardUserDefaults().setObject(on, key);
        });
        box->setCheckBox(check);
    }

    // Answered once: by a button, or when the box goes another way with the default (a
    // question: with no answer).
    auto pending = std::make_shared<std::function<void(qint64)>>(std::move(answered));
    const auto answer = [pending](qint64 code) {
        if (*pending)
            std::exchange(*pending, nullptr)(code);
    };
    QObject::connect(box, &QMessageBox::buttonClicked, box,
                     [answer, alternate, other](QAbstractButton *button) {
                         if (button == alternate)
                             answer(QFAlert::alternateReturn);
                         else if (button == other)
                             answer(QFAlert::otherReturn);
                         else
                             answer(QFAlert::defaultReturn);
                     });
    const qint64 unclicked =
        content.answerOnlyByClick ? QFAlert::noAnswerReturn : QFAlert::defaultReturn;
    QObject::connect(box, &QObject::destroyed, [answer, unclicked] { answer(unclicked); });

    if (parent) {
        parent->raise();
        parent->activateWindow();
        box->setWindowModality(Qt::WindowModal);
    } else {
        box->setWindowModality(Qt::ApplicationModal);
    }
    box->open();
    return box;
}

void AlertSheetPresenter::close(QObject *alert)
{
    if (auto *box = qobject_cast<QMessageBox *>(alert); box && box->isVisible())
        box->close();
}

void AlertSheetPresenter::detachSheets(QWidget *window)
{
    for (QMessageBox *sheet : window->findChildren<QMessageBox *>()) {
        if (!sheet->isVisible())
            continue;
        sheet->setParent(nullptr, sheet->windowFlags());
        sheet->setWindowModality(Qt::ApplicationModal);
        sheet->show();
    }
}
