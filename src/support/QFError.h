#pragma once

#include <QString>
#include <QVariantMap>

/// An error filled in by a callee for a caller that needs the reason:
/// domain, code and a user-info dictionary, as the maker's error objects carry.
struct QFError
{
    QString domain;
    qint64 code = 0;
    QVariantMap userInfo;

    /// Readable one-line form: "Error Domain=<domain> Code=<code> UserInfo={key=value, ...}".
    QString description() const;
    /// The sentence under "NSLocalizedDescription" when there is one, else description().
    QString localizedDescription() const;

    /// Convenience for the common case of one string under one user-info key.
    static QFError make(const QString &domain, qint64 code, const QString &key,
                        const QString &value);
};
