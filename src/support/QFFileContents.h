#pragma once

#include "support/QFError.h"

#include <QByteArray>
#include <QString>

#include <optional>

/// Whole-file reads and writes with a readable reason on failure. The error's
/// domain is "QFFileContents", its code the Qt file error, and its user info holds
/// the sentence under "NSLocalizedDescription".
namespace QFFileContents {

/// Every byte of a regular file (a folder is refused), read uncached in one go.
std::optional<QByteArray> read(const QString &path, QFError *error = nullptr);

/// Replaces the file atomically: the old content stays whole until the new one is
/// completely on disk.
bool writeAtomically(const QString &path, const QByteArray &bytes, QFError *error = nullptr);

} // namespace QFFileContents
