#pragma once

#include <QString>
#include <QVariantMap>

#include <optional>

/// The preference file that every application of the maker shares,
/// "com.quillfen.global.plist" in the user's preferences folder: switches that support
/// sets on a user's computer (logging off, the crash reporter off).
namespace QFGlobalPreferences {

QString path();
QVariantMap read();
/// Whether the switch is on: the string "1", or a number or boolean equal to true.
bool switchIsOn(const QString &key);
/// The value as a number when it is a number or a boolean (true is 1); else nothing.
std::optional<double> number(const QString &key);

} // namespace QFGlobalPreferences
