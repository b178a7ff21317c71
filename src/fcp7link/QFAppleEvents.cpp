// The event exchanges with Final Cut Pro 7.

#include "fcp7link/QFAppleEvents.h"

#include "FCP7Console.h"
#include "fcp7link/AETransport.h"
#include "support/QFException.h"
#include "support/QFFormat.h"
#include "support/QFLog.h"
#include "support/QFWorkspace.h"

#include <QHash>

Q_LOGGING_CATEGORY(fcp7Console, "com.quillfen.fcp7link")

namespace {

constexpr FourCharCode editorSignature = fourCharCode("KeyG");
constexpr FourCharCode projectKeyword = fourCharCode("fcpP");
constexpr FourCharCode xmlKeyword = fourCharCode("xmlD");
constexpr FourCharCode itemKeyword = fourCharCode("fcIU");
constexpr FourCharCode destinationKeyword = fourCharCode("fcpU");
constexpr FourCharCode overwriteKeyword = fourCharCode("fsOF");
constexpr FourCharCode closeFlagKeyword = fourCharCode("fcCF");
constexpr FourCharCode openProjectsKeyword = fourCharCode("fcOP");
constexpr FourCharCode projectFileKeyword = fourCharCode("fcPf");
constexpr qint32 importTimeoutTicks = 36000; // ten minutes: the editor imports before it answers

const QString sourceProjectFailed =
    QStringLiteral("Error adding source project file to AppleEvent query");
const QString destinationFailed =
    QStringLiteral("Error adding destination project file to AppleEvent query");
const QString overwriteFailed = QStringLiteral("Error adding overwrite flag to AppleEvent query");

/// How an operation words the failures of its event.
struct Wording
{
    QHash<FourCharCode, QString> parameters; ///< per keyword; "%ld" takes the status
    bool withStatus = false;                 ///< "Error sending AppleEvent: %ld" and the like
};

const Wording projectAndItem{
    {{projectKeyword, sourceProjectFailed}, {itemKeyword, destinationFailed}}};
const Wording saveAndClose{{{projectKeyword, sourceProjectFailed},
                            {destinationKeyword, destinationFailed},
                            {overwriteKeyword, overwriteFailed},
                            {closeFlagKeyword, overwriteFailed}}};
const Wording import{{{projectKeyword, QStringLiteral("Error creating project FSRef: %ld")},
                      {xmlKeyword, QStringLiteral("Error adding XML data to event: %ld")}},
                     true};

/// The operation's words for the step of the exchange that failed.
QString failureMessage(const AESendResult &result, const Wording &wording)
{
    auto worded = [&wording](const char *plain, const char *withStatus) {
        return QString::fromLatin1(wording.withStatus ? withStatus : plain);
    };
    switch (result.stage) {
    case AESendStage::CreateTarget:
        return worded("Error creating app description", "Error creating AEDescription: %ld");
    case AESendStage::PutParameter:
        if (wording.parameters.contains(result.failedParameter))
            return wording.parameters.value(result.failedParameter);
        [[fallthrough]];
    case AESendStage::CreateEvent:
        return worded("Error creating AppleEvent", "Error creating AppleEvent: %ld");
    case AESendStage::Send:
    case AESendStage::Sent:
        break;
    }
    return worded("Error sending AppleEvent", "Error sending AppleEvent: %ld");
}

void report(const QString &message, qint32 status)
{
    consoleMessage(QFFormat::format(message, status));
}

/// Builds the event (the project's file reference first, left out when the path
/// names no file), sends it and answers the reply; nothing after a logged failure.
std::optional<AEDescriptor> sendEvent(FourCharCode eventID, const QString &projectPath,
                                      QList<std::pair<FourCharCode, AEDescriptor>> parameters,
                                      const Wording &wording,
                                      qint32 timeoutTicks = AppleEvent::defaultTimeout)
{
    AppleEvent event;
    event.eventClass = editorSignature;
    event.eventID = eventID;
    event.target = AppleEvent::applicationTarget(editorSignature);
    event.timeoutTicks = timeoutTicks;
    if (!projectPath.isNull()) {
        if (const std::optional<QByteArray> reference = AEFileReference::fromPath(projectPath))
            event.parameters.append(
                {projectKeyword, AEDescriptor(AEType::fileSystemReference, *reference)});
    }
    event.parameters.append(parameters);

    const AESendResult result = AETransport::current().send(event);
    if (result.stage == AESendStage::Sent)
        return result.reply;
    report(failureMessage(result, wording), result.status);
    return std::nullopt;
}

/// The XML text of a reply, one trailing zero byte dropped.
std::optional<QByteArray> readXMLReply(const AEDescriptor &reply)
{
    const std::optional<AEDescriptor> xml = reply.field(xmlKeyword, AEType::utf8Text);
    if (!xml) {
        consoleMessage(QStringLiteral("Error getting XML information"));
        return std::nullopt;
    }
    const QByteArray data = QFAppleEvents::formatData(xml->data());
    if (data.isNull()) {
        consoleMessage(QStringLiteral(
            "Unable to communicate with Final Cut Pro. Please make sure it is running."));
        return std::nullopt;
    }
    return data;
}

void openInEditor(const QString &projectPath, QFWorkspace::LaunchOptions options)
{
    QFWorkspace::shared().openFile(projectPath, QFAppleEvents::finalCutProBundleIdentifier,
                                   options);
}

/// Launches the editor and opens the project as allowed. Answers whether the project
/// was open before the call, or nothing when the operation has to stop.
std::optional<bool> makeSureProjectIsOpen(const QString &projectPath, bool launchFCP)
{
    if (!QFAppleEvents::isFCPRunning()) {
        if (!launchFCP)
            return std::nullopt;
        openInEditor(projectPath, QFWorkspace::Asynchronous);
    }
    // Just after a launch the list is empty, so the project is asked to open twice.
    const std::optional<QStringList> open = QFAppleEvents::listOfOpenFCPProjects();
    const bool wasOpen = open && open->contains(projectPath);
    if (!wasOpen) {
        if (!launchFCP) {
            consoleMessage(QStringLiteral("Error: project is not open."));
            return std::nullopt;
        }
        openInEditor(projectPath, QFWorkspace::Asynchronous);
    }
    return wasOpen;
}

/// Runs an operation, logging any exception with the method's full name.
template<typename Result, typename Body>
Result guarded(const char *method, Result failure, Body body)
{
    try {
        return body();
    } catch (const std::exception &exception) {
        QFException::logException(exception, method);
    }
    return failure;
}

QString decoded(const std::optional<QByteArray> &data)
{
    return data ? QString::fromUtf8(*data) : QString();
}

/// Asks for XML about the project (opening it when allowed) and closes the project
/// again when asked to and it was not open before.
std::optional<QByteArray> fetchXML(FourCharCode eventID, const QString &projectPath,
                                   QList<std::pair<FourCharCode, AEDescriptor>> parameters,
                                   bool launchFCP, bool closeProject)
{
    const std::optional<bool> wasOpen = makeSureProjectIsOpen(projectPath, launchFCP);
    if (!wasOpen)
        return std::nullopt;
    const std::optional<AEDescriptor> reply =
        sendEvent(eventID, projectPath, std::move(parameters), projectAndItem);
    if (!reply)
        return std::nullopt;
    std::optional<QByteArray> data = readXMLReply(*reply);
    if (data && closeProject && !*wasOpen)
        QFAppleEvents::closeProject(projectPath, true);
    return data;
}

} // namespace

std::optional<QStringList> QFAppleEvents::listOfOpenFCPProjects()
{
    return guarded("+[QFAppleEvents listOfOpenFCPProjects]", std::optional<QStringList>(),
                   []() -> std::optional<QStringList> {
                       if (!isFCPRunning()) {
                           consoleMessage(QStringLiteral("Error: Final Cut Pro is not running."));
                           return std::nullopt;
                       }
                       QStringList paths;
                       const std::optional<AEDescriptor> reply =
                           sendEvent(fourCharCode("fcLP"), QString(), {}, projectAndItem);
                       const std::optional<AEDescriptor> list =
                           reply ? reply->field(openProjectsKeyword, AEType::list) : std::nullopt;
                       if (!list)
                           return paths;
                       for (const AEDescriptor &item : list->items()) {
                           if (item.type() != AEType::record)
                               break;
                           const std::optional<AEDescriptor> file =
                               item.field(projectFileKeyword, AEType::fileSystemReference);
                           const std::optional<QString> path =
                               file ? AEFileReference::toPath(file->data()) : std::nullopt;
                           if (!path)
                               break;
                           paths << *path;
                       }
                       return paths;
                   });
}

std::optional<QByteArray> QFAppleEvents::getProjectXMLData(const QString &projectPath,
                                                           bool launchFCP, bool closeProject)
{
    return guarded(
        "+[QFAppleEvents getProjectXMLData:launchFCP:closeProject:]", std::optional<QByteArray>(),
        [&] { return fetchXML(fourCharCode("eXML"), projectPath, {}, launchFCP, closeProject); });
}

QString QFAppleEvents::getProjectXML(const QString &projectPath, bool launchFCP, bool closeProject)
{
    return decoded(getProjectXMLData(projectPath, launchFCP, closeProject));
}

std::optional<QByteArray> QFAppleEvents::getItemXMLData(const QString &uuid,
                                                        const QString &projectPath, bool launchFCP,
                                                        bool closeProject)
{
    return guarded("+[QFAppleEvents getItemXMLData:forProject:launchFCP:closeProject:]",
                   std::optional<QByteArray>(), [&] {
                       return fetchXML(fourCharCode("gXML"), projectPath,
                                       {{itemKeyword, AEDescriptor::utf8Text(uuid)}}, launchFCP,
                                       closeProject);
                   });
}

QString QFAppleEvents::getItemXML(const QString &uuid, const QString &projectPath, bool launchFCP,
                                  bool /*closeProject*/)
{
    return decoded(getItemXMLData(uuid, projectPath, launchFCP));
}

std::optional<QByteArray> QFAppleEvents::getTOCData(const QString &projectPath, bool launchFCP)
{
    return guarded("+[QFAppleEvents getTOCData:launchFCP:]", std::optional<QByteArray>(),
                   [&]() -> std::optional<QByteArray> {
                       if (!isFCPRunning()) {
                           if (!launchFCP)
                               return std::nullopt;
                           openInEditor(projectPath, QFWorkspace::Asynchronous);
                       }
                       const std::optional<QStringList> open = listOfOpenFCPProjects();
                       if (!(open && open->contains(projectPath))) {
                           if (!launchFCP)
                               return std::nullopt;
                           openInEditor(projectPath, QFWorkspace::WithoutActivation);
                       }
                       const std::optional<AEDescriptor> reply =
                           sendEvent(fourCharCode("eTCX"), projectPath, {}, projectAndItem);
                       return reply ? readXMLReply(*reply) : std::nullopt;
                   });
}

QString QFAppleEvents::getTOC(const QString &projectPath, bool launchFCP)
{
    return decoded(getTOCData(projectPath, launchFCP));
}

bool QFAppleEvents::sendXMLToFCP(const QString &xml, const QString &projectPath)
{
    return guarded("+[QFAppleEvents sendXMLToFCP:projectPath:]", false, [&] {
        const QString escaped = escapeCharactersInXMLString(xml);
        return sendEvent(fourCharCode("iXML"), projectPath,
                         {{xmlKeyword, AEDescriptor::utf8Text(escaped)}}, import,
                         importTimeoutTicks)
            .has_value();
    });
}

void QFAppleEvents::openItem(const QString &uuid, const QString &projectPath, bool launchFCP)
{
    guarded("+[QFAppleEvents openItem:forProject:launchFCP:]", false, [&] {
        if (!makeSureProjectIsOpen(projectPath, launchFCP))
            return false;
        return sendEvent(fourCharCode("fcOI"), projectPath,
                         {{itemKeyword, AEDescriptor::utf8Text(uuid)}}, projectAndItem)
            .has_value();
    });
}

bool QFAppleEvents::saveProject(const QString &projectPath)
{
    return guarded("+[QFAppleEvents saveProject:]", false, [&] {
        if (!isFCPRunning()) {
            consoleMessage(QStringLiteral("Error: Final Cut Pro is not running."));
            return false;
        }
        return sendEvent(fourCharCode("sfcP"), projectPath,
                         {{destinationKeyword, AEDescriptor::fileURL(projectPath)},
                          {overwriteKeyword, AEDescriptor::boolean(true)}},
                         saveAndClose)
            .has_value();
    });
}

void QFAppleEvents::closeProject(const QString &projectPath, bool saveChanges)
{
    guarded("+[QFAppleEvents closeProject:saveChanges:]", false, [&] {
        if (!isFCPRunning()) {
            consoleMessage(QStringLiteral("Error: Final Cut Pro is not running."));
            return false;
        }
        return sendEvent(fourCharCode("cfcP"), projectPath,
                         {{destinationKeyword, AEDescriptor::fileURL(projectPath)},
                          {closeFlagKeyword, AEDescriptor::longInteger(saveChanges ? 0 : 1)}},
                         saveAndClose)
            .has_value();
    });
}
