#pragma once

#include "support/QFAlert.h"

#include <QMutex>

#include <cstdio>

/// Alerts on the terminal: one line, "message: informative text" (no colon after a
/// message that ends a sentence), answered at once with the default button. Any thread
/// may show one; each line is printed whole.
class TerminalAlertPresenter : public QFAlertPresenter
{
public:
    /// Where the alerts of the calling thread go from now on (standard error at first).
    static void setStream(std::FILE *stream);

    bool needsMainThread() const override { return false; }
    bool hasSheet(QObject *) const override { return false; }
    QObject *show(const Content &content, QObject *window,
                  std::function<void(qint64)> answered) override;
    void close(QObject *) override {}

    /// Prints one line whole, also among lines printed by other threads.
    static void printLine(std::FILE *stream, const QString &text);
    /// The alert as one line, line breaks made blanks.
    static QString alertLine(const QString &messageText, const QString &informativeText);
};
