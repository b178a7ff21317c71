#pragma once

#include "import/ImportHost.h"
#include "xml/XmlDocument.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <memory>

/// A target document that discovery parsed, handed to the import that follows so that
/// a large file is parsed once.
class ParsedTarget
{
public:
    ParsedTarget() = default;
    ParsedTarget(std::unique_ptr<XmlDocument> document, const QByteArray &bytes);

    /// The document, when it was parsed from exactly these bytes without any error or
    /// repair (a strict parse would then build the same tree); else nullptr and the
    /// caller parses. Taken once: the import changes it.
    std::unique_ptr<XmlDocument> take(const QByteArray &bytes);

private:
    std::unique_ptr<XmlDocument> m_document;
    QByteArray m_bytes;
};

/// Choosing an import target and finding what can be imported into it.
class TargetDiscovery
{
public:
    TargetDiscovery() = delete;

    /// The preference holding the path of the last target opened in any document.
    static inline const QString lastProjectKey = QStringLiteral("lastProject");

    /// Adopts a target: sets the kind from the extension (FCPX files and bundles, an
    /// XMEML file, or a project open in Final Cut Pro 7), remembers it as the last
    /// target and shows its path. isSequenceOnly is cleared only by an FCPX target.
    /// False (nothing changes) for a null path or one where nothing exists.
    static bool openFilename(ImportHost &host, const QString &path);

    /// What one discovery found.
    struct Result
    {
        QList<SequenceItem> items;
        /// The parsed target file, for the import.
        ParsedTarget parsed;
        /// The alert shown when the target could not be read; Failed then.
        ImportOutcome outcome;
    };

    /// The discovery, on a worker thread: empties and disables the sequence menu, then
    /// fills it with the sequences of an XMEML file or Final Cut Pro 7 project, or
    /// with the projects and event clips of an FCPXML file or bundle, and enables the
    /// controls that fit.
    static Result updateProject(ImportHost &host, const QString &path);

    /// The FCPXML file of a target: the path itself, or for a bundle the first entry
    /// (listed by name) ending in ".fcpxml". Null when there is none; the log line,
    /// the alert (also given in failure) and the host's controls are then taken care of.
    static QString fcpxmlDocumentPath(ImportHost &host, const QString &path,
                                      ImportOutcome *failure);

private:
    static void discoverFCP7(ImportHost &host, const QString &path, Result &result);
    static void discoverFCPX(ImportHost &host, const QString &path, Result &result);
};
