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

bool switchIsOn(const QString &key)
{
    const QVariant value = read().value(key);
    switch (value.typeId()) {
    case QMetaType::QString:
        return value.toString() == QLatin1StringView("1");
    case QMetaType::Bool:
        return value.toBool();
    case QMetaType::Int:
    case QMetaType::LongLong:
    case QMetaType::UInt:
    case QMetaType::ULongLong:
    case QMetaType::Double:
        return value.toDouble() == 1.0;
    default:
        return false;
    }
}

} // namespace QFGlobalPreferences
