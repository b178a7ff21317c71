#pragma once

#include <QString>

/// What cuebridge-import writes besides the import's own lines.
namespace TerminalOutput {

constexpr int usageStatus = 64;
constexpr int partlyStatus = 1;
constexpr int failureStatus = 2;
constexpr int nothingStatus = 3;

/// "cuebridge-import: text" on standard error.
void printError(const QString &text);
/// The markers of an FCPX target as a marker list on standard output; the exit status.
int printMarkers(const QString &target);

} // namespace TerminalOutput
