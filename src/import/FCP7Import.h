#pragma once

#include "import/ImportOutcome.h"
#include "import/ImportSettings.h"
#include "import/ImportTarget.h"
#include "import/TargetDiscovery.h"
#include "xml/XmlNode.h"

#include <QString>

/// Importing a marker list into a Final Cut Pro 7 sequence: from an XMEML file, which
/// is rewritten, or from a project open in the editor, which gets the changed
/// sequence back in a new "Imported Markers" bin.
class FCP7Import
{
public:
    FCP7Import() = delete;

    /// One whole import of the marker list into the target of the settings, on a
    /// worker thread: its outcome, with the alert it ends with (two ends are silent: no
    /// uuid chosen, a list of a header alone) and the report of every line. A target
    /// file that discovery parsed is taken from parsed when the file is unchanged.
    static ImportOutcome startProcessingWithSettings(const TargetKind &kind,
                                                     const QString &markerListPath,
                                                     const ImportSettings &settings,
                                                     ParsedTarget *parsed = nullptr);

    /// Gives the sequence the name "<old id>-Cuebridge": the id attribute becomes it
    /// and is then the element's only attribute, and the first name child takes it
    /// too. Nil (nothing changed) when the element has no id.
    static XmlNode renameSequence(const XmlNode &sequence);

    /// The first node the query finds under the node (query errors ignored), or nil.
    static XmlNode nodeForXPath(const QString &query, const XmlNode &parentNode);
    /// The text of that node; null when there is none.
    static QString valueForXPath(const QString &query, const XmlNode &parentNode);

    /// The marker element's text for one record's values; name and comment already
    /// escaped.
    static QString markerElementText(const QString &name, const QString &comment,
                                     const QString &colorName, qint64 in, qint64 out);
};
