// The freedesktop counterparts of the macOS standard folders.

#include "QFLocalPaths.h"

#include <QDir>
#include <QStandardPaths>

namespace {

QString xdg(const char *variable, const char *fallbackUnderHome)
{
    const QString value = qEnvironmentVariable(variable);
    if (!value.isEmpty() && QDir::isAbsolutePath(value))
        return QDir::cleanPath(value);
    return QDir::homePath() + u'/' + QLatin1StringView(fallbackUnderHome);
}

QString userFolder(QStandardPaths::StandardLocation location, const char *fallbackUnderHome)
{
    const QString path = QStandardPaths::writableLocation(location);
    return path.isEmpty() ? QDir::homePath() + u'/' + QLatin1StringView(fallbackUnderHome) : path;
}

} // namespace

QString QFLocalPaths::darwinCacheDirectory()
{
    return QString();
}

QStringList QFLocalPaths::platformDirectories(Directory directory, Domain domain)
{
    using D = Directory;
    if (domain == Domain::User) {
        switch (directory) {
        case D::Applications:
            return {xdg("XDG_DATA_HOME", ".local/share") + QStringLiteral("/applications")};
        case D::AdminApplications:
            return {QDir::homePath() + QStringLiteral("/.local/sbin")};
        case D::Documents:
            return {userFolder(QStandardPaths::DocumentsLocation, "Documents")};
        case D::Library:
            return {QDir::homePath() + QStringLiteral("/.local/share")};
        case D::Preferences:
            return {xdg("XDG_CONFIG_HOME", ".config")};
        case D::Caches:
            return {xdg("XDG_CACHE_HOME", ".cache")};
        case D::ApplicationSupport:
            return {xdg("XDG_DATA_HOME", ".local/share")};
        case D::Logs:
            return {xdg("XDG_STATE_HOME", ".local/state")};
        case D::Movies:
            return {userFolder(QStandardPaths::MoviesLocation, "Videos")};
        case D::Desktop:
            return {userFolder(QStandardPaths::DesktopLocation, "Desktop")};
        case D::Trash:
            return {xdg("XDG_DATA_HOME", ".local/share") + QStringLiteral("/Trash")};
        case D::Documentation:
            return {};
        }
        return {};
    }
    if (domain == Domain::Local) {
        switch (directory) {
        case D::Applications:
            return {QStringLiteral("/usr/share/applications")};
        case D::AdminApplications:
            return {QStringLiteral("/usr/sbin")};
        case D::Documents:
            return {QStringLiteral("/usr/local/share/doc")};
        case D::Library:
        case D::ApplicationSupport:
            return {QStringLiteral("/usr/local/share")};
        case D::Preferences:
            return {QStringLiteral("/etc/xdg")};
        case D::Caches:
            return {QStringLiteral("/var/cache")};
        case D::Logs:
            return {QStringLiteral("/var/log")};
        case D::Documentation:
            return {QStringLiteral("/usr/share/doc")};
        case D::Movies:
        case D::Desktop:
        case D::Trash:
            return {};
        }
        return {};
    }
    if (directory == D::Library)
        return {QStringLiteral("/usr/lib")};
    return {};
}
