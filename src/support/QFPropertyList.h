#pragma once

#include <QByteArray>
#include <QString>
#include <QVariant>
#include <QVariantMap>

/// Property-list files (the maker's shared preference and consent files), read and
/// written whole, in XML or binary form, through libplist.
namespace QFPropertyList {

enum class Format
{
    Xml,
    Binary
};

/// The value of a property-list file; invalid when it is missing, unreadable or malformed.
QVariant readFile(const QString &path);
/// The dictionary of a property-list file; empty when the file is missing,
/// unreadable, malformed or holds something other than a dictionary.
QVariantMap readDictionary(const QString &path);

/// Writes the dictionary to the file, replacing it atomically. False with a reason
/// in error when it cannot be written.
bool writeDictionary(const QVariantMap &dictionary, const QString &path,
                     Format format = Format::Xml, QString *error = nullptr);

/// Writes the value to the file, replacing it atomically. False with a reason in error
/// when it cannot be written.
bool writeFile(const QVariant &value, const QString &path, Format format = Format::Xml,
               QString *error = nullptr);

/// The value of property-list bytes (XML or binary); invalid when they are none.
QVariant fromBytes(const QByteArray &bytes);
/// The property-list bytes of a value.
QByteArray toBytes(const QVariant &value, Format format = Format::Xml);

} // namespace QFPropertyList
