#include "QFAuthorization.h"

#include "QFAuthorizationPlatform.h"
#include "QFFileManager.h"
#include "QFLocalPaths.h"
#include "QFTaskEx.h"
#include "diagnostics/QFLog.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>

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
    void *handle = nullptr;
    if (!QFAuthorizationPlatform::obtainRights(&handle))
        return false;
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
    return QFAuthorizationPlatform::runWithRights(m_authRef.load(), toolPath, arguments, !async);
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
    const QStringList arguments = {QStringLiteral("-f"), QStringLiteral("-p"), QStringLiteral("-R"),
                                   source, destination};
    if (QFLocalPaths::isSuperuser()) {
        QFTaskEx::runTaskAndReturn(QStringLiteral("/bin/cp"), arguments);
        return true;
    }
    // Started, not awaited: the copy may still run on return (see the waiting variants).
    return authExecTask(QStringLiteral("/bin/cp"), arguments) == 0;
}

bool QFAuthorization::authCreateDir(const QString &path)
{
    const QStringList arguments = {QStringLiteral("-p"), path};
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
#ifdef Q_OS_MACOS
    const QString trash = QFLocalPaths::trashDirectory();
#else
    const QString trash = QFLocalPaths::trashDirectory() + QStringLiteral("/files");
#endif
    QDir().mkpath(trash);
    QString target = trash + u'/' + info.fileName();
    if (QFileInfo::exists(target)) {
        const QString stamp =
            QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMddHHmmss"));
        target = trash + u'/' + info.completeBaseName() +
                 QFFormat::format(u"_%@.%@", stamp, info.suffix());
    }
    return authExecTask(QStringLiteral("/bin/mv"), {info.absoluteFilePath(), target}, false) == 0;
}
