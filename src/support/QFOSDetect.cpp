#include "QFOSDetect.h"

#include "QFFormat.h"

#include <QMutex>
#include <QOperatingSystemVersion>
#include <QRegularExpression>
#include <QSysInfo>

namespace {

QMutex overrideMutex;
std::optional<QFOSDetect::Version> versionOverride;

QFOSDetect::Version platformVersion()
{
#ifdef Q_OS_MACOS
    const QOperatingSystemVersion current = QOperatingSystemVersion::current();
    return {qMax(current.majorVersion(), 0), qMax(current.minorVersion(), 0),
            qMax(current.microVersion(), 0)};
#else
    static const QRegularExpression numbers(QStringLiteral("^(\\d+)(?:\\.(\\d+))?(?:\\.(\\d+))?"));
    const QRegularExpressionMatch match = numbers.match(QSysInfo::kernelVersion());
    if (!match.hasMatch())
        return {};
    return {match.captured(1).toLongLong(), match.captured(2).toLongLong(),
            match.captured(3).toLongLong()};
#endif
}

} // namespace

QFOSDetect::Version QFOSDetect::version()
{
    {
        QMutexLocker lock(&overrideMutex);
        if (versionOverride)
            return *versionOverride;
    }
    static const Version running = platformVersion();
    return running;
}

void QFOSDetect::setVersionForTesting(std::optional<Version> version)
{
    QMutexLocker lock(&overrideMutex);
    versionOverride = version;
}

bool QFOSDetect::isOSVersionAtLeast(qint64 major, qint64 minor, qint64 bugfix)
{
    const Version v = version();
    if (v.major < major)
        return false;
    if (v.major == major && v.minor < minor)
        return false;
    if (v.major == major && v.minor == minor)
        return v.patch >= bugfix;
    return true;
}

QString QFOSDetect::osVersionString()
{
    const Version v = version();
    return QFFormat::format(u"%li.%li.%li", v.major, v.minor, v.patch);
}
