#include "support/QFException.h"

#include "support/QFLog.h"

#include <cxxabi.h>

#include <cstdlib>
#include <typeinfo>

QString QFException::logException(const QString &name, const QString &reason, const char *method)
{
    const QString text = QFFormat::format(u"Exception in %s. %@ - %@.", method, name, reason);
    QFLog::appendLogAndPrint(u"%@", text);
    return text;
}

QString QFException::logException(const std::exception &exception, const char *method)
{
    int status = 0;
    char *demangled = abi::__cxa_demangle(typeid(exception).name(), nullptr, nullptr, &status);
    const QString name =
        QString::fromUtf8(status == 0 && demangled ? demangled : typeid(exception).name());
    std::free(demangled);
    return logException(name, QString::fromUtf8(exception.what()), method);
}

bool QFException::didTimeout(const QString &exceptionName)
{
    return exceptionName == QLatin1StringView("NSPortTimeoutException");
}
