#include "TerminalOutput.h"

#include "import/MarkerExports.h"

#include <QFileInfo>

#include <cstdio>

namespace TerminalOutput {

void printError(const QString &text)
{
    std::fputs(QStringLiteral("cuebridge-import: %1\n").arg(text).toUtf8().constData(), stderr);
}

int printMarkers(const QString &target)
{
    const std::optional<QString> list = MarkerExports::markerListOfFCPXDocument(target);
    if (!list) {
        printError(QStringLiteral("%1 holds no marker on its main storyline").arg(target));
        return failureStatus;
    }
    std::fputs(list->toUtf8().constData(), stdout);
    return 0;
}

} // namespace TerminalOutput
