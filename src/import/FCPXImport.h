#pragma once

#include "import/ImportOutcome.h"
#include "import/ImportSettings.h"
#include "import/ImportTarget.h"
#include "import/TargetDiscovery.h"

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

    /// One whole import, on a worker thread: its outcome, with the alert it ends with
    /// (one end is silent: a list of a header alone) and the report. The outcome's
    /// result is what was handed (or, without settings.handOffResult, made ready) to
    /// the editor: a new ".fcpxml" file, or a new ".fcpxmld" bundle for bundle input.
    /// A target file that discovery parsed is taken from parsed when it is unchanged.
    static ImportOutcome startProcessingFCPXWithSettings(const TargetKind &kind,
                                                         const QString &markerListPath,
                                                         const ImportSettings &settings,
                                                         ParsedTarget *parsed = nullptr);
};
