#include "QFProcess.h"

#include <QFile>

#include <cerrno>
#include <cstring>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char **environ;

QFProcess::QFProcess(const QString &launchPath, const QStringList &arguments)
    : m_launchPath(launchPath), m_arguments(arguments)
{}

QFProcess::~QFProcess()
{
    closePipes();
    std::lock_guard lock(m_mutex);
    if (m_pid > 0 && !m_reaped) {
        // Collect the exit status later, off this thread, so no zombie is left behind.
        const pid_t pid = m_pid;
        std::thread([pid] {
            int status = 0;
            while (::waitpid(pid, &status, 0) < 0 && errno == EINTR) {
            }
        }).detach();
    }
}

bool QFProcess::launch(QString *error)
{
    std::lock_guard lock(m_mutex);
    if (m_pid > 0) {
        if (error)
            *error = QStringLiteral("the task was already launched");
        return false;
    }
    int outPipe[2] = {-1, -1}, errPipe[2] = {-1, -1}, inPipe[2] = {-1, -1};
    auto closeAll = [&] {
        for (int fd : {outPipe[0], outPipe[1], errPipe[0], errPipe[1], inPipe[0], inPipe[1]})
            if (fd >= 0)
                ::close(fd);
    };
    // Close-on-exec: a child that another thread starts meanwhile must not hold an end
    // open, or this child's reader would wait for that one to end as well.
    if ((m_stdout == Stream::Pipe && ::pipe2(outPipe, O_CLOEXEC) != 0) ||
        (m_stderr == Stream::Pipe && ::pipe2(errPipe, O_CLOEXEC) != 0) ||
        (m_stdinPipe && ::pipe2(inPipe, O_CLOEXEC) != 0)) {
        if (error)
            *error = QString::fromLocal8Bit(std::strerror(errno));
        closeAll();
        return false;
    }

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    if (m_stdinPipe)
        posix_spawn_file_actions_adddup2(&actions, inPipe[0], STDIN_FILENO);
    else
        posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    auto route = [&](Stream stream, int pipeEnds[2], int target) {
        if (stream == Stream::Pipe)
            posix_spawn_file_actions_adddup2(&actions, pipeEnds[1], target);
        else if (stream == Stream::Null)
            posix_spawn_file_actions_addopen(&actions, target, "/dev/null", O_WRONLY, 0);
    };
    route(m_stdout, outPipe, STDOUT_FILENO);
    route(m_stderr, errPipe, STDERR_FILENO);
    const QByteArray directory = QFile::encodeName(m_workingDirectory);
    if (!m_workingDirectory.isEmpty())
        posix_spawn_file_actions_addchdir_np(&actions, directory.constData());

    const QByteArray path = QFile::encodeName(m_launchPath);
    std::vector<QByteArray> argStore{path};
    for (const QString &argument : std::as_const(m_arguments))
        argStore.push_back(argument.toUtf8());
    std::vector<char *> argv;
    for (QByteArray &argument : argStore)
        argv.push_back(argument.data());
    argv.push_back(nullptr);
    std::vector<QByteArray> envStore;
    std::vector<char *> envp;
    if (m_environment) {
        for (const QString &entry : std::as_const(*m_environment))
            envStore.push_back(entry.toUtf8());
        for (QByteArray &entry : envStore)
            envp.push_back(entry.data());
        envp.push_back(nullptr);
    }

    pid_t pid = -1;
    const int result = ::posix_spawn(&pid, path.constData(), &actions, nullptr, argv.data(),
                                     m_environment ? envp.data() : environ);
    posix_spawn_file_actions_destroy(&actions);
    for (int fd : {outPipe[1], errPipe[1], inPipe[0]})
        if (fd >= 0)
            ::close(fd);
    if (result != 0) {
        for (int fd : {outPipe[0], errPipe[0], inPipe[1]})
            if (fd >= 0)
                ::close(fd);
        if (error)
            *error = QString::fromLocal8Bit(std::strerror(result));
        return false;
    }
    m_pid = pid;
    m_outFd = outPipe[0];
    m_errFd = errPipe[0];
    // Nothing ever writes to the child's input: it sees the end at once when it reads.
    if (inPipe[1] >= 0)
        ::close(inPipe[1]);
    return true;
}

bool QFProcess::reap(bool block)
{
    if (m_pid <= 0 || m_reaped)
        return m_reaped;
    int status = 0;
    pid_t done;
    do {
        done = ::waitpid(m_pid, &status, block ? 0 : WNOHANG);
    } while (done < 0 && errno == EINTR);
    if (done == m_pid) {
        m_reaped = true;
        m_status = WIFEXITED(status)     ? WEXITSTATUS(status)
                   : WIFSIGNALED(status) ? WTERMSIG(status)
                                         : 0;
    }
    return m_reaped;
}

bool QFProcess::isRunning()
{
    std::lock_guard lock(m_mutex);
    return m_pid > 0 && !reap(false);
}

void QFProcess::terminate()
{
    std::lock_guard lock(m_mutex);
    if (m_pid > 0 && !reap(false))
        ::kill(m_pid, SIGTERM);
}

int QFProcess::waitUntilExit()
{
    pid_t pid;
    {
        std::lock_guard lock(m_mutex);
        if (m_pid <= 0)
            return -1;
        if (m_reaped)
            return m_status;
        pid = m_pid;
    }
    // Wait without the lock, so that terminate() from a time-out can still get in.
    siginfo_t info;
    while (::waitid(P_PID, id_t(pid), &info, WEXITED | WNOWAIT) < 0 && errno == EINTR) {
    }
    std::lock_guard lock(m_mutex);
    reap(true);
    return m_status;
}

int QFProcess::terminationStatus()
{
    std::lock_guard lock(m_mutex);
    reap(false);
    return m_status;
}

QByteArray QFProcess::readChunk(Channel channel)
{
    int fd;
    {
        std::lock_guard lock(m_mutex);
        fd = channel == Channel::Output ? m_outFd : m_errFd;
        if (fd < 0)
            return {};
        ++m_readers;
    }
    QByteArray chunk(65536, Qt::Uninitialized);
    ssize_t n;
    do {
        n = ::read(fd, chunk.data(), size_t(chunk.size()));
    } while (n < 0 && errno == EINTR);
    chunk.truncate(n > 0 ? n : 0);
    std::lock_guard lock(m_mutex);
    if (--m_readers == 0 && m_closeRequested)
        closePipesLocked();
    return chunk;
}

QByteArray QFProcess::readToEnd(Channel channel)
{
    QByteArray all;
    for (QByteArray chunk = readChunk(channel); !chunk.isEmpty(); chunk = readChunk(channel))
        all += chunk;
    return all;
}

void QFProcess::closePipes()
{
    std::lock_guard lock(m_mutex);
    // A read in progress keeps its descriptor: the number could be reused by another
    // file the moment it is closed. The last reader closes instead.
    m_closeRequested = true;
    if (m_readers == 0)
        closePipesLocked();
}

void QFProcess::closePipesLocked()
{
    for (int *fd : {&m_outFd, &m_errFd}) {
        if (*fd >= 0)
            ::close(*fd);
        *fd = -1;
    }
}
