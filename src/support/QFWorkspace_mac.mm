// NSWorkspace and NSRunningApplication answer; files open through /usr/bin/open.

#include "support/QFWorkspace.h"

#include <QProcess>

#import <AppKit/AppKit.h>

#include <memory>

namespace {

class CocoaWorkspace : public QFWorkspace
{
public:
    bool isApplicationRunning(const QString &bundleIdentifier) override
    {
        @autoreleasepool {
            return [NSRunningApplication
                       runningApplicationsWithBundleIdentifier:bundleIdentifier.toNSString()]
                       .count > 0;
        }
    }

    QString pathForApplication(const QString &bundleIdentifier) override
    {
        @autoreleasepool {
            NSURL *url = [[NSWorkspace sharedWorkspace]
                URLForApplicationWithBundleIdentifier:bundleIdentifier.toNSString()];
            return url ? QString::fromNSString(url.path) : QString();
        }
    }

    bool openFile(const QString &path, const QString &bundleIdentifier,
                  LaunchOptions options) override
    {
        QStringList arguments{QStringLiteral("-b"), bundleIdentifier};
        if (options.testFlag(WithoutActivation))
            arguments << QStringLiteral("-g");
        arguments << path;
        if (options.testFlag(Asynchronous))
            return QProcess::startDetached(QStringLiteral("/usr/bin/open"), arguments);
        return QProcess::execute(QStringLiteral("/usr/bin/open"), arguments) == 0;
    }
};

} // namespace

std::unique_ptr<QFWorkspace> makePlatformWorkspace()
{
    return std::make_unique<CocoaWorkspace>();
}
