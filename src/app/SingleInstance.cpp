#include "SingleInstance.h"

#include "support/QFLocalPaths.h"

#include <QDataStream>
#include <QLocalSocket>

namespace {

/// How long a later launch waits for the running one to answer.
constexpr int answerMs = 5000;

} // namespace

SingleInstance::SingleInstance(const QString &name, QObject *parent)
    : QObject(parent), m_path(QFLocalPaths::privateRuntimeFolder() + u'/' + name)
{
    m_server.setSocketOptions(QLocalServer::UserAccessOption);
    connect(&m_server, &QLocalServer::newConnection, this, [this] {
        while (QLocalSocket *socket = m_server.nextPendingConnection()) {
            connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
            connect(socket, &QLocalSocket::readyRead, this, [this, socket] { receive(socket); });
        }
    });
}

bool SingleInstance::handOff(const QStringList &files, const QString &target)
{
    QLocalSocket socket;
    socket.connectToServer(m_path);
    if (!socket.waitForConnected(answerMs))
        return false;
    QByteArray message;
    QDataStream out(&message, QIODevice::WriteOnly);
    out << files << target;
    socket.write(message);
    // Taken only once the running one says so: files are never handed into nothing.
    return socket.waitForBytesWritten(answerMs) && socket.waitForReadyRead(answerMs) &&
           socket.read(1) == "1";
}

bool SingleInstance::listen()
{
    if (m_server.listen(m_path))
        return true;
    // A socket left by a launch that crashed: nobody answers on it.
    QLocalSocket probe;
    probe.connectToServer(m_path);
    if (probe.waitForConnected(answerMs))
        return false;
    QLocalServer::removeServer(m_path);
    return m_server.listen(m_path);
}

void SingleInstance::receive(QLocalSocket *socket)
{
    QDataStream stream(socket);
    stream.startTransaction();
    QStringList files;
    QString target;
    stream >> files >> target;
    if (!stream.commitTransaction())
        return; // the rest is still coming
    socket->write("1");
    socket->flush();
    emit launched(files, target);
}
