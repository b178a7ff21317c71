#include "QFFileContents.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

namespace QFFileContents {

namespace {

void fail(QFError *error, int code, const QString &sentence)
{
    if (error)
        *error = QFError::make(QStringLiteral("QFFileContents"), code,
                               QStringLiteral("NSLocalizedDescription"), sentence);
}

} // namespace

std::optional<QByteArray> read(const QString &path, QFError *error)
{
    const QString name = QFileInfo(path).fileName();
    if (QFileInfo(path).isDir()) {
        fail(error, QFileDevice::OpenError,
             QStringLiteral("The file “%1” couldn’t be opened because it is a folder.").arg(name));
        return std::nullopt;
    }
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        fail(error, file.error(),
             QStringLiteral("The file “%1” couldn’t be opened: %2.").arg(name, file.errorString()));
        return std::nullopt;
    }
    QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError) {
        fail(error, file.error(),
             QStringLiteral("The file “%1” couldn’t be read: %2.").arg(name, file.errorString()));
        return std::nullopt;
    }
    return bytes;
}

bool writeAtomically(const QString &path, const QByteArray &bytes, QFError *error)
{
    QSaveFile file(path);
    if (file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.commit())
        return true;
    fail(error, file.error(),
         QStringLiteral("The file “%1” couldn’t be saved: %2.")
             .arg(QFileInfo(path).fileName(), file.errorString()));
    file.cancelWriting();
    return false;
}

} // namespace QFFileContents
