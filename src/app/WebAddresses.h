#pragma once

#include <QString>
#include <QUrl>

/// The maker's web addresses, in one place.
namespace WebAddresses {

inline const QString site = QStringLiteral("https://www.quillfen.com");
inline const QString supportSite = QStringLiteral("https://support.quillfen.com");

/// The user manual, a PDF on the maker's site.
inline QUrl userManual()
{
    return QUrl(site + QStringLiteral("/docs/Cuebridge%20User%20Manual.pdf"), QUrl::StrictMode);
}
/// The bug-report and feature-request pages, told the application's version.
inline QUrl bugReport(const QString &version)
{
    return QUrl(supportSite +
                QStringLiteral("/cuebridge/bugreport/?app=cuebridge&version=%1").arg(version));
}
inline QUrl featureRequest(const QString &version)
{
    return QUrl(supportSite +
                QStringLiteral("/cuebridge/featurerequest/?app=cuebridge&version=%1").arg(version));
}
inline QUrl support()
{
    return QUrl(site + QStringLiteral("/support/cuebridge"));
}
inline QUrl home()
{
    return QUrl(site);
}
/// The page of the maker's other tools for editors.
inline QUrl otherProducts()
{
    return QUrl(site + QStringLiteral("/products"));
}

} // namespace WebAddresses
