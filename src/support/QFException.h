#pragma once

#include <QString>

#include <exception>

/// Turns a caught exception into one log line.
class QFException
{
public:
    QFException() = delete;

    /// Logs "Exception in <method>. <name> - <reason>." and returns that text.
    static QString logException(const QString &name, const QString &reason, const char *method);
    /// The same for a C++ exception; its name is its type's.
    static QString logException(const std::exception &exception, const char *method);

    /// Whether the exception's name is the one an Apple Event time-out carries.
    static bool didTimeout(const QString &exceptionName);
};
