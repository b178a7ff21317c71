#include "support/QFLocalPaths.h"
#include "support/QFOSDetect.h"

#include "QtPrinters.h"
#include "TempHome.h"

#include <gtest/gtest.h>

#include <QRegularExpression>

namespace {

class Superuser
{
public:
    Superuser() { QFLocalPaths::setRealUserIdForTesting(0); }
    ~Superuser() { QFLocalPaths::setRealUserIdForTesting(1000); }
};

TEST(QFLocalPaths, UserFoldersFollowTheHomeAndXdgFolders)
{
    TempHome home;
    EXPECT_EQ(QFLocalPaths::userDirectory(), home.path());
    EXPECT_EQ(QFLocalPaths::prefsDirectory(true), home.path() + "/.config");
    EXPECT_EQ(QFLocalPaths::cacheDirectory(true), home.path() + "/.cache");
    EXPECT_EQ(QFLocalPaths::logDirectory(true), home.path() + "/.local/state");
    EXPECT_EQ(QFLocalPaths::libraryDirectory(true), home.path() + "/.local/share");
    EXPECT_EQ(QFLocalPaths::trashDirectory(), home.path() + "/.local/share/Trash");
    EXPECT_EQ(QFLocalPaths::logDirectory(false), "/var/log");
    EXPECT_EQ(QFLocalPaths::prefsDirectory(false), "/etc/xdg");
    EXPECT_TRUE(QFLocalPaths::darwinCacheDirectory().isNull());
}

TEST(QFLocalPaths, SuperuserGetsTheFoldersUnderTheUserDirectory)
{
    TempHome home;
    qputenv("XDG_CONFIG_HOME", "/root/.config");
    EXPECT_EQ(QFLocalPaths::prefsDirectory(true), "/root/.config");
    {
        Superuser root;
        // The root's home is replaced by the user directory; the local domain is not touched.
        EXPECT_EQ(QFLocalPaths::prefsDirectory(true), home.path() + "/.config");
        EXPECT_EQ(QFLocalPaths::prefsDirectory(false), "/etc/xdg");
        EXPECT_TRUE(QFLocalPaths::isSuperuser());
        // sudo -E keeps the user's own folders: they are not joined to the home again.
        qputenv("XDG_CONFIG_HOME", (home.path() + "/.config").toUtf8());
        EXPECT_EQ(QFLocalPaths::prefsDirectory(true), home.path() + "/.config");
        EXPECT_EQ(QFLocalPaths::logDirectory(true), home.path() + "/.local/state");
    }
    qputenv("XDG_CONFIG_HOME", "/root/.config");
    EXPECT_EQ(QFLocalPaths::prefsDirectory(true), "/root/.config");
}

TEST(IsPathSystemDirectory, Decides)
{
    TempHome home;
    const std::pair<const char *, bool> inside[] = {{"/", true},
                                                    {"/a", false},
                                                    {"/usr/local/bin", false},
                                                    {"/usr/lib", true},
                                                    {"/private/var/tmp", true},
                                                    {"/System/Library", true},
                                                    {"/var/log/", true},
                                                    {"/tmp/project", false}};
    // The trailing-slash cut removes two characters: "/usr/" is read as "/us".
    const std::pair<const char *, bool> exact[] = {{"/usr/bin", false}, {"/usr", true},
                                                   {"/usr/", false},    {"/usrx/", true},
                                                   {"/etc/xdg", true},  {"/var/cache", true}};
    for (const auto &[path, system] : inside)
        EXPECT_EQ(QFLocalPaths::isPathSystemDirectory(QString::fromUtf8(path)), system) << path;
    for (const auto &[path, system] : exact)
        EXPECT_EQ(QFLocalPaths::isPathSystemDirectory(QString::fromUtf8(path), true), system)
            << path;

    // The home is one, but not with a trailing slash.
    EXPECT_TRUE(QFLocalPaths::isPathSystemDirectory(home.path()));
    EXPECT_FALSE(QFLocalPaths::isPathSystemDirectory(home.path() + "/", true));
    EXPECT_TRUE(QFLocalPaths::isPathSystemDirectory(home.path() + "/.config"));
    EXPECT_FALSE(QFLocalPaths::isPathSystemDirectory(home.path() + "/Movies/cut", true));
}

} // namespace
