#pragma once

#include "import/ImportOutcome.h"
#include "import/ImportTarget.h"
#include "xml/XmlDocument.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <memory>
#include <optional>

/// A target document that discovery parsed, handed to the import that follows so that
/// a large file is parsed once.
class ParsedTarget
{
public:
    ParsedTarget() = default;
    ParsedTarget(std::unique_ptr<XmlDocument> document,
                 const QFFileContents::Fingerprint &fingerprint);

    /// The document, when it was parsed from bytes of this fingerprint without any
    /// error or repair (a strict parse would then build the same tree); else nullptr and
    /// the caller parses. Taken once: the import changes it.
    std::unique_ptr<XmlDocument> take(const QFFileContents::Fingerprint &fingerprint);

    /// A target file's document as an import reads it, and the fingerprint of the bytes
    /// it came from.
    struct ForImport
    {
        std::unique_ptr<XmlDocument> document; ///< nullptr: not well-formed
        QFFileContents::Fingerprint fingerprint;
    };
    /// The document of the file for an import: the one discovery parsed (parsed may be
    /// null) while the file holds those very bytes, else a strict parse of the file.
    /// Nothing, with error set, when the file cannot be read.
    static std::optional<ForImport> forImport(ParsedTarget *parsed, const QString &path,
                                              QFError *error);

private:
    std::unique_ptr<XmlDocument> m_document;
    QFFileContents::Fingerprint m_fingerprint;
};

/// What a discovery found, as the front ends show it.
struct DiscoveredItems
{
    QList<SequenceItem> items;
    /// The alert shown when the target could not be read; Failed then.
    ImportOutcome outcome;
    /// Whether the import controls, the sequence menu and the to-do box are enabled.
    bool controlsEnabled = false;
    bool menuEnabled = false;
    bool todoEnabled = false;
    /// Why the target offers nothing to import into, in words shown beside it; empty
    /// when it lists items.
    QString problem;
};

/// Choosing an import target and finding what can be imported into it.
class TargetDiscovery
{
public:
    TargetDiscovery() = delete;

    /// The preference holding the path of the last target opened in any document.
    static inline const QString lastProjectKey = QStringLiteral("lastProject");

    /// Adopts a target: sets the kind from the extension (FCPX files and bundles, an
    /// XMEML file, or a project open in Final Cut Pro 7) and remembers it as the last
    /// target. isSequenceOnly is cleared only by an FCPX target. False (nothing
    /// changes) for a null path or one where nothing exists.
    static bool openFilename(TargetKind &kind, const QString &path);

    /// What one discovery found.
    struct Result
    {
        DiscoveredItems found;
        /// The parsed target file, for the import.
        ParsedTarget parsed;
        /// An XMEML file holding a bare sequence and no project.
        bool sequenceOnly = false;
    };

    /// The discovery, on a worker thread: the sequences of an XMEML file or Final Cut
    /// Pro 7 project, or the projects and event clips of every event of an FCPXML file
    /// or bundle, and the controls that fit them.
    static Result updateProject(const TargetKind &kind, const QString &path);

    /// The FCPXML file of a target: the path itself, or for a bundle the first entry
    /// (listed by name) ending in ".fcpxml". Null when there is none, with the logged
    /// reason's alert in failure.
    static QString fcpxmlDocumentPath(const QString &path, ImportOutcome *failure);

private:
    static void discoverFCP7(const TargetKind &kind, const QString &path, Result &result);
    static void discoverFCPX(const QString &path, Result &result);
};
