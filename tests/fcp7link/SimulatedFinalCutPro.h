#pragma once

// A stand-in for Final Cut Pro 7 behind the link's transport and workspace: it keeps
// projects with XMEML items, opens them when asked, answers the editor's events and
// records everything it was sent. Faults can be set up for the next event.

#include "fcp7link/AETransport.h"
#include "support/QFWorkspace.h"

#include <QMap>
#include <QStringList>

#include <functional>

class SimulatedFinalCutPro : public AETransport, public QFWorkspace
{
public:
    struct Project
    {
        QByteArray xml;                  ///< answer to 'eXML'
        QByteArray tableOfContents;      ///< answer to 'eTCX'
        QMap<QString, QByteArray> items; ///< answers to 'gXML' by uuid
    };

    SimulatedFinalCutPro();  ///< installs itself as transport and workspace
    ~SimulatedFinalCutPro(); ///< and uninstalls itself

    // The editor's state.
    bool running = true;
    QMap<QString, Project> projects; ///< by path (files that exist)
    QStringList openProjects;
    QString applicationPath; ///< what pathForApplication answers
    QList<QByteArray> imported;
    QStringList openedItems;

    // What it saw.
    QList<AppleEvent> events;
    QList<std::pair<QString, LaunchOptions>> openRequests;

    // Faults for the next events: a failure instead of sending, a reply of one's own,
    // or an exception.
    std::function<std::optional<AESendResult>(const AppleEvent &)> fault;

    AESendResult send(const AppleEvent &event) override;
    bool isApplicationRunning(const QString &bundleIdentifier) override;
    QString pathForApplication(const QString &bundleIdentifier) override;
    bool openFile(const QString &path, const QString &bundleIdentifier,
                  LaunchOptions options) override;

    QList<FourCharCode> eventIDs() const;

private:
    QStringList m_launching; ///< open once the editor has finished launching
};
