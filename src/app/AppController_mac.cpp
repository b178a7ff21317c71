#include "AppController.h"

#include <QApplication>
#include <QMenuBar>

void AppController::platformDidFinishLaunching()
{
    // A menu bar without a parent is the one macOS shows while no window is open.
    populateMenus(new QMenuBar(nullptr));
    // Qt reports a click on the Dock icon (the reopen event) as the application becoming
    // active; with no document open that asks for marker lists, as at launch.
    connect(qApp, &QGuiApplication::applicationStateChanged, this,
            [this](Qt::ApplicationState state) {
                if (state == Qt::ApplicationActive && documents().isEmpty() && !m_panelShown &&
                    !QApplication::activeModalWidget())
                    performStartupAction();
            });
}

bool AppController::quitsWithoutDocuments() const
{
    return m_quitting;
}
