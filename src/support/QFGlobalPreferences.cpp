#include "support/QFGlobalPreferences.h"

#include "support/QFLocalPaths.h"
#include "support/QFPropertyList.h"

namespace QFGlobalPreferences {

QString path()
{
    return QFLocalPaths::prefsDirectory(true) + QStringLiteral("/com.quillfen.global.plist");
}

QVariantMap read()
{
    return QFPropertyList::readDictionary(path());
}

namespace {

std::optional<double> asNumber(const QVariant &value)
{
    switch (value.typeId()) {
    case QMetaType::Bool:
    case QMetaType::Int:
    case QMetaType::LongLong:
    case QMetaType::UInt:
    case QMetaType::ULongLong:
    case QMetaType::Double:
        return value.toDouble();
    default:
        return std::nullopt;
    }
}

} // namespace

bool switchIsOn(const QString &key)
{
    const QVariant value = read().value(key);
    if (value.typeId() == QMetaType::QString)
        return value.toString() == QLatin1StringView("1");
    return asNumber(value) == 1.0;
}

std::optional<double> number(const QString &key)
{
    return asNumber(read().value(key));
}

} // namespace QFGlobalPreferences
