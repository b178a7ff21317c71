#pragma once

#include "import/ImportHost.h"

#include <QString>

/// Choosing an import target and finding what can be imported into it.
class TargetDiscovery
{
public:
    TargetDiscovery() = delete;

    /// The preference holding the path of the last target opened in any document.
    static inline const QString lastProjectKey = QStringLiteral("lastProject");

    /// Adopts a target: sets the kind from the extension (case-insensitive: "fcpxml"
    /// and "fcpxmld" are FCPX files, "xml" an XMEML file, anything else a project
    /// open in Final Cut Pro 7), remembers it as the last target and shows its path.
    /// isSequenceOnly is cleared only by an FCPX target. False (nothing changes) for
    /// a null path or one where nothing exists. The front end then runs
    /// updateProject on a worker thread.
    static bool openFilename(ImportHost &host, const QString &path);

    /// The discovery, on a worker thread: empties and disables the sequence menu, then
    /// fills it with the sequences of an XMEML file or Final Cut Pro 7 project, or
    /// with the projects and event clips of an FCPXML file or bundle, and enables the
    /// controls that fit.
    static void updateProject(ImportHost &host, const QString &path);

    /// The FCPXML file of a target: the path itself, or for a bundle the first entry
    /// (listed by name) ending in ".fcpxml". Null when there is none; the log
    /// line, the alert and the host's controls are then already taken care of.
    static QString fcpxmlDocumentPath(ImportHost &host, const QString &path);

private:
    static void discoverFCP7(ImportHost &host, const QString &path);
    static void discoverFCPX(ImportHost &host, const QString &path);
};
