#include "QFMainThread.h"

#include <QCoreApplication>
#include <QThread>

void performOnMainThreadAndWait(const std::function<void()> &work)
{
    QCoreApplication *app = QCoreApplication::instance();
    if (!app || QThread::currentThread() == app->thread()) {
        work();
        return;
    }
    QMetaObject::invokeMethod(app, work, Qt::BlockingQueuedConnection);
}
