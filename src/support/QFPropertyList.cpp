#include "QFPropertyList.h"

#include <QDateTime>
#include <QFile>
#include <QSaveFile>

#include <plist/plist.h>

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <memory>

namespace QFPropertyList {

namespace {

struct PlistDeleter
{
    void operator()(plist_t node) const { plist_free(node); }
};
using PlistPtr = std::unique_ptr<std::remove_pointer_t<plist_t>, PlistDeleter>;

// Property-list dates count seconds from the start of 2001, UTC.
const QDateTime referenceDate(QDate(2001, 1, 1), QTime(0, 0), Qt::UTC);

QVariant toVariant(plist_t node)
{
    switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN: {
        uint8_t value = 0;
        plist_get_bool_val(node, &value);
        return bool(value);
    }
    case PLIST_UINT: {
        uint64_t value = 0;
        plist_get_uint_val(node, &value);
        // libplist keeps every integer unsigned; negative ones come back wrapped.
        return qlonglong(value);
    }
    case PLIST_REAL: {
        double value = 0;
        plist_get_real_val(node, &value);
        return value;
    }
    case PLIST_STRING: {
        char *value = nullptr;
        plist_get_string_val(node, &value);
        const QString text = QString::fromUtf8(value);
        std::free(value);
        return text;
    }
    case PLIST_DATA: {
        char *value = nullptr;
        uint64_t length = 0;
        plist_get_data_val(node, &value, &length);
        const QByteArray data(value, qsizetype(length));
        std::free(value);
        return data;
    }
    case PLIST_DATE: {
        int32_t seconds = 0, microseconds = 0;
        plist_get_date_val(node, &seconds, &microseconds);
        return referenceDate.addMSecs(qint64(seconds) * 1000 + microseconds / 1000);
    }
    case PLIST_ARRAY: {
        QVariantList list;
        const uint32_t size = plist_array_get_size(node);
        for (uint32_t i = 0; i < size; ++i)
            list.append(toVariant(plist_array_get_item(node, i)));
        return list;
    }
    case PLIST_DICT: {
        QVariantMap map;
        plist_dict_iter iter = nullptr;
        plist_dict_new_iter(node, &iter);
        for (;;) {
            char *key = nullptr;
            plist_t value = nullptr;
            plist_dict_next_item(node, iter, &key, &value);
            if (!value) {
                std::free(key);
                break;
            }
            map.insert(QString::fromUtf8(key), toVariant(value));
            std::free(key);
        }
        std::free(iter);
        return map;
    }
    case PLIST_UID: {
        uint64_t value = 0;
        plist_get_uid_val(node, &value);
        return qulonglong(value);
    }
    case PLIST_KEY:
    case PLIST_NONE:
        break;
    }
    return QVariant();
}

plist_t toPlist(const QVariant &value)
{
    switch (value.typeId()) {
    case QMetaType::Bool:
        return plist_new_bool(value.toBool());
    case QMetaType::Int:
    case QMetaType::Long:
    case QMetaType::LongLong:
    case QMetaType::Short:
    case QMetaType::Char:
    case QMetaType::SChar:
        return plist_new_uint(uint64_t(value.toLongLong()));
    case QMetaType::UInt:
    case QMetaType::ULong:
    case QMetaType::ULongLong:
    case QMetaType::UShort:
    case QMetaType::UChar:
        return plist_new_uint(value.toULongLong());
    case QMetaType::Double:
    case QMetaType::Float:
        return plist_new_real(value.toDouble());
    case QMetaType::QByteArray: {
        const QByteArray data = value.toByteArray();
        return plist_new_data(data.constData(), uint64_t(data.size()));
    }
    case QMetaType::QDateTime: {
        const qint64 ms = referenceDate.msecsTo(value.toDateTime());
        const qint64 seconds = std::clamp<qint64>(ms / 1000, std::numeric_limits<int32_t>::min(),
                                                  std::numeric_limits<int32_t>::max());
        return plist_new_date(int32_t(seconds), int32_t((ms % 1000) * 1000));
    }
    case QMetaType::QVariantList:
    case QMetaType::QStringList: {
        plist_t array = plist_new_array();
        for (const QVariant &item : value.toList())
            plist_array_append_item(array, toPlist(item));
        return array;
    }
    case QMetaType::QVariantMap:
    case QMetaType::QVariantHash: {
        plist_t dict = plist_new_dict();
        const QVariantMap map = value.toMap();
        for (auto it = map.cbegin(); it != map.cend(); ++it)
            plist_dict_set_item(dict, it.key().toUtf8().constData(), toPlist(it.value()));
        return dict;
    }
    default:
        return plist_new_string(value.toString().toUtf8().constData());
    }
}

} // namespace

QVariant fromBytes(const QByteArray &bytes)
{
    if (bytes.isEmpty() || bytes.size() > std::numeric_limits<uint32_t>::max())
        return QVariant();
    plist_t root = nullptr; // left untouched when the parse fails
    plist_from_memory(bytes.constData(), uint32_t(bytes.size()), &root);
    const PlistPtr owner(root);
    return root ? toVariant(root) : QVariant();
}

QByteArray toBytes(const QVariant &value, Format format)
{
    const PlistPtr root(toPlist(value));
    char *out = nullptr;
    uint32_t length = 0;
    if (format == Format::Binary)
        plist_to_bin(root.get(), &out, &length);
    else
        plist_to_xml(root.get(), &out, &length);
    const QByteArray bytes(out, qsizetype(length));
    std::free(out);
    return bytes;
}

QVariant readFile(const QString &path)
{
    QFile file(path);
    if (path.isEmpty() || !file.open(QIODevice::ReadOnly))
        return {};
    return fromBytes(file.readAll());
}

QVariantMap readDictionary(const QString &path)
{
    const QVariant value = readFile(path);
    return value.typeId() == QMetaType::QVariantMap ? value.toMap() : QVariantMap();
}

bool writeFile(const QVariant &value, const QString &path, Format format, QString *error)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(toBytes(value, format)) < 0 ||
        !file.commit()) {
        if (error)
            *error = file.errorString();
        return false;
    }
    return true;
}

bool writeDictionary(const QVariantMap &dictionary, const QString &path, Format format,
                     QString *error)
{
    return writeFile(dictionary, path, format, error);
}

} // namespace QFPropertyList
