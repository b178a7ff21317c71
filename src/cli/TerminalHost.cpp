#include "TerminalHost.h"

#include "support/QFMainThread.h"

#include <QFileInfo>
#include <QRegularExpression>

#include <cstdio>

namespace {

void printLine(std::FILE *stream, const QString &text)
{
    performOnMainThreadAndWait([stream, line = (text + u'\n').toUtf8()] {
        std::fputs(line.constData(), stream);
        std::fflush(stream);
    });
}

const QString successMessage = QStringLiteral("Markers successfully imported");
const QString partialMessage = QStringLiteral("Some markers failed to import");

} // namespace

TerminalHost::TerminalHost(const QString &markerListPath, bool quiet)
    : m_markerListPath(markerListPath), m_quiet(quiet)
{}

void TerminalHost::setProjectPath(const QString &path)
{
    QMutexLocker lock(&m_mutex);
    m_projectPath = path;
}

void TerminalHost::setLoadSpinnerRunning(bool running)
{
    if (running)
        progress(QStringLiteral("Looking for sequences in %1…").arg(m_projectPath));
}

void TerminalHost::setProcessSpinnerRunning(bool running)
{
    if (running)
        progress(QStringLiteral("Importing the markers of %1…")
                     .arg(QFileInfo(m_markerListPath).fileName()));
}

void TerminalHost::disableUI()
{
    QMutexLocker lock(&m_mutex);
    m_items.clear();
    m_importEnabled = false;
}

void TerminalHost::enableUI(bool)
{
    QMutexLocker lock(&m_mutex);
    m_importEnabled = true;
}

void TerminalHost::addItemToSequencePopUp(const SequenceItem &item)
{
    QMutexLocker lock(&m_mutex);
    m_items.append(item);
}

void TerminalHost::showAlert(const QString &messageText, const QString &informativeText,
                             AlertParent)
{
    const Alert alert{messageText, informativeText};
    {
        QMutexLocker lock(&m_mutex);
        m_alerts.append(alert);
    }
    const bool outcome = messageText == successMessage || messageText == partialMessage;
    printLine(outcome ? stdout : stderr, alertLine(alert));
}

QList<SequenceItem> TerminalHost::items() const
{
    QMutexLocker lock(&m_mutex);
    return m_items;
}

bool TerminalHost::importEnabled() const
{
    QMutexLocker lock(&m_mutex);
    return m_importEnabled;
}

QList<TerminalHost::Alert> TerminalHost::alerts() const
{
    QMutexLocker lock(&m_mutex);
    return m_alerts;
}

QString TerminalHost::alertLine(const Alert &alert)
{
    static const QRegularExpression lineBreaks(QStringLiteral("[\r\n]+"));
    const QString informative =
        alert.informativeText.trimmed().replace(lineBreaks, QStringLiteral(" "));
    return informative.isEmpty() ? alert.messageText
                                 : alert.messageText + QStringLiteral(": ") + informative;
}

int TerminalHost::exitStatus(const QList<Alert> &alerts)
{
    if (alerts.isEmpty())
        return 3;
    const QString &last = alerts.last().messageText;
    return last == successMessage ? 0 : last == partialMessage ? 1 : 2;
}

void TerminalHost::progress(const QString &text) const
{
    if (!m_quiet)
        printLine(stderr, text);
}
