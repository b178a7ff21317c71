#include "TerminalOutput.h"

#include "import/MarkerExports.h"
#include "support/QFFileContents.h"
#include "support/QFFileManager.h"

#include <QFileInfo>

#include <cstdio>

namespace TerminalOutput {

void printError(const QString &text)
{
    std::fputs(QStringLiteral("cuebridge-import: %1\n").arg(text).toUtf8().constData(), stderr);
}

bool deliverFCPXResult(const QString &result, const QString &output)
{
    QFError error;
    bool copied = false;
    if (QFileInfo(result).isDir()) {
        copied = QFFileManager::copyFile(result, output, false);
    } else {
        const std::optional<QByteArray> bytes = QFFileContents::read(result, &error);
        copied = bytes && QFFileContents::writeAtomically(output, *bytes, &error);
    }
    if (!copied)
        printError(QStringLiteral("the result %1 could not be copied to %2%3")
                       .arg(result, output,
                            error.domain.isEmpty()
                                ? QString()
                                : QStringLiteral(": ") + error.localizedDescription()));
    return copied;
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
