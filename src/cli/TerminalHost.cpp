#include "TerminalHost.h"

#include "TerminalAlertPresenter.h"

#include "support/QFAlert.h"

#include <QFileInfo>

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

void TerminalHost::printReport(const ImportReport &report) const
{
    for (const QString &line : report.lineTexts())
        TerminalAlertPresenter::printLine(stderr, line);
}

void TerminalHost::showAlert(const ImportOutcome &outcome)
{
    // A written result is news for standard output; anything else is a complaint.
    TerminalAlertPresenter::setStream(outcome.wroteResult() ? stdout : stderr);
    QFAlert::alertSheetWithMessageText(outcome.messageText, outcome.informativeText, nullptr);
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
        TerminalAlertPresenter::printLine(stderr, text);
}
