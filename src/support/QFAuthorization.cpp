#include "QFAuthorization.h"

#include "QFAuthorizationPlatform.h"
#include "QFFileManager.h"
#include "QFLocalPaths.h"
#include "QFTaskEx.h"
#include "support/QFLog.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QUrl>

#include <chrono>
#include <cstdio>
#include <thread>

namespace {

void console(const QString &text)
{
    std::fprintf(stderr, "%s\n", qUtf8Printable(text));
}

} // namespace

QFAuthorization &QFAuthorization::sharedController(bool withGUI)
{
    static QFAuthorization instance(withGUI);
    return instance;
}

QFAuthorization::QFAuthorization(bool withGUI) : m_hasGUI(withGUI)
{
    if (!QFLocalPaths::isSuperuser())
        m_userDirectory = QFLocalPaths::userDirectory();
}

void QFAuthorization::setPrivilegedRunnerForTesting(const QString &path)
{
    QFAuthorizationPlatform::setRunner(path);
    sharedController().m_refused = false;
}

bool QFAuthorization::isAuthorized() const
{
    return QFLocalPaths::isSuperuser() || m_authorized.load();
}

bool QFAuthorization::canAuthorize() const
{
    return m_hasGUI || QFLocalPaths::isSuperuser();
}

bool QFAuthorization::authStart()
{
    if (isAuthorized())
        return true;
    if (!m_hasGUI) {
        console(QStringLiteral("Unable to authorize"));
        return false;
    }
    if (m_refused)
        return false;
    void *handle = nullptr;
    if (!QFAuthorizationPlatform::obtainRights(&handle)) {
        m_refused = true;
        return false;
    }
    m_authRef = handle;
    m_authorized = true;
    return true;
}

void QFAuthorization::authEnd()
{
    if (!QFLocalPaths::isSuperuser())
        QFAuthorizationPlatform::releaseRights(m_authRef.exchange(nullptr));
    m_authorized = false;
}

int QFAuthorization::authExecTask(const QString &toolPath, const QStringList &arguments, bool async)
{
    if (toolPath.isEmpty() || !QFileInfo::exists(toolPath)) {
        console(QStringLiteral("Unable to execute task: path %1 doesn't exist").arg(toolPath));
        return -2;
    }
    if (QFLocalPaths::isSuperuser()) {
        if (async)
            QFTaskEx::runTaskAndReturn(toolPath, arguments);
        else
            QFTaskEx::runTask(toolPath, arguments);
        return 0;
    }
    if (!isAuthorized() && !authStart())
        return -1;
    const int status =
        QFAuthorizationPlatform::runWithRights(m_authRef.load(), toolPath, arguments, !async);
    if (QFAuthorizationPlatform::isRefusal(status)) {
        console(QStringLiteral("Unable to authorize"));
        authEnd();
        m_refused = true;
    }
    return status;
}

bool QFAuthorization::authCopyFile(const QString &source, const QString &destination)
{
    if (source.isNull()) {
        console(QStringLiteral("Error in authCopyFile: old path is null"));
        return false;
    }
    if (destination.isNull()) {
        console(QStringLiteral("Error in authCopyFile: new path is null"));
        return false;
    }
    if (!QFileInfo::exists(source))
        return false;
    // "--": a path that begins with a dash is a path, not an option.
    const QStringList arguments = {QStringLiteral("-f"),
                                   QStringLiteral("-p"),
                                   QStringLiteral("-R"),
                                   QStringLiteral("--"),
                                   source,
                                   destination};
    if (QFLocalPaths::isSuperuser()) {
        QFTaskEx::runTaskAndReturn(QStringLiteral("/bin/cp"), arguments);
        return true;
    }
    // On macOS started, not awaited: the copy may still run on return (see the waiting
    // variants). pkexec asks as the tool starts, so there the copy has ended on return.
    return authExecTask(QStringLiteral("/bin/cp"), arguments) == 0;
}

bool QFAuthorization::authCreateDir(const QString &path)
{
    const QStringList arguments = {QStringLiteral("-p"), QStringLiteral("--"), path};
    if (QFLocalPaths::isSuperuser()) {
        QFTaskEx::runTaskAndReturn(QStringLiteral("/bin/mkdir"), arguments);
        return true;
    }
    if (authExecTask(QStringLiteral("/bin/mkdir"), arguments) != 0)
        return false;
    std::this_thread::sleep_for(std::chrono::microseconds(500));
    return true;
}

bool QFAuthorization::authTrashFile(const QString &path)
{
    if (QFLocalPaths::isPathSystemDirectory(path, true)) {
        QFLog::appendLog(u"Unable to trash path %@ because it is a system directory.", path);
        return false;
    }
    const QFileInfo info(QFLocalPaths::stripTrailingSlash(path));
    const QString trashRoot = QFLocalPaths::trashDirectory();
#ifdef Q_OS_MACOS
    const QString trash = trashRoot;
#else
    const QString trash = trashRoot + QStringLiteral("/files");
#endif
    QDir().mkpath(trash);
    QString target = trash + u'/' + info.fileName();
    if (QFileInfo::exists(target)) {
        const QString stamp =
            QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMddHHmmss"));
        target = trash + u'/' + info.completeBaseName() +
                 QFFormat::format(u"_%@.%@", stamp, info.suffix());
    }
#ifdef Q_OS_MACOS
    return authExecTask(QStringLiteral("/bin/mv"),
                        {QStringLiteral("--"), info.absoluteFilePath(), target}, false) == 0;
#else
    // The desktop lists and restores a trashed file through its entry in info/, written
    // first so that the name is taken.
    const QString entryFolder = trashRoot + QStringLiteral("/info");
    QDir().mkpath(entryFolder);
    QFile entry(entryFolder + u'/' + QFileInfo(target).fileName() + QStringLiteral(".trashinfo"));
    if (!entry.open(QIODevice::WriteOnly | QIODevice::NewOnly)) {
        QFLog::appendLog(u"Unable to write trash entry %@: %@", entry.fileName(),
                         entry.errorString());
        return false;
    }
    entry.write("[Trash Info]\nPath=" + QUrl::toPercentEncoding(info.absoluteFilePath(), "/") +
                "\nDeletionDate=" + QDateTime::currentDateTime().toString(Qt::ISODate).toUtf8() +
                "\n");
    entry.close();
    // Moved with rights, then given to the trash's owner, so that emptying the trash
    // needs none; one run, so the user is asked once.
    const QFileInfo owner(trashRoot);
    const int status = authExecTask(
        QStringLiteral("/bin/sh"),
        {QStringLiteral("-c"), QStringLiteral("mv -- \"$1\" \"$2\" && chown -R -- \"$3\" \"$2\""),
         QStringLiteral("sh"), info.absoluteFilePath(), target,
         QStringLiteral("%1:%2").arg(owner.ownerId()).arg(owner.groupId())},
        false);
    if (status != 0)
        entry.remove();
    return status == 0;
#endif
}
