#pragma once

#include <QLocalServer>
#include <QObject>
#include <QStringList>

/// One window application per user session. The first launch listens on a local socket
/// in the user's own runtime folder; a later launch hands it its marker lists (and its
/// target) and ends, so that a list never opens in two windows of two processes.
class SingleInstance : public QObject
{
    Q_OBJECT

public:
    /// name: the socket's file name.
    explicit SingleInstance(const QString &name, QObject *parent = nullptr);

    /// Hands the launch's files and target (null for none) to a running instance. True
    /// once the running one has taken them: this launch then ends.
    bool handOff(const QStringList &files, const QString &target);
    /// Listens for later launches; false when it cannot (this launch then runs alone).
    bool listen();
    /// Stops listening.
    void close() { m_server.close(); }
    QString socketPath() const { return m_path; }

signals:
    /// A later launch's absolute paths; empty files: it was started without any.
    void launched(const QStringList &files, const QString &target);

private:
    void receive(QLocalSocket *socket);

    QString m_path;
    QLocalServer m_server;
};
