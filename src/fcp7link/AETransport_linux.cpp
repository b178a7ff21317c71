// No Final Cut Pro 7 runs on Linux: events find no process to go to. File references
// are the file's device and inode, resolved back through the paths they were made from.

#include "fcp7link/AETransport.h"

#include <QFile>
#include <QHash>
#include <QMutex>

#include <sys/stat.h>

#include <cstring>

namespace {

class NoEditorTransport : public AETransport
{
public:
    AESendResult send(const AppleEvent &) override
    {
        AESendResult result;
        result.stage = AESendStage::Send;
        result.status = AEStatus::procNotFound;
        return result;
    }
};

struct Identity
{
    quint64 device = 0;
    quint64 inode = 0;
};

std::optional<Identity> identityOf(const QString &path)
{
    struct stat info
    {
    };
    if (::stat(QFile::encodeName(path).constData(), &info) != 0)
        return std::nullopt;
    return Identity{quint64(info.st_dev), quint64(info.st_ino)};
}

QMutex knownPathsMutex;
QHash<QByteArray, QString> knownPaths; // reference -> the path it was made from

} // namespace

std::unique_ptr<AETransport> makePlatformTransport()
{
    return std::make_unique<NoEditorTransport>();
}

std::optional<QByteArray> AEFileReference::fromPath(const QString &path)
{
    const std::optional<Identity> identity = identityOf(path);
    if (!identity)
        return std::nullopt;
    QByteArray reference(size, '\0');
    std::memcpy(reference.data(), &identity->device, sizeof identity->device);
    std::memcpy(reference.data() + 8, &identity->inode, sizeof identity->inode);
    QMutexLocker lock(&knownPathsMutex);
    knownPaths.insert(reference, path);
    return reference;
}

std::optional<QString> AEFileReference::toPath(const QByteArray &reference)
{
    QString path;
    {
        QMutexLocker lock(&knownPathsMutex);
        path = knownPaths.value(reference);
    }
    const std::optional<Identity> identity = identityOf(path);
    if (path.isEmpty() || !identity || reference.size() != size)
        return std::nullopt;
    // Still the same file: a reference follows the file, not the name.
    Identity expected;
    std::memcpy(&expected.device, reference.constData(), sizeof expected.device);
    std::memcpy(&expected.inode, reference.constData() + 8, sizeof expected.inode);
    if (expected.device != identity->device || expected.inode != identity->inode)
        return std::nullopt;
    return path;
}
