#include "QFAlert.h"

#include "QFFormat.h"
#include "QFMainThread.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QMetaMethod>
#include <QThread>
#include <QTimer>

#include <cstdio>
#include <memory>
#include <thread>

namespace {

std::atomic<QFAlertPresenter *> installedPresenter{nullptr};

/// Whether the caller runs the application's event loop.
bool onMainThread()
{
    const QCoreApplication *app = QCoreApplication::instance();
    return app && QThread::currentThread() == app->thread();
}

/// Whether the object has a method of that name taking the return code.
bool respondsTo(const QObject *object, const QByteArray &selector)
{
    const QByteArray signature =
        QMetaObject::normalizedSignature(QByteArray(selector + "(qint64)").constData());
    return object->metaObject()->indexOfMethod(signature.constData()) >= 0;
}

/// An alert made here for one call, freed once nothing uses it: at once on its own
/// thread, else by that thread (the timer of a timed alert may hold it last).
std::shared_ptr<QFAlert> makeAlert()
{
    return std::shared_ptr<QFAlert>(new QFAlert, [](QFAlert *alert) {
        if (alert->thread() == QThread::currentThread())
            delete alert;
        else
            alert->deleteLater();
    });
}

} // namespace

QFAlert::QFAlert() = default;

QFAlert::~QFAlert() = default;

void QFAlert::setPresenter(QFAlertPresenter *presenter)
{
    installedPresenter = presenter;
}

QFAlertPresenter *QFAlert::presenter()
{
    return installedPresenter.load();
}

qint64 QFAlert::alertSheetWithMessageText(const QString &messageText,
                                          const QString &informativeText, QObject *parentWindow)
{
    return alertSheetWithMessageText(messageText, QString(), QString(), QString(), informativeText,
                                     parentWindow, nullptr, nullptr, true);
}

qint64 QFAlert::alertSheetWithMessageText(const QString &messageText, const QString &defaultButton,
                                          const QString &alternateButton,
                                          const QString &otherButton,
                                          const QString &informativeText, QObject *parentWindow,
                                          bool block)
{
    return alertSheetWithMessageText(messageText, defaultButton, alternateButton, otherButton,
                                     informativeText, parentWindow, nullptr, nullptr, block);
}

qint64 QFAlert::alertSheetWithMessageText(const QString &messageText, const QString &defaultButton,
                                          const QString &alternateButton,
                                          const QString &otherButton,
                                          const QString &informativeText, QObject *parentWindow,
                                          QObject *, const char *, bool)
{
    // The delegate, selector and waiting flag of this form have never been passed on.
    return alertSheetWithMessageText(messageText, defaultButton, alternateButton, otherButton,
                                     informativeText, parentWindow, nullptr, nullptr, true,
                                     nullptr);
}

qint64 QFAlert::alertSheetWithMessageText(const QString &messageText, const QString &defaultButton,
                                          const QString &alternateButton,
                                          const QString &otherButton,
                                          const QString &informativeText, QObject *parentWindow,
                                          QObject *delegate, const char *didEndSelector, bool block,
                                          QFAlert *alertObject, const QString &suppressionBinding)
{
    return present(messageText, defaultButton, alternateButton, otherButton, informativeText,
                   parentWindow, delegate, didEndSelector, block, alertObject, suppressionBinding,
                   {});
}

qint64 QFAlert::present(const QString &messageText, const QString &defaultButton,
                        const QString &alternateButton, const QString &otherButton,
                        const QString &informativeText, QObject *parentWindow, QObject *delegate,
                        const char *didEndSelector, bool block, QFAlert *alertObject,
                        const QString &suppressionBinding, const std::function<void()> &whenShown)
{
    std::shared_ptr<QFAlert> made;
    QFAlert *alert = alertObject;
    if (!alert) {
        made = makeAlert();
        alert = made.get();
    }
    alert->setParentWindow(parentWindow);
    alert->setDelegate(delegate ? delegate : alert);
    alert->m_alertEnded = false;
    const QByteArray selector = didEndSelector ? QByteArray(didEndSelector) : "alertDidEnd";
    if (!respondsTo(alert->delegate(), selector)) {
        std::fprintf(stderr, "Alert error: delegate does not respond to selector %s\n",
                     selector.constData());
        return notWaited;
    }

    QVariantMap dictionary{{QStringLiteral("didEndSelector"), QString::fromLatin1(selector)}};
    const auto put = [&dictionary](const char *key, const QString &value) {
        if (!value.isNull())
            dictionary.insert(QString::fromLatin1(key), value);
    };
    put("messageText", messageText);
    put("defaultButtonTitle", defaultButton);
    put("alternateButtonTitle", alternateButton);
    put("otherButtonTitle", otherButton);
    put("informativeText", informativeText);
    put("suppressionBinding", suppressionBinding);

    QFAlertPresenter *shower = presenter();
    if (shower && shower->needsMainThread())
        performOnMainThreadAndWait(
            [alert, &dictionary] { alert->alertSheetWithDictionary(dictionary); });
    else
        alert->alertSheetWithDictionary(dictionary);
    if (whenShown)
        whenShown();

    if (!block) {
        // Shown and not waited for: the alert lives until the user answers it.
        alert->m_keepAlive = made;
        return notWaited;
    }
    alert->waitUntilEnded();
    if (shower && shower->needsMainThread())
        performOnMainThreadAndWait([alert] { alert->closeAlert(); });
    else
        alert->closeAlert();
    return alert->returnCode();
}

qint64 QFAlert::timedAlertSheetWithMessageText(
    const QString &messageText, const QString &defaultButton, const QString &alternateButton,
    const QString &otherButton, const QString &informativeText, QObject *parentWindow, int interval)
{
    const std::shared_ptr<QFAlert> alert = makeAlert();
    // Started once the alert is up, so that its end cannot come before the alert's start.
    // The timer keeps its own hold: it still ends the alert after the user has answered.
    const auto startTimer = [alert, interval] {
        std::thread([alert, interval] {
            alert->defaultReturnAfterTimeInterval(interval);
        }).detach();
    };
    return present(messageText, defaultButton, alternateButton, otherButton, informativeText,
                   parentWindow, nullptr, nullptr, true, alert.get(), QString(), startTimer);
}

qint64 QFAlert::questionWithMessageText(const QString &messageText, const QString &defaultButton,
                                        const QString &alternateButton, const QString &otherButton,
                                        const QString &informativeText, QObject *parentWindow)
{
    const std::shared_ptr<QFAlert> alert = makeAlert();
    alert->m_answerOnlyByClick = true;
    return present(messageText, defaultButton, alternateButton, otherButton, informativeText,
                   parentWindow, nullptr, nullptr, true, alert.get(), QString(), {});
}

void QFAlert::alertSheetWithDictionary(const QVariantMap &dictionary)
{
    const auto text = [&dictionary](const char *key) {
        const QVariant value = dictionary.value(QString::fromLatin1(key));
        return value.isValid() ? value.toString() : QString();
    };
    QFAlertPresenter::Content content;
    content.messageText = text("messageText");
    if (content.messageText.isNull())
        content.messageText = QStringLiteral("");
    // The informative text is itself used as a format: a per-cent directive in it is
    // interpreted, as it always was.
    content.informativeText =
        QFFormat::formatList(QFFormat::format(u"%@", text("informativeText")), {});
    content.defaultButtonTitle = text("defaultButtonTitle");
    content.alternateButtonTitle = text("alternateButtonTitle");
    content.otherButtonTitle = text("otherButtonTitle");
    content.suppressionBinding = text("suppressionBinding");
    content.answerOnlyByClick = m_answerOnlyByClick;
    content.detailedText = m_detailedText;
    const QByteArray selector = text("didEndSelector").toLatin1();

    QFAlertPresenter *shower = presenter();
    if (m_parentWindow && shower && shower->hasSheet(m_parentWindow))
        m_parentWindow = nullptr;
    const QPointer<QObject> delegate = m_delegate;
    const QPointer<QFAlert> self = this;
    const auto answered = [delegate, selector, self](qint64 code) {
        if (delegate)
            QMetaObject::invokeMethod(delegate, selector.constData(), Qt::DirectConnection,
                                      Q_ARG(qint64, code));
        if (self)
            self->m_keepAlive.reset();
    };
    if (!shower) {
        answered(defaultReturn);
        return;
    }
    m_alert = shower->show(content, m_parentWindow, answered);
}

void QFAlert::alertDidEnd(qint64 returnCode)
{
    m_returnCode = returnCode;
    m_alertEnded = true;
}

void QFAlert::defaultReturnAfterTimeInterval(int seconds)
{
    std::this_thread::sleep_for(std::chrono::seconds(qMax(0, seconds)));
    m_returnCode = defaultReturn;
    m_alertEnded = true;
}

void QFAlert::closeAlert()
{
    if (m_alert && installedPresenter.load())
        installedPresenter.load()->close(m_alert);
    m_alert = nullptr;
}

void QFAlert::waitUntilEnded()
{
    if (!onMainThread()) {
        while (!m_alertEnded.load())
            QThread::msleep(200);
        return;
    }
    // The main thread keeps the interface alive: one pending event at a time, waiting up
    // to 10 ms for it.
    QEventLoop loop;
    while (!m_alertEnded.load()) {
        QTimer::singleShot(10, &loop, [] {});
        loop.processEvents(QEventLoop::WaitForMoreEvents);
    }
}
