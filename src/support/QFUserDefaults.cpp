#include "QFUserDefaults.h"

QFUserDefaults &QFUserDefaults::standardUserDefaults()
{
    static QFUserDefaults defaults;
    return defaults;
}

QFUserDefaults::QFUserDefaults()
    : m_settings(
          std::make_unique<QSettings>(QStringLiteral("Quillfen"), QStringLiteral("Cuebridge")))
{}

QFUserDefaults::QFUserDefaults(const QString &iniPath)
    : m_settings(std::make_unique<QSettings>(iniPath, QSettings::IniFormat))
{}

void QFUserDefaults::registerDefaults(const QVariantMap &defaults)
{
    QMutexLocker lock(&m_mutex);
    for (auto it = defaults.cbegin(); it != defaults.cend(); ++it)
        m_registered.insert(it.key(), it.value());
}

QVariant QFUserDefaults::objectForKey(const QString &key) const
{
    QMutexLocker lock(&m_mutex);
    if (m_settings->contains(key))
        return m_settings->value(key);
    return m_registered.value(key);
}

QString QFUserDefaults::stringForKey(const QString &key) const
{
    return objectForKey(key).toString();
}

bool QFUserDefaults::boolForKey(const QString &key) const
{
    const QVariant value = objectForKey(key);
    // INI files give strings back; "true", "YES" and numbers other than 0 are true.
    if (value.typeId() == QMetaType::QString) {
        const QString text = value.toString().trimmed().toLower();
        return text == QLatin1StringView("true") || text == QLatin1StringView("yes") ||
               text.toLongLong() != 0;
    }
    return value.toBool();
}

qint64 QFUserDefaults::integerForKey(const QString &key) const
{
    return objectForKey(key).toLongLong();
}

double QFUserDefaults::doubleForKey(const QString &key) const
{
    return objectForKey(key).toDouble();
}

void QFUserDefaults::setObject(const QVariant &value, const QString &key)
{
    QMutexLocker lock(&m_mutex);
    m_settings->setValue(key, value);
}

void QFUserDefaults::removeObjectForKey(const QString &key)
{
    QMutexLocker lock(&m_mutex);
    m_settings->remove(key);
}

void QFUserDefaults::synchronize()
{
    QMutexLocker lock(&m_mutex);
    m_settings->sync();
}
