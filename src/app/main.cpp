// Cuebridge: marker lists onto Final Cut Pro timelines.

#include "AppController.h"
#include "SingleInstance.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QFileInfo>
#include <QIcon>

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    QApplication::setOrganizationName(QStringLiteral("Quillfen"));
    // With the name, the bundle identifier the analytics store is named by.
    QApplication::setOrganizationDomain(QStringLiteral("quillfen.com"));
    QApplication::setApplicationName(QStringLiteral("Cuebridge"));
    QApplication::setApplicationVersion(QStringLiteral(CUEBRIDGE_VERSION));
    QApplication::setDesktopFileName(QStringLiteral("com.quillfen.Cuebridge"));
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/images/cuebridge.png")));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Imports marker lists into Final Cut Pro "
                                                    "timelines."));
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption target(
        QStringLiteral("target"),
        QStringLiteral("The timeline the marker lists go into: an FCP 7 XML file, an FCPXML file "
                       "or bundle."),
        QStringLiteral("path"));
    parser.addOption(target);
    parser.addPositionalArgument(QStringLiteral("lists"),
                                 QStringLiteral("Marker lists to open, each in a window."),
                                 QStringLiteral("[lists…]"));
    parser.process(app);

    QStringList files;
    for (const QString &file : parser.positionalArguments())
        files << QFileInfo(file).absoluteFilePath();
    const QString targetPath =
        parser.isSet(target) ? QFileInfo(parser.value(target)).absoluteFilePath() : QString();
    // One application per user session: a running one opens this launch's files.
    SingleInstance instance(QStringLiteral("com.quillfen.Cuebridge"));
    if (instance.handOff(files, targetPath))
        return 0;

    AppController controller;
    QObject::connect(&instance, &SingleInstance::launched, &controller,
                     [&controller](const QStringList &later, const QString &laterTarget) {
                         controller.applicationLaunchedAgain(later, laterTarget);
                     });
    instance.listen();
    controller.applicationLaunchedAgain(files, targetPath, true);
    return app.exec();
}
