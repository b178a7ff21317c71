// Not a test: a program that installs the crash report writer and then crashes the
// way its argument says ("fault" or "abort"), for the crash report tests.

#include "diagnostics/QFBugReporter.h"

#include <QCoreApplication>

#include <cstdlib>
#include <cstring>

using namespace Qt::StringLiterals;

namespace {

// A real fault even in the sanitizer builds, whose checks would stop it first.
[[gnu::noinline, gnu::no_sanitize("address", "undefined")]] void faultIn(volatile int *where)
{
    *where = 1;
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(u"Cuebridge"_s);
    QFBugReporter::installCrashReportWriter();
    if (argc > 1 && std::strcmp(argv[1], "abort") == 0)
        std::abort();
    faultIn(reinterpret_cast<volatile int *>(std::getenv("NO_SUCH_VARIABLE_HERE")));
    return 0;
}
