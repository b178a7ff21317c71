#include "TargetDiscovery.h"

#include "diagnostics/QFLog.h"
#include "fcp7link/QFAppleEvents.h"
#include "import/FCP7Import.h"
#include "support/QFFileContents.h"
#include "support/QFFileManager.h"
#include "support/QFUserDefaults.h"

#include <QDir>
#include <QFileInfo>

#include <memory>

bool TargetDiscovery::openFilename(ImportHost &host, const QString &path)
{
    if (path.isNull() || !QFileInfo::exists(path))
        return false;
    const QString extension = QFileInfo(path).suffix().toLower();
    TargetKind &kind = host.targetKind();
    if (extension == u"fcpxml" || extension == u"fcpxmld") {
        kind.isFCPX = true;
        kind.isXMLFile = true;
        kind.isSequenceOnly = false;
    } else {
        kind.isFCPX = false;
        kind.isXMLFile = extension == u"xml";
    }
    QFUserDefaults::standardUserDefaults().setObject(path, lastProjectKey);
    host.setProjectPath(path);
    return true;
}

void TargetDiscovery::updateProject(ImportHost &host, const QString &path)
{
    host.disableUI();
    if (path.isEmpty())
        return;
    if (host.targetKind().isFCPX)
        discoverFCPX(host, path);
    else
        discoverFCP7(host, path);
}

void TargetDiscovery::discoverFCP7(ImportHost &host, const QString &path)
{
    TargetKind &kind = host.targetKind();
    host.setLoadSpinnerRunning(true);

    // Either document stays alive while the elements are read.
    QByteArray bytes;
    std::unique_ptr<XmlDocument> file;
    std::shared_ptr<XmlDocument> project;
    QList<XmlNode> sequences;
    if (kind.isXMLFile) {
        bytes = QFFileContents::read(path).value_or(QByteArray());
        file = XmlDocument::fromBytes(bytes, XmlDocument::Parsing::Repairing);
        const XmlNode root = file ? file->rootElement() : XmlNode();
        QString error;
        sequences = root.nodesForXPath(QStringLiteral("(./sequence[1] | "
                                                      "./project[1]/children[1]/sequence | "
                                                      "./project[1]/children[1]/bin//sequence)"),
                                       &error);
        if (!error.isNull())
            QFLog::appendLogAndPrint(u"Error loading sequences: %@", error);
        if (root.nodesForXPath(QStringLiteral("./project")).isEmpty())
            kind.isSequenceOnly = true;
    } else if (auto list = QFAppleEvents::sequencesInProject(path)) {
        project = list->document;
        sequences = list->sequences;
    }

    for (const XmlNode &sequence : std::as_const(sequences)) {
        const XmlNode name = FCP7Import::nodeForXPath(QStringLiteral("./name[1]"), sequence);
        const XmlNode uuid = FCP7Import::nodeForXPath(QStringLiteral("./uuid[1]"), sequence);
        if (name && uuid)
            host.addItemToSequencePopUp(
                {name.stringValue(), uuid.stringValue(), SequenceItem::Image::Sequence});
    }
    if (!sequences.isEmpty())
        host.enableUI(true);
    host.setToDoMarkerCheckEnabled(false);
    host.setLoadSpinnerRunning(false);
    XmlDocument::keepForReuse(std::move(file), bytes); // the import reads the same file
}

QString TargetDiscovery::fcpxmlDocumentPath(ImportHost &host, const QString &path)
{
    if (!QFFileManager::isPackageAtPath(path))
        return path;
    const auto giveUp = [&host](const QString &informativeText) {
        host.enableUI(true);
        host.setLoadSpinnerRunning(false);
        host.showAlert(QStringLiteral("Failed to open file"), informativeText,
                       ImportHost::AlertParent::None);
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

void TargetDiscovery::discoverFCPX(ImportHost &host, const QString &path)
{
    host.targetKind().isEvent = false;
    host.enableUI(false);
    host.setLoadSpinnerRunning(true);

    const QString documentPath = fcpxmlDocumentPath(host, path);
    if (documentPath.isNull())
        return;
    const QByteArray bytes = QFFileContents::read(documentPath).value_or(QByteArray());
    std::unique_ptr<XmlDocument> document =
        XmlDocument::fromBytes(bytes, XmlDocument::Parsing::Repairing);
    if (!document)
        return; // left as the editor's own tools leave it: spinner running, menu disabled
    const XmlNode root = document->rootElement();

    QString error;
    const QList<XmlNode> sequences = root.nodesForXPath(
        QStringLiteral("(./project[1]/sequence[1] | ./library[1]/event[1]/project/sequence[1])"),
        &error);
    if (!error.isNull()) {
        QFLog::appendLogAndPrint(u"Error getting project data: %@", error);
        return;
    }
    for (const XmlNode &sequence : sequences) {
        if (const XmlNode name = FCP7Import::nodeForXPath(QStringLiteral("../@name[1]"), sequence))
            host.addItemToSequencePopUp({name.stringValue(), sequence.xPath()});
    }
    if (!sequences.isEmpty())
        host.enableUI(true);

    const QList<XmlNode> clips =
        root.nodesForXPath(QStringLiteral("(./project/clip | ./library[1]/event[1]/project/clip)"));
    for (const XmlNode &clip : clips) {
        if (const XmlNode name = FCP7Import::nodeForXPath(QStringLiteral("./@name[1]"), clip))
            host.addItemToSequencePopUp(
                {name.stringValue(), clip.xPath(), SequenceItem::Image::FCPXEvent});
    }
    if (!clips.isEmpty())
        host.enableUI(true);
    host.setToDoMarkerCheckEnabled(true);
    host.setLoadSpinnerRunning(false);
    XmlDocument::keepForReuse(std::move(document), bytes); // the import reads the same file
}
