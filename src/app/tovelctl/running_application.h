#pragma once

#include "app/commands/answer.h"
#include "app/commands/request.h"

#include <QCoroTask>
#include <QDBusConnection>
#include <QObject>

#include <functional>

namespace tovel {

// The running Tovel, asked over the session bus. Must outlive its tasks.
class RunningApplication final : public QObject
{
    Q_OBJECT

public:
    // Progress of moves goes to the function.
    RunningApplication(const QDBusConnection &bus, std::function<void(QString)> progress);

    // The answer to the request; a refusal when the program cannot carry it out, ends meanwhile,
    // answers something else, or nothing is heard of it for ten seconds, of a move for a minute.
    QCoro::Task<Answer> carryOut(Request request);

    void stopMove();

private Q_SLOTS:
    void tell(const QString &message)
    {
        m_isHeardOf = true;
        m_progress(message);
    }

private:
    QDBusConnection m_bus;
    std::function<void(QString)> m_progress;
    bool m_isHeardOf = false; // since it was last looked
};

} // namespace tovel
