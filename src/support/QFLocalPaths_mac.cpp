// The macOS standard folders of the user, local and system domains.

#include "QFLocalPaths.h"

#include <QDir>

#include <unistd.h>

QString QFLocalPaths::darwinCacheDirectory()
{
    char buffer[1024];
    const size_t length = ::confstr(_CS_DARWIN_USER_CACHE_DIR, buffer, sizeof buffer);
    if (length == 0 || length > sizeof buffer)
        return QString();
    return QString::fromUtf8(buffer, qsizetype(length) - 1);
}

QStringList QFLocalPaths::platformDirectories(Directory directory, Domain domain)
{
    using D = Directory;
    QString base;
    switch (domain) {
    case Domain::User:
        base = QDir::homePath();
        break;
    case Domain::Local:
        base = QString();
        break;
    case Domain::System:
        base = QStringLiteral("/System");
        break;
    }
    switch (directory) {
    case D::Applications:
        return {base + QStringLiteral("/Applications")};
    case D::AdminApplications:
        return {base + QStringLiteral("/Applications/Utilities")};
    case D::Documents:
        return {base + QStringLiteral("/Documents")};
    case D::Library:
        return {base + QStringLiteral("/Library")};
    case D::Preferences:
        return {base + QStringLiteral("/Library/Preferences")};
    case D::Caches:
        return {base + QStringLiteral("/Library/Caches")};
    case D::ApplicationSupport:
        return {base + QStringLiteral("/Library/Application Support")};
    case D::Logs:
        return {base + QStringLiteral("/Library/Logs")};
    case D::Movies:
        return domain == Domain::User ? QStringList{base + QStringLiteral("/Movies")}
                                      : QStringList{};
    case D::Desktop:
        return domain == Domain::User ? QStringList{base + QStringLiteral("/Desktop")}
                                      : QStringList{};
    case D::Documentation:
        return {base + QStringLiteral("/Library/Documentation")};
    case D::Trash:
        return domain == Domain::User ? QStringList{base + QStringLiteral("/.Trash")}
                                      : QStringList{};
    }
    return {};
}
