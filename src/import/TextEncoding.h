#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>

/// What encoding the bytes of a text file are in, and their text in it. Encodings go by
/// the names iconv and uchardet give them ("UTF-8", "UTF-16LE", "WINDOWS-1252",
/// "MACINTOSH").
namespace TextEncoding {

inline const QByteArray utf8 = QByteArrayLiteral("UTF-8");
inline const QByteArray utf16LE = QByteArrayLiteral("UTF-16LE");

/// A byte order mark, else valid UTF-8, else UTF-16 told by where its zero bytes lie,
/// else the likeliest reading among the single-byte encodings editors' tools write
/// (Windows-1252, MacRoman, ISO-8859-1 and -15, Windows-1250, Mac Central European,
/// Windows-1251), the charset detector's answer counting one point; a tie goes to the
/// platform's own legacy encoding. Nothing when unsure: the caller picks its own
/// fallback. why, when given, says how the encoding was decided.
std::optional<QByteArray> detect(const QByteArray &bytes, QString *why = nullptr);

/// The bytes decoded with the encoding; a byte order mark at the start is dropped and
/// invalid sequences become U+FFFD. valid, when given, tells whether there were none
/// (false as well for an encoding nobody here knows, which gives a null text).
QString decode(const QByteArray &bytes, const QByteArray &encoding, bool *valid = nullptr);

/// The encodings a user can ask a list to be read in, by their names here, in the order
/// a menu shows them.
QList<QByteArray> choices();
/// The name users know an encoding by ("Windows-1252", "MacRoman"); the name itself for
/// one not among the choices.
QString displayName(const QByteArray &encoding);

} // namespace TextEncoding
