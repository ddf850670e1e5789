#pragma once

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QTcpServer>

class QTcpSocket;

// What the server sends for a path.
struct ScriptedAnswer
{
    enum class Then { closes, staysOpen, goesOn };

    QByteArray bytes;
    Then then = Then::closes; // goesOn: sends the bytes over and over while the client takes them
};

// A whole answer with a body.
ScriptedAnswer httpAnswer(const QByteArray &status, const QByteArray &body,
                          const QByteArray &headers = {});

// An HTTP server on loopback that sends scripted bytes, and remembers what it was asked.
class ScriptedServer final : public QObject
{
public:
    ScriptedServer();

    QHash<QByteArray, ScriptedAnswer> answers; // by path

    QString address(const QString &path) const;
    QList<QByteArray> requests; // whole heads
    int openConnections = 0;

private:
    void take(QTcpSocket *socket);

    QTcpServer m_server;
};
