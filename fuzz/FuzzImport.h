#pragma once

// The two import procedures run headless for fuzzing: a front end that only counts,
// a private home and temporary folder, and a check of what each run leaves behind.

#include "FuzzInput.h"
#include "diagnostics/QFLog.h"
#include "import/FCP7Import.h"
#include "import/FCPXImport.h"
#include "import/ImportHost.h"
#include "import/TargetDiscovery.h"
#include "xml/XmlDocument.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

class FuzzHost : public ImportHost
{
public:
    explicit FuzzHost(const QString &markerList) : m_markerList(markerList) {}

    TargetKind &targetKind() override { return kind; }
    QString markerListPath() const override { return m_markerList; }
    void setProjectPath(const QString &) override {}
    void setLoadSpinnerRunning(bool) override {}
    void setProcessSpinnerRunning(bool) override {}
    void disableUI() override { items.clear(); }
    void enableUI(bool) override {}
    void addItemToSequencePopUp(const SequenceItem &item) override { items << item; }
    void setToDoMarkerCheckEnabled(bool) override {}
    void showAlert(const QString &messageText, const QString &, AlertParent) override
    {
        alerts << messageText;
    }

    TargetKind kind;
    QList<SequenceItem> items;
    QStringList alerts;

private:
    QString m_markerList;
};

/// A private home, log and temporary folder for the whole run.
inline QDir fuzzHome()
{
    static QTemporaryDir home;
    static const bool ready = [] {
        qputenv("HOME", QFile::encodeName(home.path()));
        qputenv("XDG_STATE_HOME", QFile::encodeName(home.path() + QStringLiteral("/state")));
        qputenv("XDG_CONFIG_HOME", QFile::encodeName(home.path() + QStringLiteral("/config")));
        QDir(home.path()).mkpath(QStringLiteral("tmp"));
        qputenv("TMPDIR", QFile::encodeName(home.path() + QStringLiteral("/tmp")));
        QFLog::createNewLog(QString(), true);
        return true;
    }();
    (void)ready;
    return QDir(home.path());
}

inline QString fuzzWrite(const QString &name, const QByteArray &bytes)
{
    const QString path = fuzzHome().filePath(name);
    QFile file(path);
    FUZZ_CHECK(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(bytes);
    return path;
}

inline QByteArray fuzzRead(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// Discovers the target as the command line does and imports into its first item (or,
/// when none is listed, into what the procedure makes of nothing). Checks that a run
/// ends with at most one outcome; that an XMEML file is either a whole document after
/// a successful import or untouched; that an FCPX result is a document and the
/// user's FCPX file is never written.
inline void fuzzImport(const QString &markerList, const QString &target)
{
    FuzzHost host(markerList);
    TargetDiscovery::openFilename(host, target);
    TargetDiscovery::updateProject(host, target);
    const QString chosen = host.items.isEmpty() ? QString() : host.items.first().representedObject;
    const QByteArray before = fuzzRead(target);
    ImportSettings settings;
    settings.filename = target;
    settings.frameOffset = -30;
    host.alerts.clear();
    if (host.kind.isFCPX) {
        host.kind.isEvent =
            !host.items.isEmpty() && host.items.first().image == SequenceItem::Image::FCPXEvent;
        settings.sequenceXPath = chosen;
        settings.todoMarkersEnabled = true;
        settings.handOffResult = false;
        const QString result = FCPXImport::startProcessingFCPXWithSettings(host, settings);
        FUZZ_CHECK(host.alerts.size() <= 1);
        if (!result.isNull()) {
            FUZZ_CHECK(XmlDocument::fromBytes(fuzzRead(result)) != nullptr);
            QFile::remove(result);
        }
        FUZZ_CHECK(fuzzRead(target) == before);
    } else {
        settings.uuid = chosen;
        FCP7Import::startProcessingWithSettings(host, settings);
        FUZZ_CHECK(host.alerts.size() <= 1);
        if (host.alerts.value(0) == u"Markers successfully imported")
            FUZZ_CHECK(XmlDocument::fromBytes(fuzzRead(target)) != nullptr);
        else
            FUZZ_CHECK(fuzzRead(target) == before);
    }
    // Written entries are freed by the log's writer; waiting for it keeps each run's
    // allocations balanced.
    QFLog::finishWriting();
}
