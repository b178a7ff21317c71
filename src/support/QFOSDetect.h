#pragma once

#include <QString>

#include <optional>

/// The running operating system's version, compared with thresholds and as text.
/// On Linux the version is the kernel's (major.minor.patch).
class QFOSDetect
{
public:
    QFOSDetect() = delete;

    struct Version
    {
        qint64 major = 0;
        qint64 minor = 0;
        qint64 patch = 0;
    };

    /// The running version; zeros when the platform gives none.
    static Version version();
    static void setVersionForTesting(std::optional<Version> version);

    static bool isOSVersionAtLeast(qint64 major, qint64 minor, qint64 bugfix);
    /// "major.minor.patch".
    static QString osVersionString();
    static QString osxVersion() { return osVersionString(); }

    static bool isLeopardOrHigher() { return isOSVersionAtLeast(10, 5, 0); }
    static bool isSnowLeopardOrHigher() { return isOSVersionAtLeast(10, 6, 0); }
    static bool isLionOrHigher() { return isOSVersionAtLeast(10, 7, 0); }
    static bool isMountainLionOrHigher() { return isOSVersionAtLeast(10, 8, 0); }
    static bool isMavericksOrHigher() { return isOSVersionAtLeast(10, 9, 0); }
    static bool isYosemiteOrHigher() { return isOSVersionAtLeast(10, 10, 0); }
    static bool isElCapitanOrHigher() { return isOSVersionAtLeast(10, 11, 0); }
    static bool isSierraOrHigher() { return isOSVersionAtLeast(10, 12, 0); }
};
