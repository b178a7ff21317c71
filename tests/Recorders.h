#pragma once

// Stand-ins for what the support services show and start: alerts answered at once
// (with the default button unless told otherwise), and a desktop that notes which files it was
// asked to open.

#include "support/QFAlert.h"
#include "support/QFWorkspace.h"

#include <QMutex>
#include <QStringList>

using namespace Qt::StringLiterals;

class RecordingAlerts : public QFAlertPresenter
{
public:
    RecordingAlerts() { QFAlert::setPresenter(this); }
    ~RecordingAlerts() override { QFAlert::setPresenter(nullptr); }

    bool needsMainThread() const override { return false; }
    bool hasSheet(QObject *) const override { return false; }
    QObject *show(const Content &content, QObject *, std::function<void(qint64)> answered) override
    {
        {
            QMutexLocker lock(&m_mutex);
            m_shown << content.messageText + u" / "_s + content.informativeText;
        }
        answered(answer);
        return nullptr;
    }
    void close(QObject *) override {}

    /// The code every alert is answered with.
    qint64 answer = QFAlert::defaultReturn;

    /// "message / informative text" of each alert so far.
    QStringList shown()
    {
        QMutexLocker lock(&m_mutex);
        return m_shown;
    }

private:
    QMutex m_mutex;
    QStringList m_shown;
};

class RecordingWorkspace : public QFWorkspace
{
public:
    RecordingWorkspace() { QFWorkspace::setSharedForTesting(this); }
    ~RecordingWorkspace() override { QFWorkspace::setSharedForTesting(nullptr); }

    bool isApplicationRunning(const QString &) override { return false; }
    QString pathForApplication(const QString &) override { return {}; }
    bool openFile(const QString &path, const QString &identifier, LaunchOptions options) override
    {
        QMutexLocker lock(&m_mutex);
        m_opened << u"%1 with '%2'%3"_s.arg(
            path, identifier, options == Asynchronous ? u", asynchronously"_s : QString());
        return true;
    }
    /// "<path> with '<identifier>'[, asynchronously]" of each request so far.
    QStringList opened()
    {
        QMutexLocker lock(&m_mutex);
        return m_opened;
    }

private:
    QMutex m_mutex;
    QStringList m_opened;
};
