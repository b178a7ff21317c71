#pragma once

#include <QByteArray>
#include <QString>
#include <QStringConverter>

#include <optional>

/// Decoding the bytes of a marker list file into text.
namespace MarkerListText {

/// The encoding of a text file when it is certain: a byte order mark, else strict
/// UTF-8 validity. Nothing when unsure (the caller picks its own fallback).
std::optional<QStringConverter::Encoding> detectEncoding(const QByteArray &bytes);

/// The bytes decoded with the encoding; a byte order mark at the start is dropped and
/// invalid sequences become U+FFFD.
QString decode(const QByteArray &bytes, QStringConverter::Encoding encoding);

} // namespace MarkerListText
