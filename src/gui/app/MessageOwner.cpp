#include "gui/app/MessageOwner.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFileInfo>
#include <QLocalServer>
#include <QLocalSocket>
#include <unistd.h>

namespace quillora::gui {

namespace {

constexpr char kRequest[] = "forward\n";
constexpr char kReply[] = "ok\n";

QString canonical(const QString& file) {
    const QFileInfo info(file);
    const QString c = info.canonicalFilePath();
    return c.isEmpty() ? QDir::cleanPath(info.absoluteFilePath()) : c;
}

} // namespace

MessageOwner::MessageOwner(QObject* parent) : QObject(parent) {}

MessageOwner::~MessageOwner() {
    release();
}

QString MessageOwner::serverName(const QString& file) {
    const QByteArray digest =
        QCryptographicHash::hash(canonical(file).toUtf8(), QCryptographicHash::Sha256).toHex();
    return QStringLiteral("quillora-%1-%2").arg(::getuid()).arg(QLatin1String(digest.left(24)));
}

bool MessageOwner::bringForward(const QString& file, int timeoutMs) {
    QLocalSocket socket;
    socket.connectToServer(serverName(file));
    if (!socket.waitForConnected(timeoutMs))
        return false;
    socket.write(kRequest);
    if (!socket.waitForBytesWritten(timeoutMs))
        return false;
    while (!socket.canReadLine()) {
        if (!socket.waitForReadyRead(timeoutMs))
            return false;
    }
    return socket.readLine() == kReply;
}

bool MessageOwner::own(const QString& file) {
    if (!file.isEmpty() && !m_file.isEmpty() && canonical(file) == canonical(m_file))
        return true;
    release();
    if (file.isEmpty())
        return true;
    auto* server = new QLocalServer(this);
    // Only this user may connect.
    server->setSocketOptions(QLocalServer::UserAccessOption);
    const QString name = serverName(file);
    if (!server->listen(name)) {
        // A socket file left by an editor that ended without closing it: nobody answers.
        if (server->serverError() != QAbstractSocket::AddressInUseError) {
            delete server;
            return true; // no socket: the message is still edited, only not guarded
        }
        QLocalSocket probe;
        probe.connectToServer(name);
        if (probe.waitForConnected(500)) {
            delete server;
            return false;
        }
        QLocalServer::removeServer(name);
        if (!server->listen(name)) {
            delete server;
            return true;
        }
    }
    connect(server, &QLocalServer::newConnection, this, [this, server] {
        while (QLocalSocket* peer = server->nextPendingConnection()) {
            connect(peer, &QLocalSocket::disconnected, peer, &QObject::deleteLater);
            connect(peer, &QLocalSocket::readyRead, this, [this, peer] {
                if (!peer->canReadLine())
                    return;
                if (peer->readLine() == kRequest) {
                    peer->write(kReply);
                    peer->flush();
                    emit forwardRequested();
                }
                peer->disconnectFromServer();
            });
        }
    });
    m_server = server;
    m_file = file;
    return true;
}

void MessageOwner::release() {
    if (m_server) {
        m_server->close();
        delete m_server;
        m_server = nullptr;
    }
    m_file.clear();
}

} // namespace quillora::gui
