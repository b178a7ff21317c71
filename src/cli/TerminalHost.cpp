#include "TerminalHost.h"

#include "TerminalAlertPresenter.h"

#include "import/ImportSession.h"
#include "support/QFAlert.h"

#include <QFileInfo>

TerminalHost::TerminalHost(const QString &markerListPath, bool quiet)
    : m_markerListPath(markerListPath), m_quiet(quiet)
{}

void TerminalHost::follow(ImportSession &session) const
{
    // Both are said on the thread that starts the work, before it starts.
    QObject::connect(
        &session, &ImportSession::discoveryStarted, &session,
        [this](const QString &path) {
            progress(QStringLiteral("Looking for sequences in %1…").arg(path));
        },
        Qt::DirectConnection);
    QObject::connect(
        &session, &ImportSession::importStarted, &session,
        [this] {
            progress(QStringLiteral("Importing the markers of %1…")
                         .arg(QFileInfo(m_markerListPath).fileName()));
        },
        Qt::DirectConnection);
}

void TerminalHost::printReport(const ImportReport &report) const
{
    for (const QString &line : report.lineTexts())
        TerminalAlertPresenter::printLine(stderr, line);
}

void TerminalHost::showAlert(const ImportOutcome &outcome) const
{
    if (!outcome.hasAlert())
        return;
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
