#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

/// What encoding the bytes of a text file are in, and their text in it. Encodings go by
/// the names iconv and uchardet give them ("UTF-8", "UTF-16LE", "WINDOWS-1252",
/// "MACINTOSH").
namespace TextEncoding {

inline const QByteArray utf8 = QByteArrayLiteral("UTF-8");
inline const QByteArray utf16LE = QByteArrayLiteral("UTF-16LE");

/// A byte order mark, else valid UTF-8, else what the charset detector finds (with
/// MacRoman told apart from the Windows and ISO Latin sets, which the detector
/// confuses it with). Nothing when unsure: the caller picks its own fallback. Bytes
/// with a zero byte are left to that fallback too, being UTF-16 more likely than not.
std::optional<QByteArray> detect(const QByteArray &bytes);

/// The bytes decoded with the encoding; a byte order mark at the start is dropped and
/// invalid sequences become U+FFFD. valid, when given, tells whether there were none
/// (false as well for an encoding nobody here knows, which gives a null text).
QString decode(const QByteArray &bytes, const QByteArray &encoding, bool *valid = nullptr);

} // namespace TextEncoding
