#include "QFError.h"

QString QFError::description() const
{
    QStringList pairs;
    for (auto it = userInfo.cbegin(); it != userInfo.cend(); ++it)
        pairs << it.key() + QLatin1Char('=') + it.value().toString();
    return QStringLiteral("Error Domain=%1 Code=%2 UserInfo={%3}")
        .arg(domain)
        .arg(code)
        .arg(pairs.join(QStringLiteral(", ")));
}

QString QFError::localizedDescription() const
{
    const QString sentence = userInfo.value(QStringLiteral("NSLocalizedDescription")).toString();
    return sentence.isEmpty() ? description() : sentence;
}

QFError QFError::make(const QString &domain, qint64 code, const QString &key, const QString &value)
{
    return QFError{domain, code, QVariantMap{{key, value}}};
}
