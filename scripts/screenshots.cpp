// Screenshots of the document window for the README, made under Xvfb by
// scripts/screenshots: the window with the example's sequences listed and its marker
// table, then with the sheet of a finished import and its details, and the preferences.
//
//   cuebridge-screenshots MARKER_LIST TARGET OUTPUT_FOLDER

#include "AppController.h"
#include "MarkerTableModel.h"
#include "MyDocument.h"
#include "WaitFor.h"

#include "support/QFUserDefaults.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>
#include <QIcon>
#include <QMessageBox>
#include <QScreen>
#include <QTemporaryDir>
#include <QThread>
#include <QTimer>

#include <cstdio>
#include <functional>

using namespace Qt::StringLiterals;

namespace {

/// The screen around the window (and its sheet), a margin included.
bool shoot(const QWidget &window, const QString &path)
{
    QApplication::processEvents();
    QThread::msleep(300);
    QApplication::processEvents();
    const QRect frame = window.frameGeometry().adjusted(-24, -24, 24, 24);
    const QPixmap shot = QGuiApplication::primaryScreen()->grabWindow(
        0, frame.x(), frame.y(), frame.width(), frame.height());
    return shot.save(path);
}

} // namespace

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    QApplication::setOrganizationName(u"Quillfen"_s);
    QApplication::setApplicationName(u"Cuebridge"_s);
    QApplication::setWindowIcon(QIcon(u":/images/cuebridge.png"_s));
    if (argc != 4) {
        std::fputs("usage: cuebridge-screenshots MARKER_LIST TARGET OUTPUT_FOLDER\n", stderr);
        return 64;
    }
    const QString markerList = QFileInfo(QString::fromLocal8Bit(argv[1])).absoluteFilePath();
    const QString output = QString::fromLocal8Bit(argv[3]);
    QDir().mkpath(output);
    // The target is imported into a copy, so that the example stays as it is.
    QTemporaryDir work;
    const QString target = work.filePath(QFileInfo(QString::fromLocal8Bit(argv[2])).fileName());
    QFile::copy(QString::fromLocal8Bit(argv[2]), target);
    QFUserDefaults::standardUserDefaults().setObject(target, u"lastProject"_s);

    AppController controller;
    controller.openFiles({markerList});
    MyDocument *document = controller.documents().value(0);
    if (!document)
        return 1;
    document->move(60, 40);
    // The table shows where each marker lands once the dry run has answered.
    const auto landed = [&] {
        const MarkerPreview &preview = document->markerTable().preview();
        return !preview.rows.isEmpty() &&
               preview.rows.first().state == MarkerPreview::Row::State::Lands;
    };
    if (!waitFor([&] { return !document->session().items().isEmpty() && landed(); }))
        return 2;
    if (!shoot(*document, output + u"/window.png"_s))
        return 3;

    document->sendToFCP();
    QMessageBox *sheet = nullptr;
    if (!waitFor([&] { return (sheet = document->findChild<QMessageBox *>()) != nullptr; }))
        return 4;
    for (QAbstractButton *button : sheet->buttons())
        if (sheet->buttonRole(button) == QMessageBox::ActionRole)
            button->click(); // the details: the result's path, and any skipped lines
    if (!shoot(*document, output + u"/imported.png"_s))
        return 5;
    sheet->accept();
    waitFor([&] { return !document->session().isBusy(); });

    controller.showPrefs();
    QWidget *prefs = nullptr;
    waitFor([&] {
        for (QWidget *widget : QApplication::topLevelWidgets())
            if (widget->isVisible() && widget->windowTitle() == u"Cuebridge Preferences")
                prefs = widget;
        return prefs != nullptr;
    });
    if (!prefs || !shoot(*prefs, output + u"/preferences.png"_s))
        return 6;
    return 0;
}
