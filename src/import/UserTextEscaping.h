#pragma once

#include <QString>

/// Escaping of what the user typed (marker names and comments) before it goes into
/// an XML element template.
namespace UserTextEscaping {

/// The preference that trims blanks from the ends of escaped text: an integer,
/// on when it equals 1.
inline const QString stripWhitespaceKey = QStringLiteral("stripWhitespace");

/// Registers the import's default preferences (stripWhitespace = 1) with the
/// application's defaults.
void registerDefaults();
/// Whether the preference asks for trimming.
bool stripWhitespaceEnabled();

/// Typographic quotes made plain, then & " ' < > escaped (an "&amp;" already typed is
/// kept, other entities are escaped again), carriage returns and line feeds removed,
/// and, when the preference says so, tabs and spaces trimmed from both ends.
QString escapeUserInputForXML(const QString &text);
QString escapeUserInputForXML(const QString &text, bool stripWhitespace);

} // namespace UserTextEscaping
