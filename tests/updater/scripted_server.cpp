#include "scripted_server.h"

#include <QTcpSocket>
#include <QTest>

using namespace Qt::StringLiterals;

ScriptedAnswer httpAnswer(const QByteArray &status, const QByteArray &body,
                          const QByteArray &headers)
{
    return {"HTTP/1.1 " + status + "\r\nContent-Length: " + QByteArray::number(body.size())
            + "\r\nConnection: close\r\n" + headers + "\r\n" + body};
}

ScriptedServer::ScriptedServer()
{
    if (!m_server.listen(QHostAddress::LocalHost))
        qFatal("no port to listen on");
    connect(&m_server, &QTcpServer::newConnection, this, [this] {
        QTcpSocket *socket = m_server.nextPendingConnection();
        ++openConnections;
        connect(socket, &QTcpSocket::readyRead, this, [this, socket] { take(socket); });
        connect(socket, &QTcpSocket::disconnected, this, [this, socket] {
            --openConnections;
            socket->deleteLater();
        });
    });
}

QString ScriptedServer::address(const QString &path) const
{
    return u"http://127.0.0.1:%1%2"_s.arg(m_server.serverPort()).arg(path);
}

void ScriptedServer::take(QTcpSocket *socket)
{
    const QByteArray head = socket->readAll();
    requests.append(head);
    const ScriptedAnswer answer = answers.value(head.split(' ').value(1));
    socket->write(answer.bytes);
    if (answer.then == ScriptedAnswer::Then::closes) {
        socket->disconnectFromHost();
    } else if (answer.then == ScriptedAnswer::Then::goesOn) {
        connect(socket, &QTcpSocket::bytesWritten, socket,
                [socket, bytes = answer.bytes] { socket->write(bytes); });
    }
}
