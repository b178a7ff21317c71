#include "TargetDiscovery.h"

#include "fcp7link/QFAppleEvents.h"
#include "import/FCP7Import.h"
#include "support/QFFileContents.h"
#include "support/QFFileManager.h"
#include "support/QFLog.h"
#include "support/QFUserDefaults.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <memory>

TargetFormat targetFormatForPath(const QString &path)
{
    const QString extension = QFileInfo(path).suffix().toLower();
    if (extension == u"fcpxml")
        return TargetFormat::FCPXFile;
    if (extension == u"fcpxmld")
        return TargetFormat::FCPXBundle;
    return extension == u"xml" ? TargetFormat::XMEMLFile : TargetFormat::FCP7Project;
}

ParsedTarget::ParsedTarget(std::unique_ptr<XmlDocument> document,
                           const QFFileContents::Fingerprint &fingerprint)
    : m_document(std::move(document)), m_fingerprint(fingerprint)
{}

std::unique_ptr<XmlDocument> ParsedTarget::take(const QFFileContents::Fingerprint &fingerprint)
{
    std::unique_ptr<XmlDocument> document = std::move(m_document);
    if (!document || !document->parsedCleanly() || !(m_fingerprint == fingerprint))
        return nullptr;
    return document;
}

std::optional<ParsedTarget::ForImport> ParsedTarget::forImport(ParsedTarget *parsed,
                                                               const QString &path, QFError *error)
{
    ForImport read;
    if (parsed) {
        std::optional<QFFileContents::Fingerprint> now = QFFileContents::fingerprint(path, error);
        if (!now)
            return std::nullopt;
        read.fingerprint = *now;
        read.document = parsed->take(read.fingerprint);
        if (read.document)
            return read;
    }
    // Read as it parses: a large file is never held whole beside its tree.
    QFile file(path);
    if (!QFFileContents::openForReading(file, error))
        return std::nullopt;
    read.fingerprint = QFFileContents::Fingerprint();
    read.document =
        XmlDocument::fromDevice(file, XmlDocument::Parsing::Strict, nullptr, &read.fingerprint);
    if (file.error() != QFileDevice::NoError) {
        QFFileContents::failedReading(file, error);
        return std::nullopt;
    }
    return read;
}

bool TargetDiscovery::openFilename(TargetKind &kind, const QString &path)
{
    if (path.isNull() || !QFileInfo::exists(path))
        return false;
    const TargetFormat format = targetFormatForPath(path);
    if (format == TargetFormat::FCPXFile || format == TargetFormat::FCPXBundle) {
        kind.isFCPX = true;
        kind.isXMLFile = true;
        kind.isSequenceOnly = false;
    } else {
        kind.isFCPX = false;
        kind.isXMLFile = format == TargetFormat::XMEMLFile;
    }
    QFUserDefaults::standardUserDefaults().setObject(path, lastProjectKey);
    return true;
}

namespace {

/// The target's document as the repairing parse reads it, and the fingerprint of its
/// bytes; none, with the reason, for a file that cannot be read or is no XML at all.
std::unique_ptr<XmlDocument> parseTarget(const QString &path, QString *problem,
                                         QFFileContents::Fingerprint *fingerprint)
{
    QFile file(path);
    QFError readError;
    if (!QFFileContents::openForReading(file, &readError)) {
        if (problem->isEmpty())
            *problem =
                QStringLiteral("It cannot be read: %1").arg(readError.localizedDescription());
        return nullptr;
    }
    QString error;
    auto document =
        XmlDocument::fromDevice(file, XmlDocument::Parsing::Repairing, &error, fingerprint);
    if (!document && problem->isEmpty())
        *problem = fingerprint->size() == 0
                       ? QStringLiteral("The file is empty.")
                       : QStringLiteral("It is not an XML file: %1").arg(error);
    return document;
}

} // namespace

TargetDiscovery::Result TargetDiscovery::updateProject(const TargetKind &kind, const QString &path)
{
    Result result;
    if (path.isEmpty())
        return result;
    if (kind.isFCPX)
        discoverFCPX(path, result);
    else
        discoverFCP7(kind, path, result);
    return result;
}

void TargetDiscovery::discoverFCP7(const TargetKind &kind, const QString &path, Result &result)
{
    // Either document stays alive while the elements are read.
    QFFileContents::Fingerprint fingerprint;
    std::unique_ptr<XmlDocument> file;
    std::shared_ptr<XmlDocument> project;
    QList<XmlNode> sequences;
    QString problem;
    if (kind.isXMLFile) {
        file = parseTarget(path, &problem, &fingerprint);
        const XmlNode root = file ? file->rootElement() : XmlNode();
        QString error;
        sequences = root.nodesForXPath(QStringLiteral("(./sequence[1] | "
                                                      "./project[1]/children[1]/sequence | "
                                                      "./project[1]/children[1]/bin//sequence)"),
                                       &error);
        if (!error.isNull())
            QFLog::appendLogAndPrint(u"Error loading sequences: %@", error);
        result.sequenceOnly = root.nodesForXPath(QStringLiteral("./project")).isEmpty();
    } else if (!QFAppleEvents::isFCPRunning()) {
        problem = QStringLiteral("Final Cut Pro 7 is not running: a project can only be read "
                                 "through it. Open the project there, or export its sequence "
                                 "as XML and choose that file.");
    } else if (auto list = QFAppleEvents::sequencesInProject(path)) {
        project = list->document;
        sequences = list->sequences;
    }

    for (const XmlNode &sequence : std::as_const(sequences)) {
        const XmlNode name = FCP7Import::nodeForXPath(QStringLiteral("./name[1]"), sequence);
        const XmlNode uuid = FCP7Import::nodeForXPath(QStringLiteral("./uuid[1]"), sequence);
        // Exports of other editors carry no uuid: their sequences are found by path.
        if (name && (uuid || kind.isXMLFile))
            result.found.items.append({name.stringValue(),
                                       uuid ? uuid.stringValue() : sequence.xPath(),
                                       SequenceItem::Image::Sequence});
    }
    result.found.controlsEnabled = result.found.menuEnabled = !sequences.isEmpty();
    if (result.found.items.isEmpty())
        result.found.problem =
            problem.isEmpty() ? QStringLiteral("It lists no sequence to import into.") : problem;
    result.parsed = ParsedTarget(std::move(file), fingerprint);
}

QString TargetDiscovery::fcpxmlDocumentPath(const QString &path, ImportOutcome *failure)
{
    if (!QFFileManager::isPackageAtPath(path))
        return path;
    const auto giveUp = [failure](const QString &informativeText) {
        *failure = ImportOutcome::failed(QStringLiteral("Failed to open file"), informativeText,
                                         ImportOutcome::AlertParent::None);
        return QString();
    };
    const QDir bundle(path);
    if (!bundle.isReadable()) {
        const QString reason =
            QStringLiteral("The folder “%1” couldn’t be opened because you don’t have "
                           "permission to view its contents.")
                .arg(QFileInfo(path).fileName());
        QFLog::appendLogAndPrint(u"Failed to open file %@: %@", path, reason);
        return giveUp(reason);
    }
    // Listed by name: the order of the folder itself differs between file systems,
    // and discovery and import must take the same entry on every machine.
    const QStringList entries =
        bundle.entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name);
    for (const QString &entry : entries) {
        if (entry.endsWith(u".fcpxml"))
            return bundle.filePath(entry);
    }
    QFLog::appendLogAndPrint(u"Could not locate any FCPXML files inside bundle %@", path);
    return giveUp(QStringLiteral("Could not locate any XML files inside bundle."));
}

void TargetDiscovery::discoverFCPX(const QString &path, Result &result)
{
    DiscoveredItems &found = result.found;
    found.controlsEnabled = true;
    found.todoEnabled = true;
    const QString documentPath = fcpxmlDocumentPath(path, &found.outcome);
    if (documentPath.isNull()) {
        found.menuEnabled = true;
        found.problem = found.outcome.informativeText;
        return;
    }
    QFFileContents::Fingerprint fingerprint;
    std::unique_ptr<XmlDocument> document = parseTarget(documentPath, &found.problem, &fingerprint);
    if (!document)
        return; // nothing to list: the menu stays disabled
    const XmlNode root = document->rootElement();

    QString error;
    const QList<XmlNode> sequences = root.nodesForXPath(
        QStringLiteral("(./project[1]/sequence[1] | ./library[1]/event/project/sequence[1])"),
        &error);
    if (!error.isNull()) {
        QFLog::appendLogAndPrint(u"Error getting project data: %@", error);
        return;
    }
    for (const XmlNode &sequence : sequences) {
        if (const XmlNode name = FCP7Import::nodeForXPath(QStringLiteral("../@name[1]"), sequence))
            found.items.append({name.stringValue(), sequence.xPath()});
    }
    const QList<XmlNode> clips =
        root.nodesForXPath(QStringLiteral("(./project/clip | ./library[1]/event/project/clip)"));
    for (const XmlNode &clip : clips) {
        if (const XmlNode name = FCP7Import::nodeForXPath(QStringLiteral("./@name[1]"), clip))
            found.items.append({name.stringValue(), clip.xPath(), SequenceItem::Image::FCPXEvent});
    }
    found.menuEnabled = !sequences.isEmpty() || !clips.isEmpty();
    if (!found.menuEnabled)
        found.problem = QStringLiteral("It lists no project or event clip to import into.");
    result.parsed = ParsedTarget(std::move(document), fingerprint);
}
