// The crash reports that macOS writes for every application, written here by the
// application itself: a handler of the fatal signals that only does what is safe in a
// signal handler (everything it needs is made when it is installed; it formats into
// its own buffers and writes with write(2)), then lets the signal end the process.

#include "diagnostics/QFBugReporter.h"

#include "support/QFLocalPaths.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QSysInfo>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <ctime>

#include <execinfo.h>
#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

constexpr int fatalSignals[] = {SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGABRT};

// Made when the writer is installed.
char reportPrefix[4096]; // "<DiagnosticReports>/<name>_"
char reportSuffix[512];  // "_<host>"
char reportHeader[8192];
long utcOffsetSeconds = 0; // the report's name carries local time
std::atomic<bool> entered{false};
alignas(16) char alternateStack[64 * 1024]; // a stack overflow has none left

/// Appends to a fixed buffer, always terminated, silently cut at its end.
struct Buffer
{
    char *at;
    char *end;

    void text(const char *s)
    {
        while (*s && at < end - 1)
            *at++ = *s++;
        *at = '\0';
    }
    void number(unsigned long value, int width = 1, int base = 10)
    {
        char digits[32];
        int n = 0;
        do {
            digits[n++] = "0123456789abcdef"[value % unsigned(base)];
            value /= unsigned(base);
        } while (value && n < 32);
        while (n < width && n < 32)
            digits[n++] = '0';
        while (n && at < end - 1)
            *at++ = digits[--n];
        *at = '\0';
    }
};

/// Year, month and day of a count of days since 1970-01-01 (proleptic Gregorian).
void civilFromDays(long days, long &year, unsigned &month, unsigned &day)
{
    days += 719468;
    const long era = (days >= 0 ? days : days - 146096) / 146097;
    const unsigned dayOfEra = unsigned(days - era * 146097);
    const unsigned yearOfEra =
        (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const unsigned dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const unsigned shifted = (5 * dayOfYear + 2) / 153;
    day = dayOfYear - (153 * shifted + 2) / 5 + 1;
    month = shifted < 10 ? shifted + 3 : shifted - 9;
    year = long(yearOfEra) + era * 400 + (month <= 2);
}

/// "yyyy-MM-dd-HHmmss" and "yyyy-MM-dd HH:mm:ss" of now, in local time.
void timestamp(Buffer &out, bool forName)
{
    const long local = long(::time(nullptr)) + utcOffsetSeconds;
    long days = local / 86400;
    long seconds = local % 86400;
    if (seconds < 0) {
        seconds += 86400;
        --days;
    }
    long year;
    unsigned month, day;
    civilFromDays(days, year, month, day);
    out.number(static_cast<unsigned long>(year), 4);
    out.text("-");
    out.number(month, 2);
    out.text("-");
    out.number(day, 2);
    out.text(forName ? "-" : " ");
    out.number(static_cast<unsigned long>(seconds / 3600), 2);
    if (!forName)
        out.text(":");
    out.number(static_cast<unsigned long>(seconds / 60 % 60), 2);
    if (!forName)
        out.text(":");
    out.number(static_cast<unsigned long>(seconds % 60), 2);
}

const char *signalName(int signal)
{
    switch (signal) {
    case SIGSEGV:
        return "SIGSEGV";
    case SIGBUS:
        return "SIGBUS";
    case SIGILL:
        return "SIGILL";
    case SIGFPE:
        return "SIGFPE";
    case SIGABRT:
        return "SIGABRT";
    default:
        return "signal";
    }
}

void writeAll(int fd, const char *text, size_t size)
{
    while (size > 0) {
        const ssize_t written = ::write(fd, text, size);
        if (written <= 0)
            return;
        text += written;
        size -= size_t(written);
    }
}

void writeReport(int signal, const siginfo_t *info)
{
    // A second crash within the same second (a child process, say) gets "-2", "-3"...
    int fd = -1;
    for (unsigned attempt = 1; fd < 0 && attempt < 10; ++attempt) {
        char path[sizeof reportPrefix + sizeof reportSuffix + 40];
        Buffer name{path, path + sizeof path};
        name.text(reportPrefix);
        timestamp(name, true);
        name.text(reportSuffix);
        if (attempt > 1) {
            name.text("-");
            name.number(attempt);
        }
        name.text(".crash");
        fd = ::open(path, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
        if (fd < 0 && errno != EEXIST)
            return;
    }
    if (fd < 0)
        return;

    writeAll(fd, reportHeader, std::strlen(reportHeader));
    char details[512];
    Buffer out{details, details + sizeof details};
    out.text("Date/Time:       ");
    timestamp(out, false);
    out.text("\nException Type:  ");
    out.text(signalName(signal));
    out.text(" (signal ");
    out.number(unsigned(signal));
    out.text(")\n");
    if (info && signal != SIGABRT) {
        out.text("Exception Address: 0x");
        out.number(reinterpret_cast<unsigned long>(info->si_addr), 1, 16);
        out.text("\n");
    }
    out.text("Crashed Thread:  ");
    out.number(static_cast<unsigned long>(::syscall(SYS_gettid)));
    out.text("\n\nBacktrace of the crashed thread:\n");
    writeAll(fd, details, std::strlen(details));

    void *frames[128];
    const int count = ::backtrace(frames, 128);
    ::backtrace_symbols_fd(frames, count, fd);
    ::close(fd);
}

void onFatalSignal(int signal, siginfo_t *info, void *)
{
    // A second fault while writing, or on another thread, only ends the process.
    if (!entered.exchange(true))
        writeReport(signal, info);
    struct sigaction standard = {};
    standard.sa_handler = SIG_DFL;
    ::sigemptyset(&standard.sa_mask);
    ::sigaction(signal, &standard, nullptr);
    // Delivered when the handler returns: the process ends as it would have.
    ::raise(signal);
}

} // namespace

void QFBugReporter::installCrashReportWriter(const QString &name)
{
    const QString application = name.isEmpty() ? QCoreApplication::applicationName() : name;
    const QString folder = QFLocalPaths::logDirectory(true) + QStringLiteral("/DiagnosticReports");
    QDir().mkpath(folder);
    const auto copy = [](char *target, size_t size, const QString &text) {
        const QByteArray bytes = text.toUtf8();
        Buffer{target, target + size}.text(bytes.constData());
    };
    copy(reportPrefix, sizeof reportPrefix, folder + u'/' + application + u'_');
    copy(reportSuffix, sizeof reportSuffix, u'_' + QSysInfo::machineHostName().remove(u'/'));
    copy(reportHeader, sizeof reportHeader,
         QStringLiteral("Process:         %1 [%2]\nPath:            %3\nIdentifier:      %4\n"
                        "Version:         %5\nOS Version:      %6 (%7 %8)\n")
             .arg(application, QString::number(QCoreApplication::applicationPid()),
                  QCoreApplication::applicationFilePath(),
                  QCoreApplication::organizationDomain().isEmpty()
                      ? application
                      : QCoreApplication::organizationDomain() + u'.' + application,
                  QCoreApplication::applicationVersion(), QSysInfo::prettyProductName(),
                  QSysInfo::kernelType(), QSysInfo::kernelVersion()));
    utcOffsetSeconds = QDateTime::currentDateTime().offsetFromUtc();

    // backtrace() loads its unwinder on first use, which is not safe in a handler.
    void *frame[1];
    ::backtrace(frame, 1);

    stack_t stack = {};
    stack.ss_sp = alternateStack;
    stack.ss_size = sizeof alternateStack;
    ::sigaltstack(&stack, nullptr);
    struct sigaction action = {};
    action.sa_sigaction = &onFatalSignal;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK;
    ::sigemptyset(&action.sa_mask);
    for (const int signal : fatalSignals)
        ::sigaction(signal, &action, nullptr);
}
