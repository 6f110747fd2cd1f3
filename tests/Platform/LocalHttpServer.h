#pragma once

#include "Base/StringLiterals.h"

#include <QHash>
#include <QHostAddress>
#include <QPointer>
#include <QTcpServer>
#include <QTcpSocket>
#include <QUrl>
#include <functional>
#include <sys/socket.h>

namespace Velloro {

/// A web server on this machine that answers each path with what the test says, byte for byte.
class LocalHttpServer
{
public:
    /// Answers one request; what it does not write or close stays unwritten and open.
    using Answer = std::function<void(QTcpSocket &)>;

    LocalHttpServer()
    {
        m_server.listen(QHostAddress::LocalHost);
        QObject::connect(&m_server, &QTcpServer::newConnection, &m_server, [this] { accept(); });
    }

    [[nodiscard]] QUrl url(const QString &path) const
    {
        return QUrl(u"http://127.0.0.1:%1%2"_s.arg(m_server.serverPort()).arg(path));
    }

    void route(const QString &path, Answer answer)
    {
        m_answers.insert(path.toLatin1(), std::move(answer));
    }

    /// The requests so far, head only.
    QList<QByteArray> requests;

    /// Answers with exactly these bytes and closes the connection.
    [[nodiscard]] static Answer bytes(const QByteArray &response)
    {
        return [response](QTcpSocket &socket) {
            socket.write(response);
            socket.disconnectFromHost();
        };
    }

    /// Answers with these bytes and then neither continues nor closes.
    [[nodiscard]] static Answer bytesThenSilence(const QByteArray &response)
    {
        return [response](QTcpSocket &socket) { socket.write(response); };
    }

    /// Answers with these bytes and resets the connection.
    [[nodiscard]] static Answer bytesThenReset(const QByteArray &response)
    {
        return [response](QTcpSocket &socket) {
            socket.write(response);
            socket.flush();
            const linger abort = {.l_onoff = 1, .l_linger = 0};
            setsockopt(static_cast<int>(socket.socketDescriptor()), SOL_SOCKET, SO_LINGER, &abort,
                       sizeof abort);
            socket.abort();
        };
    }

private:
    void accept()
    {
        while (QTcpSocket *socket = m_server.nextPendingConnection()) {
            QObject::connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
            QObject::connect(socket, &QTcpSocket::readyRead, socket, [this, socket] {
                if (!socket->peek(65536).contains("\r\n\r\n"))
                    return;
                const QByteArray head = socket->readAll();
                requests.append(head);
                const auto answer = m_answers.constFind(head.split(' ').value(1));
                if (answer != m_answers.constEnd())
                    (*answer)(*socket);
                else
                    bytes("HTTP/1.1 404 Not Found\r\nContent-Length: 4\r\n\r\nGone")(*socket);
            });
        }
    }

    QTcpServer m_server;
    QHash<QByteArray, Answer> m_answers;
};

} // namespace Velloro
