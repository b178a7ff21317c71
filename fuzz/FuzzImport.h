#pragma once

// The two import procedures run headless for fuzzing: a private home and temporary
// folder, and a check of what each run leaves behind.

#include "FuzzInput.h"
#include "import/ImportSession.h"
#include "support/QFLog.h"
#include "xml/XmlDocument.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

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

/// Discovers the target through a session, as every front end does, and imports into
/// its first item (or, when none is listed, into nothing). Checks that a written
/// result accounts for every line of the list and holds a marker; that an XMEML file
/// is either a whole document after a successful import or untouched; that an FCPX
/// result is a document and the user's FCPX file is never written.
inline void fuzzImport(const QString &markerList, const QString &target)
{
    ImportSession session(markerList);
    session.openFilename(target);
    session.waitForIdle();
    if (!session.items().isEmpty())
        session.chooseItem(session.items().first());
    const QByteArray before = fuzzRead(target);
    ImportOptions options;
    options.frameOffset = -30;
    options.todoMarkersEnabled = true;
    options.handOffResult = false;
    session.sendToFCP(options);
    session.waitForIdle();
    const ImportOutcome outcome = session.lastOutcome();
    if (outcome.wroteResult())
        FUZZ_CHECK(outcome.report.accountsForEveryLine() && !outcome.report.written.isEmpty());
    if (session.targetKind().isFCPX) {
        if (outcome.wroteResult()) {
            FUZZ_CHECK(XmlDocument::fromBytes(fuzzRead(outcome.resultPath)) != nullptr);
            QFile::remove(outcome.resultPath);
        }
        FUZZ_CHECK(fuzzRead(target) == before);
    } else if (outcome.wroteResult()) {
        FUZZ_CHECK(XmlDocument::fromBytes(fuzzRead(target)) != nullptr);
    } else {
        FUZZ_CHECK(fuzzRead(target) == before);
    }
    // Written entries are freed by the log's writer; waiting for it keeps each run's
    // allocations balanced.
    QFLog::finishWriting();
}
