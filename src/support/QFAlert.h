#pragma once

#include <QObject>
#include <QPointer>
#include <QString>
#include <QVariantMap>

#include <atomic>
#include <functional>
#include <memory>

class QFAlert;

/// Shows the alerts of QFAlert: the application installs message boxes shown as
/// sheets, the command line prints to the terminal. One presenter per process.
class QFAlertPresenter
{
public:
    /// What one alert shows. A null button title means no such button; a null default
    /// title gives the platform's own.
    struct Content
    {
        QString messageText;
        QString informativeText;
        QString defaultButtonTitle;
        QString alternateButtonTitle;
        QString otherButtonTitle;
        /// The preference key the suppression check box is bound to; null for none.
        QString suppressionBinding;
        /// Only a click on a button answers; closed any other way (its close button,
        /// Escape, the session ending) the alert answers QFAlert::noAnswerReturn. Other
        /// alerts closed without a click answer with the default button.
        bool answerOnlyByClick = false;
        /// Shown on request below the informative text (the lines an import skipped).
        QString detailedText;
    };

    virtual ~QFAlertPresenter() = default;

    /// Whether show() must run on the main thread (widgets); the terminal needs not.
    virtual bool needsMainThread() const { return true; }
    /// Whether the window already shows a sheet.
    virtual bool hasSheet(QObject *window) const = 0;
    /// Shows the alert as a sheet on the window, or free-standing without one. answered
    /// is called once with the button's return code when the user answers. Returns the
    /// platform's alert object, if there is one.
    virtual QObject *show(const Content &content, QObject *window,
                          std::function<void(qint64)> answered) = 0;
    /// Takes a shown alert away without an answer.
    virtual void close(QObject *alert) = 0;
};

/// A standard alert (message, informative text, up to three buttons, an optional
/// suppression check box bound to a preference) shown as a sheet on a window, from any
/// thread. The waiting forms return the code of the button pressed: the default
/// button 1, the alternate 0, the other -1; the timed alert answers itself with 1.
class QFAlert : public QObject
{
    Q_OBJECT

public:
    static constexpr qint64 defaultReturn = 1;
    static constexpr qint64 alternateReturn = 0;
    static constexpr qint64 otherReturn = -1;
    /// What the forms that do not wait return.
    static constexpr qint64 notWaited = -1;
    /// A question closed without a click on one of its buttons.
    static constexpr qint64 noAnswerReturn = 2;

    QFAlert();
    ~QFAlert() override;

    /// The presenter alerts are shown with; none shows nothing and answers 1 at once.
    static void setPresenter(QFAlertPresenter *presenter);
    static QFAlertPresenter *presenter();

    /// The message and informative text with the default button, waiting for it.
    static qint64 alertSheetWithMessageText(const QString &messageText,
                                            const QString &informativeText, QObject *parentWindow);
    /// Three button titles (null for none); waits when asked to.
    static qint64
    alertSheetWithMessageText(const QString &messageText, const QString &defaultButton,
                              const QString &alternateButton, const QString &otherButton,
                              const QString &informativeText, QObject *parentWindow, bool block);
    /// As above; the delegate, the end selector and block are ignored (it always waits).
    static qint64
    alertSheetWithMessageText(const QString &messageText, const QString &defaultButton,
                              const QString &alternateButton, const QString &otherButton,
                              const QString &informativeText, QObject *parentWindow,
                              QObject *delegate, const char *didEndSelector, bool block);
    /// The full form. The delegate gets didEndSelector (a method invokable with one
    /// qint64, the return code) when the sheet ends; by default the alert object's own
    /// alertDidEnd. Returns the return code when waiting, else -1; -1 as well, with a
    /// line on the console, when the delegate has no such method.
    static qint64
    alertSheetWithMessageText(const QString &messageText, const QString &defaultButton,
                              const QString &alternateButton, const QString &otherButton,
                              const QString &informativeText, QObject *parentWindow,
                              QObject *delegate, const char *didEndSelector, bool block,
                              QFAlert *alertObject, const QString &suppressionBinding = QString());
    /// A question that only a click answers: waits, and returns noAnswerReturn when the
    /// alert went away without one (consent is given by no one else).
    static qint64 questionWithMessageText(const QString &messageText, const QString &defaultButton,
                                          const QString &alternateButton,
                                          const QString &otherButton,
                                          const QString &informativeText, QObject *parentWindow);
    /// Waits for the user, or answers 1 by itself after interval seconds.
    static qint64 timedAlertSheetWithMessageText(const QString &messageText,
                                                 const QString &defaultButton,
                                                 const QString &alternateButton,
                                                 const QString &otherButton,
                                                 const QString &informativeText,
                                                 QObject *parentWindow, int interval);

    /// Shows the alert the dictionary describes (keys "messageText", "defaultButtonTitle",
    /// "alternateButtonTitle", "otherButtonTitle", "informativeText", "didEndSelector",
    /// "suppressionBinding"). Main thread only, for presenters that need it.
    void alertSheetWithDictionary(const QVariantMap &dictionary);
    /// The default end of a sheet: keeps the code and marks the alert ended.
    Q_INVOKABLE void alertDidEnd(qint64 returnCode);
    /// Sleeps, then ends the alert with the default button's code.
    void defaultReturnAfterTimeInterval(int seconds);
    /// Takes the alert away if it is shown.
    void closeAlert();

    QObject *parentWindow() const { return m_parentWindow; }
    void setParentWindow(QObject *window) { m_parentWindow = window; }
    QObject *delegate() const { return m_delegate; }
    void setDelegate(QObject *delegate) { m_delegate = delegate; }
    bool alertEnded() const { return m_alertEnded.load(); }
    qint64 returnCode() const { return m_returnCode.load(); }
    QObject *alert() const { return m_alert; }
    /// Text the alert shows on request; give the alert object to the full form.
    void setDetailedText(const QString &text) { m_detailedText = text; }

private:
    /// The full form; whenShown runs once the alert is up, before any waiting.
    static qint64 present(const QString &messageText, const QString &defaultButton,
                          const QString &alternateButton, const QString &otherButton,
                          const QString &informativeText, QObject *parentWindow, QObject *delegate,
                          const char *didEndSelector, bool block, QFAlert *alertObject,
                          const QString &suppressionBinding,
                          const std::function<void()> &whenShown);
    /// Until the alert has ended: events handled on the main thread, sleep elsewhere.
    void waitUntilEnded();

    QPointer<QObject> m_parentWindow;
    QPointer<QObject> m_delegate;
    std::atomic<bool> m_alertEnded{false};
    std::atomic<qint64> m_returnCode{0};
    QPointer<QObject> m_alert;
    bool m_answerOnlyByClick = false;
    QString m_detailedText;
    /// Holds an alert that nobody waits for until it is answered.
    std::shared_ptr<QFAlert> m_keepAlive;
};
