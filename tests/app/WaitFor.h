#pragma once

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QThread>

#include <functional>

/// Serves events until the condition holds; false after ten seconds.
inline bool waitFor(const std::function<bool()> &condition)
{
    QElapsedTimer timer;
    timer.start();
    while (!condition()) {
        if (timer.elapsed() > 10000)
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        QThread::msleep(2);
    }
    return true;
}
