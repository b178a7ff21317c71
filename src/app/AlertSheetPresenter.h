#pragma once

#include "support/QFAlert.h"

/// QFAlert's alerts as message boxes: a sheet on the document window (window-modal; a
/// real sheet on macOS), or a free-standing alert when there is no visible window.
class AlertSheetPresenter : public QFAlertPresenter
{
public:
    bool hasSheet(QObject *window) const override;
    QObject *show(const Content &content, QObject *window,
                  std::function<void(qint64)> answered) override;
    void close(QObject *alert) override;

    /// The sheets of a window that is going away become free-standing alerts, so that
    /// the user can still answer them.
    static void detachSheets(QWidget *window);
};
