#include "SimulatedFinalCutPro.h"

SimulatedFinalCutPro::SimulatedFinalCutPro()
{
    AETransport::setTransportForTesting(this);
    QFWorkspace::setSharedForTesting(this);
}

SimulatedFinalCutPro::~SimulatedFinalCutPro()
{
    AETransport::setTransportForTesting(nullptr);
    QFWorkspace::setSharedForTesting(nullptr);
}

QList<FourCharCode> SimulatedFinalCutPro::eventIDs() const
{
    QList<FourCharCode> ids;
    for (const AppleEvent &event : events)
        ids << event.eventID;
    return ids;
}

bool SimulatedFinalCutPro::isApplicationRunning(const QString &bundleIdentifier)
{
    return running && bundleIdentifier == u"com.apple.FinalCutPro";
}

QString SimulatedFinalCutPro::pathForApplication(const QString &)
{
    return applicationPath;
}

bool SimulatedFinalCutPro::openFile(const QString &path, const QString &, LaunchOptions options)
{
    openRequests.append({path, options});
    if (!running) {
        running = true; // launching: the project opens once the launch is over
        m_launching << path;
    } else if (!openProjects.contains(path) && !m_launching.contains(path)) {
        openProjects << path;
    }
    return true;
}

AESendResult SimulatedFinalCutPro::send(const AppleEvent &event)
{
    events << event;
    if (fault) {
        if (std::optional<AESendResult> result = fault(event))
            return *result;
    }
    if (event.eventID != fourCharCode("fcLP")) {
        for (const QString &path : std::as_const(m_launching))
            if (!openProjects.contains(path))
                openProjects << path;
        m_launching.clear();
    }

    AESendResult result;
    QList<std::pair<FourCharCode, AEDescriptor>> reply;
    const std::optional<AEDescriptor> file = event.parameter(fourCharCode("fcpP"));
    const QString path =
        file ? AEFileReference::toPath(file->data()).value_or(QString()) : QString();
    const bool open = openProjects.contains(path);
    const Project project = projects.value(path);
    auto answerXml = [&reply](const QByteArray &xml) {
        reply.append({fourCharCode("xmlD"), AEDescriptor(AEType::utf8Text, xml)});
    };

    switch (event.eventID) {
    case fourCharCode("fcLP"): {
        QList<AEDescriptor> records;
        for (const QString &openPath : std::as_const(openProjects))
            records << AEDescriptor::record(
                {{fourCharCode("fcPf"),
                  AEDescriptor(AEType::fileSystemReference,
                               AEFileReference::fromPath(openPath).value_or(
                                   QByteArray(AEFileReference::size, 'x')))}});
        reply.append({fourCharCode("fcOP"), AEDescriptor::list(records)});
        break;
    }
    case fourCharCode("eXML"):
        if (open)
            answerXml(project.xml);
        break;
    case fourCharCode("eTCX"):
        if (open)
            answerXml(project.tableOfContents);
        break;
    case fourCharCode("gXML"): {
        const QString uuid = event.parameter(fourCharCode("fcIU"))->text().value_or(QString());
        if (open && project.items.contains(uuid))
            answerXml(project.items.value(uuid));
        break;
    }
    case fourCharCode("iXML"):
        imported << event.parameter(fourCharCode("xmlD"))->data();
        break;
    case fourCharCode("fcOI"):
        openedItems << event.parameter(fourCharCode("fcIU"))->text().value_or(QString());
        break;
    case fourCharCode("cfcP"):
        openProjects.removeAll(path);
        break;
    default:
        break;
    }
    result.reply = AEDescriptor::record(reply);
    return result;
}
