// cuebridge-import against every kind of bad input: each case ends with its message
// and exit status within a bounded time, and no file of the user's changes.

#include "QtPrinters.h"
#include "TempHome.h"

#include <QDir>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QThread>

#include <functional>
#include <map>

#include <csignal>
#include <cstdlib>

#include <unistd.h>

namespace {

const QByteArray oneMarker = "#\tTrack\tName\tComment\tStart\tDuration\tColor\n"
                             "1\tV1\tA\tc\t00:01:50:00\t00:00:05:00\tRed\n";

class BadInput : public testing::Test
{
public:
    QString markers() { return home.file(u"markers.txt"_s, oneMarker); }
    /// A marker list of these bytes and a copy of the FCPX library to import it into.
    QStringList intoLibrary(const QByteArray &list)
    {
        return {home.file(u"m.txt"_s, list), home.copyOfData(u"library.fcpxml"_s)};
    }
    /// The one-marker list and a target of these bytes.
    QStringList intoTarget(const QString &name, const QByteArray &target)
    {
        return {markers(), home.file(name, target)};
    }

    /// Every file of the user's (the home without its hidden and temporary folders).
    std::map<QString, QByteArray> files() const
    {
        std::map<QString, QByteArray> contents;
        QDirIterator it(home.path(), QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
        while (it.hasNext()) {
            const QString file = it.next();
            const QString relative = QDir(home.path()).relativeFilePath(file);
            if (!relative.startsWith(u'.') && !relative.startsWith(u"temporary/") &&
                !relative.startsWith(u"tmp/"))
                contents[relative] = TempHome::read(file);
        }
        return contents;
    }

    TempHome home;
};

struct Case
{
    const char *name;
    std::function<QStringList(BadInput &)> arguments;
    int status;
    const char *said; ///< in standard output or error
    bool needsPermissions = false;
    friend void PrintTo(const Case &c, std::ostream *os) { *os << c.name; }
};

class Matrix : public BadInput, public testing::WithParamInterface<Case>
{
};

TEST_P(Matrix, EndsWithItsMessageAndChangesNoFile)
{
    const Case &c = GetParam();
    QStringList command{QStringLiteral(CUEBRIDGE_IMPORT), u"-q"_s};
    if (c.needsPermissions && ::geteuid() == 0) {
        // Permissions do not bind the superuser: run as an ordinary user instead.
        const QString runuser = QStandardPaths::findExecutable(u"runuser"_s);
        if (runuser.isEmpty())
            GTEST_SKIP() << "file permissions do not bind the superuser, and runuser is missing";
        QFile::setPermissions(home.path(), QFile::permissions(home.path()) |
                                               QFileDevice::ReadOther | QFileDevice::ExeOther);
        // The build tree may lie where that user cannot go (root's own home): the
        // program is run from a copy in the home, which the comparison leaves out.
        const QString copy = home.filePath(u".bin/cuebridge-import"_s);
        QDir().mkpath(home.filePath(u".bin"_s));
        QFile::setPermissions(home.filePath(u".bin"_s), QFile::permissions(home.path()));
        ASSERT_TRUE(QFile::copy(command.first(), copy));
        command = QStringList{runuser, u"-u"_s, u"nobody"_s, u"--"_s, copy, u"-q"_s};
    }
    const QStringList arguments = c.arguments(*this);
    const auto before = files();

    QProcess process;
    process.start(command.first(), command.mid(1) + arguments);
    ASSERT_TRUE(process.waitForFinished(60000)) << "no end within a minute";
    const QString said =
        QString::fromUtf8(process.readAllStandardOutput() + process.readAllStandardError());
    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit) << said.toStdString();
    EXPECT_EQ(process.exitCode(), c.status) << said.toStdString();
    EXPECT_TRUE(said.contains(QString::fromUtf8(c.said))) << said.toStdString();
    EXPECT_TRUE(files() == before) << "a file changed";
    if (c.status != 0) { // an FCPX result goes to the temporary folder, and only on success
        EXPECT_EQ(QDir(home.tempPath()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
                  QStringList())
            << "a result was left in the temporary folder";
    }
    // Writable again, so that the home can be removed.
    QDirIterator folders(home.path(), QDir::Dirs | QDir::NoDotAndDotDot,
                         QDirIterator::Subdirectories);
    while (folders.hasNext())
        QFile::setPermissions(folders.next(), QFileDevice::ReadOwner | QFileDevice::WriteOwner |
                                                  QFileDevice::ExeOwner);
}

INSTANTIATE_TEST_SUITE_P(
    Cli, Matrix,
    testing::Values(
        Case{"EmptyXmemlTarget", [](BadInput &test) { return test.intoTarget(u"t.xml"_s, ""); }, 3,
             "lists no sequence to import into"},
        Case{"FiftyMegabyteLineAsMarkerList",
             [](BadInput &test) { return test.intoLibrary(QByteArray(50 << 20, 'x')); }, 64,
             "too large for a marker list"},
        Case{"MarkerListAsTarget",
             [](BadInput &test) {
                 return QStringList{test.markers(), test.markers()};
             },
             2, "Final Cut Pro 7 is not running"},
        Case{"FolderAsMarkerList",
             [](BadInput &test) {
                 return QStringList{test.home.path(), test.home.copyOfData(u"library.fcpxml"_s)};
             },
             64, "is a folder"},
        Case{"OutputIsTheTarget",
             [](BadInput &test) {
                 const QString target = test.home.copyOfData(u"library.fcpxml"_s);
                 return QStringList{u"--output"_s, target, test.markers(), target};
             },
             64, "is the target itself"},
        Case{"OutputIsAFolder",
             [](BadInput &test) {
                 QDir(test.home.path()).mkpath(u"Taken.fcpxmld"_s);
                 return QStringList{u"--output"_s, test.home.filePath(u"Taken.fcpxmld"_s),
                                    test.markers(), test.home.copyOfData(u"library.fcpxml"_s)};
             },
             64, "is a folder"},
        Case{"UnreadableMarkerList",
             [](BadInput &test) {
                 const QString list = test.markers();
                 QFile::setPermissions(list, QFileDevice::WriteOwner);
                 return QStringList{list, test.home.copyOfData(u"library.fcpxml"_s)};
             },
             64, "cannot be read", true},
        Case{"ReadOnlyTargetFolder",
             [](BadInput &test) {
                 const QString target =
                     test.home.copyOfData(u"project.xml"_s, u"locked/project.xml"_s);
                 QFile::setPermissions(test.home.filePath(u"locked"_s),
                                       QFileDevice::ReadOwner | QFileDevice::ExeOwner |
                                           QFileDevice::ReadOther | QFileDevice::ExeOther);
                 return QStringList{test.markers(), target};
             },
             2, "Failed to write marker data to disk. The file", true},
        Case{"MissingMarkerList",
             [](BadInput &test) {
                 return QStringList{test.home.filePath(u"none.txt"_s),
                                    test.home.copyOfData(u"project.xml"_s)};
             },
             64, "no such file"},
        Case{"UnknownSequence",
             [](BadInput &test) {
                 return QStringList{u"--sequence"_s, u"nope"_s, test.markers(),
                                    test.home.copyOfData(u"project.xml"_s)};
             },
             64, "holds no item"},
        Case{"UsageErrors",
             [](BadInput &test) {
                 return QStringList{u"--unit"_s,    u"beats"_s,
                                    u"--offset"_s,  u"12x"_s,
                                    test.markers(), test.home.copyOfData(u"project.xml"_s)};
             },
             64, "Try 'cuebridge-import --help'"}),
    [](const auto &param) { return std::string(param.param.name); });

TEST_F(BadInput, AnImportKilledAtAnyMomentLeavesTheOriginalOrTheWholeResult)
{
    // Enough markers that a run lasts a while and the kills land in every phase of it.
    QByteArray list = "#\tTrack\tName\tComment\tStart\tDuration\tColor\n";
    for (int i = 0; i < 5000; ++i)
        list += u"%1\tV1\tMarker %1\tNote\t%2:%3:%4:10\t00:00:01:00\tRed\n"_s.arg(i + 1)
                    .arg(1 + i / 3600, 2, 10, QChar(u'0'))
                    .arg(i / 60 % 60, 2, 10, QChar(u'0'))
                    .arg(i % 60, 2, 10, QChar(u'0'))
                    .toUtf8();
    const QString markerFile = home.file(u"many.txt"_s, list);
    // No log: as the superuser it would go to a computer-wide folder, one failure per line.
    home.file(u".config/com.quillfen.global.plist"_s,
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict>"
              "<key>disable-logging</key><string>1</string></dict></plist>\n");
    const QByteArray original = TempHome::read(QStringLiteral(CUEBRIDGE_TEST_DATA "/sequence.xml"));

    const QString reference = home.file(u"reference.xml"_s, original);
    QElapsedTimer timer;
    timer.start();
    ASSERT_EQ(QProcess::execute(QStringLiteral(CUEBRIDGE_IMPORT), {u"-q"_s, markerFile, reference}),
              0);
    const qint64 runMicroseconds = timer.nsecsElapsed() / 1000;
    // Every run gives the sequence a new identifier; the rest is the same each time.
    const auto withoutUuids = [](QByteArray xml) {
        static const QRegularExpression uuid(u"<uuid>[^<]*</uuid>"_s);
        return QString::fromUtf8(xml).replace(uuid, u"<uuid/>"_s);
    };
    const QString complete = withoutUuids(TempHome::read(reference));
    ASSERT_NE(complete, withoutUuids(original));

    const QString target = home.filePath(u"killed.xml"_s);
    constexpr int kills = 16;
    for (int i = 0; i < kills; ++i) {
        TempHome::write(target, original);
        QProcess process;
        process.start(QStringLiteral(CUEBRIDGE_IMPORT), {u"-q"_s, markerFile, target});
        ASSERT_TRUE(process.waitForStarted());
        // Spread over the whole run, with a little chance in each step.
        const qint64 at = runMicroseconds * i / (kills - 2) + std::rand() % 2000;
        QThread::usleep(quint64(at));
        ::kill(pid_t(process.processId()), SIGKILL);
        process.waitForFinished();
        const QByteArray after = TempHome::read(target);
        EXPECT_TRUE(after == original || withoutUuids(after) == complete)
            << "killed after " << at << " µs of " << runMicroseconds << ": " << after.size()
            << " bytes";
    }
}

} // namespace
