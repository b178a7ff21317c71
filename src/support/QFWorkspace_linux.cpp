// The freedesktop equivalents: an application is a desktop entry named after its id,
// running when a process of the entry's program runs; files open through the entry
// or, without one, through xdg-open.

#include "support/QFWorkspace.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QSettings>
#include <QStandardPaths>
#include <QUrl>

#include <memory>

namespace {

/// Whether xdg-open has an application for a local file: with none it starts nothing,
/// which its detached run would never tell. Addresses and what cannot be asked count as
/// openable.
bool openerHasApplicationFor(const QString &path)
{
    const QString mime = QStandardPaths::findExecutable(QStringLiteral("xdg-mime"));
    if (mime.isEmpty() || !QFileInfo(path).isFile())
        return true;
    const auto ask = [&mime](const QStringList &arguments) {
        QProcess query;
        query.start(mime, arguments);
        if (!query.waitForFinished(2000) || query.exitCode() != 0)
            return QString();
        return QString::fromUtf8(query.readAllStandardOutput()).trimmed();
    };
    const QString type = ask({QStringLiteral("query"), QStringLiteral("filetype"), path});
    return !type.isEmpty() &&
           !ask({QStringLiteral("query"), QStringLiteral("default"), type}).isEmpty();
}

QString desktopEntryPath(const QString &id)
{
    if (id.isEmpty()) // the file's default application
        return QString();
    return QStandardPaths::locate(QStandardPaths::ApplicationsLocation,
                                  id + QStringLiteral(".desktop"));
}

/// The Exec line of the entry split into arguments, field codes still in it.
QStringList execArguments(const QString &entryPath)
{
    QFile file(entryPath);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return {};
    bool inMainGroup = false;
    while (!file.atEnd()) {
        const QString line = QString::fromUtf8(file.readLine()).trimmed();
        if (line.startsWith(u'['))
            inMainGroup = line == u"[Desktop Entry]";
        else if (inMainGroup && line.startsWith(u"Exec="))
            return QProcess::splitCommand(line.mid(5));
    }
    return {};
}

bool processRuns(const QString &program)
{
    const QString name = QFileInfo(program).fileName();
    if (name.isEmpty())
        return false;
    const QDir proc(QStringLiteral("/proc"));
    for (const QString &pid : proc.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        bool numeric = false;
        pid.toInt(&numeric);
        if (!numeric)
            continue;
        QFile commandLine(proc.filePath(pid + QStringLiteral("/cmdline")));
        if (!commandLine.open(QIODevice::ReadOnly))
            continue;
        const QByteArray first = commandLine.readAll().split('\0').value(0);
        if (QFileInfo(QFile::decodeName(first)).fileName() == name)
            return true;
    }
    return false;
}

class FreedesktopWorkspace : public QFWorkspace
{
public:
    bool isApplicationRunning(const QString &bundleIdentifier) override
    {
        const QString entry = desktopEntryPath(bundleIdentifier);
        return !entry.isEmpty() && processRuns(execArguments(entry).value(0));
    }

    QString pathForApplication(const QString &) override { return QString(); }

    bool openFile(const QString &path, const QString &bundleIdentifier, LaunchOptions) override
    {
        // Always asynchronous here: the program is started detached.
        QStringList arguments = execArguments(desktopEntryPath(bundleIdentifier));
        if (arguments.isEmpty()) {
            const QString opener = QStandardPaths::findExecutable(QStringLiteral("xdg-open"));
            return !opener.isEmpty() && openerHasApplicationFor(path) &&
                   QProcess::startDetached(opener, {path});
        }
        QStringList expanded;
        bool fileGiven = false;
        for (const QString &argument : arguments) {
            if (argument == u"%f" || argument == u"%F") {
                expanded << path;
                fileGiven = true;
            } else if (argument == u"%u" || argument == u"%U") {
                expanded << QUrl::fromLocalFile(path).toString();
                fileGiven = true;
            } else if (!(argument.size() == 2 && argument.startsWith(u'%'))) {
                expanded << argument;
            }
        }
        if (!fileGiven)
            expanded << path;
        const QString program = expanded.takeFirst();
        return QProcess::startDetached(program, expanded);
    }
};

} // namespace

std::unique_ptr<QFWorkspace> makePlatformWorkspace()
{
    return std::make_unique<FreedesktopWorkspace>();
}
