#pragma once

#include <QLoggingCategory>
#include <QString>

/// The system console of the link's messages: Qt's message output, which is the
/// unified log on macOS and standard error or the journal on Linux.
Q_DECLARE_LOGGING_CATEGORY(fcp7Console)

inline void consoleMessage(const QString &message)
{
    qCWarning(fcp7Console).noquote() << message;
}
