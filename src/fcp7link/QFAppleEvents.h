#pragma once

#include "xml/XmlDocument.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

#include <memory>
#include <optional>

/// The sequences of a project: `sequence` elements that stay valid as long as the
/// list is held.
struct QFSequenceList
{
    std::shared_ptr<XmlDocument> document;
    QList<XmlNode> sequences;
};

/// The link to a running Final Cut Pro 7: one Apple Event of the editor's suite per
/// operation, sent and answered synchronously on the calling thread (never the main
/// thread). Messages go to the system console, exception reports to the log. A null
/// result (nullopt, null string) means the exchange failed.
class QFAppleEvents
{
public:
    QFAppleEvents() = delete;

    static inline const QString finalCutProBundleIdentifier =
        QStringLiteral("com.apple.FinalCutPro");

    /// Paths of the projects open in the editor, in its order; nothing when it does
    /// not run.
    static std::optional<QStringList> listOfOpenFCPProjects();

    static std::optional<QByteArray> getProjectXMLData(const QString &projectPath,
                                                       bool launchFCP = false,
                                                       bool closeProject = false);
    static QString getProjectXML(const QString &projectPath, bool launchFCP = false,
                                 bool closeProject = false);
    static std::optional<QByteArray> getItemXMLData(const QString &uuid, const QString &projectPath,
                                                    bool launchFCP = false,
                                                    bool closeProject = false);
    /// The close argument is not passed on: this form never closes the project.
    static QString getItemXML(const QString &uuid, const QString &projectPath,
                              bool launchFCP = false, bool closeProject = false);
    static std::optional<QByteArray> getTOCData(const QString &projectPath, bool launchFCP = false);
    static QString getTOC(const QString &projectPath, bool launchFCP = false);

    /// Hands XMEML text (escaped first) to the editor for the project (none: the
    /// editor's choice); waits up to ten minutes while the editor imports it.
    static bool sendXMLToFCP(const QString &xml, const QString &projectPath);
    static void openItem(const QString &uuid, const QString &projectPath, bool launchFCP);
    static bool saveProject(const QString &projectPath);
    static void closeProject(const QString &projectPath, bool saveChanges);

    static bool isFCPRunning();
    /// The `sequence` elements with a name of a project (from its table of contents
    /// from version 7 on, from the whole project before); nothing on failure.
    static std::optional<QFSequenceList> sequencesInProject(const QString &projectPath);
    /// The installed version ("7.0.3"), "7.0" when none is installed, null when its
    /// Info.plist lacks the version.
    static QString finalCutProVersionString();
    /// The first digit of the version (so 10.1 gives 1); 7 when unknown.
    static int finalCutProMajorVersion();
    /// The highest XMEML version the installed editor reads, 1 to 5 (0 when the
    /// version cannot be read).
    static int maximumXMEMLVersion();
    static QString generateUUID();
    /// The data without one trailing zero byte.
    static QByteArray formatData(const QByteArray &data);
    /// Character references for units of 160 and above (a surrogate pair gives one, of
    /// its code point) and for carriage returns.
    static QString escapeCharactersInXMLString(const QString &text);
    /// The same for UTF-8 text, without a round trip through UTF-16 (whole documents
    /// pass through here); malformed UTF-8 is escaped as its decoding would be.
    static QByteArray escapeCharactersInXMLString(const QByteArray &utf8);
};
