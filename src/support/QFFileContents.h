#pragma once

#include "support/QFError.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <cstddef>

class QFile;

#include <optional>

/// Whole-file reads and writes with a readable reason on failure. The error's
/// domain is "QFFileContents", its code the Qt file error, and its user info holds
/// the sentence under "NSLocalizedDescription".
namespace QFFileContents {

/// What tells two versions of a file apart without keeping either: its length and a
/// hash of its bytes, taken in blocks of a fixed size however they were read.
class Fingerprint
{
public:
    void add(const char *data, qsizetype size);
    qint64 size() const { return m_size; }
    /// Equal when the same bytes were added to both.
    bool operator==(const Fingerprint &other) const
    {
        return m_size == other.m_size && finished() == other.finished();
    }

    /// The bytes hashed at a time: adding whole blocks copies nothing.
    static constexpr qsizetype blockSize = 65536;

private:
    std::size_t finished() const;

    qint64 m_size = 0;
    std::size_t m_hash = 0;
    QByteArray m_block;
};

/// Opens a regular file for reading (a folder is refused).
bool openForReading(QFile &file, QFError *error = nullptr);

/// Sets error to the sentence for a read of the open file that failed.
void failedReading(const QFile &file, QFError *error);

/// The fingerprint of a file's bytes, read in blocks.
std::optional<Fingerprint> fingerprint(const QString &path, QFError *error = nullptr);

/// Every byte of a regular file (a folder is refused), read uncached in one go.
std::optional<QByteArray> read(const QString &path, QFError *error = nullptr);

/// Replaces the file atomically: the old content stays whole until the new one is
/// completely on disk.
bool writeAtomically(const QString &path, const QByteArray &bytes, QFError *error = nullptr);
/// The same for content given in pieces, written one after the other.
bool writeAtomically(const QString &path, const QList<QByteArray> &pieces,
                     QFError *error = nullptr);

} // namespace QFFileContents
