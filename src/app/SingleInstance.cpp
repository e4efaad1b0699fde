#include "app/SingleInstance.h"

#include <QLocalSocket>
#include <unistd.h>

namespace orvan::app {

namespace {
QString serverName() { return QStringLiteral("orvan-companion-%1").arg(::getuid()); }
} // namespace

bool SingleInstance::askRunningToShow() {
    QLocalSocket socket;
    socket.connectToServer(serverName());
    if (!socket.waitForConnected(500)) return false;
    socket.write("show\n");
    socket.waitForBytesWritten(500);
    socket.disconnectFromServer();
    return true;
}

SingleInstance::SingleInstance(std::function<void()> show) : server_(std::make_unique<QLocalServer>()) {
    server_->setSocketOptions(QLocalServer::UserAccessOption);
    if (!server_->listen(serverName())) {
        // A name left by a companion that crashed: nobody answered above, so it is stale.
        QLocalServer::removeServer(serverName());
        server_->listen(serverName());
    }
    QObject::connect(server_.get(), &QLocalServer::newConnection, server_.get(), [this, show = std::move(show)] {
        while (QLocalSocket* socket = server_->nextPendingConnection()) {
            QObject::connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
            QObject::connect(socket, &QLocalSocket::readyRead, socket, [socket, show] {
                if (socket->readAll().startsWith("show")) show();
            });
        }
    });
}

} // namespace orvan::app
