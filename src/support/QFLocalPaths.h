#pragma once

#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <memory>

#include <optional>

/// Standard folder locations, temporary names and the system-folder test.
///
/// Stateless; every member with a boolean takes true for the user's domain and false
/// for the computer-wide domain. On Linux the folders follow the freedesktop
/// equivalents of the macOS ones (see the platform file).
class QFLocalPaths
{
public:
    QFLocalPaths() = delete;

    /// The kinds of standard folder the platform lookup knows.
    enum class Directory
    {
        Applications,
        AdminApplications,
        Documents,
        Library,
        Preferences,
        Caches,
        ApplicationSupport,
        Logs,
        Movies,
        Desktop,
        Documentation,
        Trash,
    };
    enum class Domain
    {
        User,
        Local,
        System
    };

    /// The first folder of the kind in the domain, with the superuser rule for the
    /// user domain (the root's home is replaced by userDirectory). Null when none.
    static QString pathForDirectory(Directory directory, bool forUserDomain);

    static QString applicationDirectory(bool userDomain);
    static QString adminApplicationDirectory(bool userDomain);
    static QString documentDirectory(bool userDomain);
    static QString libraryDirectory(bool userDomain);
    static QString prefsDirectory(bool userDomain);
    static QString cacheDirectory(bool userDomain);
    static QString appSupportDirectory(bool userDomain);
    static QString logDirectory(bool userDomain);
    static QString movieDirectory();
    static QString desktopDirectory();
    static QString systemLibraryDirectory();
    static QString localDocumentationDirectory();
    static QString userDirectory();
    static QString username();
    static QString trashDirectory();
    static QString tempDirectory();
    /// The user's own folder for files of running programs (sockets, copies to run): the
    /// runtime folder, else the user's cache folder; made when missing.
    static QString privateRuntimeFolder();
    /// A new folder that only this user can enter (mode 700), for one job of this run:
    /// under the user's runtime folder, else the user's cache folder, never at a name
    /// another user could take first. Removed when the object goes unless told
    /// otherwise; invalid (with its error) when it cannot be made.
    static std::unique_ptr<QTemporaryDir> privateTemporaryFolder();
    /// The per-user cache folder of the system configuration; null where there is none.
    static QString darwinCacheDirectory();

    /// A name in the temporary folder (the file is not created).
    static QString tempFile();
    /// A new globally unique string.
    static QString uuid();
    /// n characters of [a-z0-9] from rand(), seeded anew from time and clock.
    static QString randomString(int length);

    static QString ensureTrailingSlash(const QString &path);
    static QString stripTrailingSlash(const QString &path);

    /// Whether the path is a folder that must never be deleted or overwritten. A
    /// trailing slash cuts two characters before comparing; kept as the maker's
    /// other applications do it.
    static bool isPathSystemDirectory(const QString &path, bool exactMatch = false);
    static bool isPathOnTimeMachineVolume(const QString &path);

    /// The real user id; tests may pretend to be another user (e.g. the superuser).
    static uint realUserId();
    static void setRealUserIdForTesting(std::optional<uint> uid);
    /// The running program, also before the application object exists (Linux).
    static QString executablePath();
    /// The folder of the running program, where the maker's helper programs may be
    /// carried (the bug reporter, the updater).
    static QString executableFolder();
    static void setExecutableFolderForTesting(const QString &folder);
    /// Puts the computer-wide folders under root (null: where they really are). Set it
    /// before any thread that looks them up starts.
    static void setComputerWideRootForTesting(const QString &root);
    static bool isSuperuser() { return realUserId() == 0; }

    /// What the platform lists for a kind of folder in a domain (tilde expanded).
    static QStringList platformDirectories(Directory directory, Domain domain);
};
