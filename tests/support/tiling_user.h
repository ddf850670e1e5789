#pragma once

#include "support/private_session.h"

#include <QJsonObject>
#include <QList>

namespace tovel {

// Someone at sway or i3, by the program that comes with it; knows nothing of the code under test.
class TilingUser final
{
public:
    // Borrows it.
    explicit TilingUser(const PrivateSession &session)
        : m_session(session)
    { }

    // Whether every command was carried out.
    bool command(const QString &text) const;

    // The windows as they stand in the tree, each with its "workspace" and "output" besides.
    QList<QJsonObject> windows() const;
    // Those of a title; empty where there is none.
    QJsonObject windowTitled(const QString &title) const;

private:
    QByteArray ask(const QStringList &arguments) const;

    const PrivateSession &m_session;
};

} // namespace tovel
