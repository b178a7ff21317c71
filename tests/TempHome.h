#pragma once

// A private home for one test, as an ordinary user: HOME and the XDG folders point
// into a temporary folder, so that paths, preferences and logs never touch the real
// ones, and the superuser rules stay off even when the tests run as root (as CI may).

#include "support/QFLocalPaths.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QThread>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

class TempHome
{
public:
    TempHome()
    {
        EXPECT_TRUE(m_dir.isValid());
        for (const char *variable : {"HOME", "XDG_CONFIG_HOME", "XDG_STATE_HOME", "XDG_CACHE_HOME",
                                     "XDG_DATA_HOME", "XDG_RUNTIME_DIR", "TMPDIR"})
            m_saved.append({variable, qgetenv(variable)});
        qputenv("HOME", m_dir.path().toUtf8());
        qputenv("XDG_CONFIG_HOME", (m_dir.path() + "/.config").toUtf8());
        qputenv("XDG_STATE_HOME", (m_dir.path() + "/.local/state").toUtf8());
        qputenv("XDG_CACHE_HOME", (m_dir.path() + "/.cache").toUtf8());
        qputenv("XDG_DATA_HOME", (m_dir.path() + "/.local/share").toUtf8());
        QDir().mkdir(runtimePath(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        qputenv("XDG_RUNTIME_DIR", runtimePath().toUtf8());
        // Temporary files of the code under test land here too, and go with the home.
        QDir().mkpath(tempPath());
        qputenv("TMPDIR", tempPath().toUtf8());
        QFLocalPaths::setRealUserIdForTesting(1000);
    }
    ~TempHome()
    {
        QFLocalPaths::setRealUserIdForTesting(std::nullopt);
        for (const auto &[name, value] : m_saved)
            qputenv(name, value);
    }
    QString path() const { return m_dir.path(); }
    QString tempPath() const { return m_dir.path() + u"/temporary"_s; }
    QString runtimePath() const { return m_dir.path() + u"/run"_s; }
    /// Where a file of this home goes.
    QString filePath(const QString &name) const { return QDir(m_dir.path()).filePath(name); }
    /// Writes a file of this home, with the folders it needs; its path.
    QString file(const QString &name, const QByteArray &bytes) const
    {
        write(filePath(name), bytes);
        return filePath(name);
    }
    /// A copy of a file of tests/data in this home, under its own name or the one given.
    QString copyOfData(const QString &dataFile, const QString &as = QString()) const
    {
        return file(as.isNull() ? dataFile : as,
                    read(QStringLiteral(CUEBRIDGE_TEST_DATA "/") + dataFile));
    }

    static QByteArray read(const QString &path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    static void write(const QString &path, const QByteArray &bytes)
    {
        QDir().mkpath(QFileInfo(path).path());
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly)) << path.toStdString();
        file.write(bytes);
    }
    /// A stand-in program that notes its arguments, each in brackets, in the file `note`
    /// when it runs; the comment tells copies apart.
    static void writeNotingProgram(const QString &path, const QString &note,
                                   const QByteArray &comment = QByteArray())
    {
        const QByteArray file = '"' + note.toUtf8() + '"';
        const QByteArray part = '"' + note.toUtf8() + ".part\"";
        write(path, "#!/bin/sh\n# " + comment + "\nprintf '[%s]' \"$@\" > " + part + " && mv " +
                        part + ' ' + file + '\n');
        QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }
    /// "[argument][argument]…" once such a program has run (ten seconds at most), else empty.
    static QString noted(const QString &note)
    {
        QElapsedTimer waited;
        waited.start();
        while (!QFile::exists(note) && waited.elapsed() < 10000)
            QThread::msleep(10);
        return QString::fromUtf8(read(note)).trimmed();
    }

private:
    QTemporaryDir m_dir;
    QList<std::pair<const char *, QByteArray>> m_saved;
};
