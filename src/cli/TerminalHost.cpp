#include "TerminalHost.h"

#include <QFileInfo>
#include <QRegularExpression>

#include <cstdio>

namespace {

QMutex printing;

void printLine(std::FILE *stream, const QString &text)
{
    const QByteArray line = (text + u'\n').toUtf8();
    QMutexLocker lock(&printing);
    std::fputs(line.constData(), stream);
    std::fflush(stream);
}

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
    QMutexLocker lock(&m_mutex);
    if (running)
        progress(QStringLiteral("Looking for sequences in %1…").arg(m_projectPath));
}

void TerminalHost::setProcessSpinnerRunning(bool running)
{
    if (running)
        progress(QStringLiteral("Importing the markers of %1…")
                     .arg(QFileInfo(m_markerListPath).fileName()));
}

void TerminalHost::showAlert(const ImportOutcome &outcome)
{
    printLine(outcome.wroteResult() ? stdout : stderr, alertLine(outcome));
}

QString TerminalHost::alertLine(const ImportOutcome &outcome)
{
    static const QRegularExpression lineBreaks(QStringLiteral("[\r\n]+"));
    const QString informative =
        outcome.informativeText.trimmed().replace(lineBreaks, QStringLiteral(" "));
    return informative.isEmpty() ? outcome.messageText
                                 : outcome.messageText + QStringLiteral(": ") + informative;
}

int TerminalHost::exitStatus(const ImportOutcome &outcome)
{
    switch (outcome.status) {
    case ImportOutcome::Status::Imported:
        return 0;
    case ImportOutcome::Status::SomeMarkersFailed:
        return 1;
    case ImportOutcome::Status::Failed:
        return 2;
    case ImportOutcome::Status::NothingImported:
        break;
    }
    return 3;
}

void TerminalHost::progress(const QString &text) const
{
    if (!m_quiet)
        printLine(stderr, text);
}
