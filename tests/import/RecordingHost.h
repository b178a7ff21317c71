#pragma once

// A front end that records what the procedures ask of it, in order.

#include "import/ImportHost.h"

#include <QMutex>
#include <QStringList>

class RecordingHost : public ImportHost
{
public:
    explicit RecordingHost(const QString &markerListPath = QString())
        : m_markerListPath(markerListPath)
    {}

    TargetKind &targetKind() override { return kind; }
    QString markerListPath() const override { return m_markerListPath; }
    void setProjectPath(const QString &path) override { record(u"path "_qs + path); }
    void setLoadSpinnerRunning(bool running) override
    {
        record(running ? u"load start"_qs : u"load stop"_qs);
    }
    void setProcessSpinnerRunning(bool running) override
    {
        record(running ? u"process start"_qs : u"process stop"_qs);
    }
    void disableUI() override
    {
        items.clear();
        record(u"disable"_qs);
    }
    void enableUI(bool sequencePopUpEnabled) override
    {
        record(sequencePopUpEnabled ? u"enable"_qs : u"enable without menu"_qs);
    }
    void addItemToSequencePopUp(const SequenceItem &item) override
    {
        items.append(item);
        record(u"item "_qs + item.title);
    }
    void setToDoMarkerCheckEnabled(bool enabled) override
    {
        record(enabled ? u"todo on"_qs : u"todo off"_qs);
    }
    void showAlert(const ImportOutcome &outcome) override
    {
        alerts << outcome.messageText + u" / "_qs + outcome.informativeText;
        record((outcome.alertParent == ImportOutcome::AlertParent::DocumentWindow ? u"sheet "_qs
                                                                                  : u"alert "_qs) +
               outcome.messageText);
    }

    /// The calls of a procedure that ends at once with this message in a sheet.
    static QStringList endedWithSheet(const char *message)
    {
        return {u"process start"_qs, u"sheet "_qs + QLatin1StringView(message), u"process stop"_qs};
    }

    TargetKind kind;
    QList<SequenceItem> items;
    QStringList alerts;
    QStringList calls;

private:
    void record(const QString &call)
    {
        QMutexLocker lock(&m_mutex);
        calls << call;
    }
    QString m_markerListPath;
    QMutex m_mutex;
};
