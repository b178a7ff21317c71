#include "QFFileContents.h"

#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QSaveFile>

#include <algorithm>

namespace QFFileContents {

namespace {

void fail(QFError *error, int code, const QString &sentence)
{
    if (error)
        *error = QFError::make(QStringLiteral("QFFileContents"), code,
                               QStringLiteral("NSLocalizedDescription"), sentence);
}

} // namespace

void Fingerprint::add(const char *data, qsizetype size)
{
    m_size += size;
    while (size > 0) {
        // Whole blocks straight from the caller's buffer; only a block's pieces are kept.
        if (m_block.isEmpty() && size >= blockSize) {
            m_hash = qHashBits(data, blockSize, m_hash);
            data += blockSize;
            size -= blockSize;
            continue;
        }
        const qsizetype taken = std::min(size, blockSize - m_block.size());
        m_block.append(data, taken);
        data += taken;
        size -= taken;
        if (m_block.size() == blockSize) {
            m_hash = qHashBits(m_block.constData(), blockSize, m_hash);
            m_block.clear();
        }
    }
}

std::size_t Fingerprint::finished() const
{
    return qHashBits(m_block.constData(), m_block.size(), m_hash);
}

bool openForReading(QFile &file, QFError *error)
{
    const QString name = QFileInfo(file.fileName()).fileName();
    if (QFileInfo(file.fileName()).isDir()) {
        fail(error, QFileDevice::OpenError,
             QStringLiteral("The file “%1” couldn’t be opened because it is a folder.").arg(name));
        return false;
    }
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        fail(error, file.error(),
             QStringLiteral("The file “%1” couldn’t be opened: %2.").arg(name, file.errorString()));
        return false;
    }
    return true;
}

void failedReading(const QFile &file, QFError *error)
{
    fail(error, file.error(),
         QStringLiteral("The file “%1” couldn’t be read: %2.")
             .arg(QFileInfo(file.fileName()).fileName(), file.errorString()));
}

std::optional<Fingerprint> fingerprint(const QString &path, QFError *error)
{
    QFile file(path);
    if (!openForReading(file, error))
        return std::nullopt;
    Fingerprint fingerprint;
    QByteArray buffer(1 << 20, Qt::Uninitialized);
    for (qint64 got; (got = file.read(buffer.data(), buffer.size())) > 0;)
        fingerprint.add(buffer.constData(), got);
    if (file.error() != QFileDevice::NoError) {
        failedReading(file, error);
        return std::nullopt;
    }
    return fingerprint;
}

std::optional<QByteArray> read(const QString &path, QFError *error)
{
    QFile file(path);
    if (!openForReading(file, error))
        return std::nullopt;
    QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError) {
        failedReading(file, error);
        return std::nullopt;
    }
    return bytes;
}

bool writeAtomically(const QString &path, const QByteArray &bytes, QFError *error)
{
    return writeAtomically(path, QList<QByteArray>{bytes}, error);
}

bool writeAtomically(const QString &path, const QList<QByteArray> &pieces, QFError *error)
{
    QSaveFile file(path);
    bool written = file.open(QIODevice::WriteOnly);
    for (const QByteArray &piece : pieces)
        written = written && file.write(piece) == piece.size();
    if (written && file.commit())
        return true;
    fail(error, file.error(),
         QStringLiteral("The file “%1” couldn’t be saved: %2.")
             .arg(QFileInfo(path).fileName(), file.errorString()));
    file.cancelWriting();
    return false;
}

} // namespace QFFileContents
