#pragma once

#include <QMutex>
#include <QSettings>
#include <QString>
#include <QVariantMap>

#include <memory>

/// The application's preferences: values the user set, over a layer of registered
/// defaults that are never written to disk. Thread-safe.
class QFUserDefaults
{
public:
    /// The application's own defaults (organisation "Quillfen", application name).
    static QFUserDefaults &standardUserDefaults();

    /// Defaults kept in an INI file of its own (tests, tools).
    explicit QFUserDefaults(const QString &iniPath);

    /// Adds to the registered defaults, replacing values of the same keys.
    void registerDefaults(const QVariantMap &defaults);

    /// The stored value, else the registered default, else invalid.
    QVariant objectForKey(const QString &key) const;
    QString stringForKey(const QString &key) const;
    bool boolForKey(const QString &key) const;
    qint64 integerForKey(const QString &key) const;
    double doubleForKey(const QString &key) const;

    void setObject(const QVariant &value, const QString &key);
    void removeObjectForKey(const QString &key);
    /// Writes pending changes to disk.
    void synchronize();

private:
    QFUserDefaults();

    mutable QMutex m_mutex;
    std::unique_ptr<QSettings> m_settings;
    QVariantMap m_registered;
};
