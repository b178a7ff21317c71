#include "TerminalAlertPresenter.h"

#include <QRegularExpression>

namespace {

thread_local std::FILE *alertStream = nullptr;
QMutex printing;

} // namespace

void TerminalAlertPresenter::setStream(std::FILE *stream)
{
    alertStream = stream;
}

QObject *TerminalAlertPresenter::show(const Content &content, QObject *,
                                      std::function<void(qint64)> answered)
{
    printLine(alertStream ? alertStream : stderr,
              alertLine(content.messageText, content.informativeText));
    answered(QFAlert::defaultReturn);
    return nullptr;
}

void TerminalAlertPresenter::printLine(std::FILE *stream, const QString &text)
{
    const QByteArray line = (text + u'\n').toUtf8();
    QMutexLocker lock(&printing);
    std::fputs(line.constData(), stream);
    std::fflush(stream);
}

QString TerminalAlertPresenter::alertLine(const QString &messageText,
                                          const QString &informativeText)
{
    static const QRegularExpression lineBreaks(QStringLiteral("[\r\n]+"));
    const QString informative = informativeText.trimmed().replace(lineBreaks, QStringLiteral(" "));
    if (informative.isEmpty())
        return messageText;
    // Some alert texts are whole sentences already; a colon after their full stop reads badly.
    const bool sentence =
        messageText.endsWith(u'.') || messageText.endsWith(u'!') || messageText.endsWith(u'?');
    return messageText + (sentence ? QStringLiteral(" ") : QStringLiteral(": ")) + informative;
}
