#pragma once

#include "import/ImportHost.h"
#include "import/ImportSettings.h"

#include <QString>

/// Importing a marker list into a Final Cut Pro X project or event clip: the markers
/// are placed on the clips of the storyline, and a renamed copy of the document is
/// written to the temporary folder and handed to the editor. The user's own file is
/// never written.
class FCPXImport
{
public:
    FCPXImport() = delete;

    /// The application the result is opened with.
    static inline const QString finalCutProBundleIdentifier = QStringLiteral("com.apple.FinalCut");

    /// One whole import, on a worker thread. The outcome is reported through the
    /// host's alerts; one end is silent (fewer than one marker in the list). Answers
    /// the result handed (or, without settings.handOffResult, ready) to the editor: a
    /// new ".fcpxml" file, or a new ".fcpxmld" bundle for bundle input. Null when
    /// nothing was written.
    static QString startProcessingFCPXWithSettings(ImportHost &host,
                                                   const ImportSettings &settings);
};
