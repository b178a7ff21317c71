#pragma once

#include <QString>

/// The maker's file utilities that this application uses. Copying and folder
/// creation try the ordinary way first and, when that fails, repeat the operation
/// with administrator rights through QFAuthorization.
class QFFileManager
{
public:
    QFFileManager() = delete;

    static bool fileExistsAtPath(const QString &path);
    static bool isDirectoryAtPath(const QString &path);
    /// A folder that the desktop shows as one file (.app, .fcpxmld, .bundle ...).
    static bool isPackageAtPath(const QString &path);
    /// False only for a "/Volumes/<name>/..." path whose volume is not mounted.
    static bool isDriveMountedForPath(const QString &path);
    /// Clears the file's immutable flag; logs when that fails.
    static void unlockFile(const QString &path);

    static bool createDirectory(const QString &path, bool shouldAuth = true);
    /// createDirectory, then waits up to timeout seconds for the folder to appear.
    static bool createDirectory(const QString &path, int timeout);
    /// Copies a file or folder; an existing destination makes the ordinary copy fail.
    static bool copyFile(const QString &source, const QString &destination, bool shouldAuth = true);
    /// copyFile, then waits up to timeout seconds for the destination to appear.
    static bool copyFile(const QString &source, const QString &destination, int timeout);
    /// Moves to the Trash; true when nothing is left at the path.
    static bool trashFile(const QString &path, bool shouldAuth = true);
    /// Makes a zip archive of the source with the platform's archiver (the folder itself
    /// inside when includeParent); true when the archive exists afterwards.
    static bool compressFile(const QString &source, const QString &destination,
                             bool includeParent = true);

    /// The archiver program (a seam for tests).
    static QString archiverPath();

private:
    static bool waitForPath(const QString &path, bool toExist, int timeout);
};
