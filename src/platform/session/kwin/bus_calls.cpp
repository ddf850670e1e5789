#include "platform/session/kwin/bus_calls.h"

#include <QDBusError>

namespace tovel::kwin {

namespace {

constexpr int Patience = 1000; // milliseconds
constexpr int Silence = 10000; // milliseconds

} // namespace

QDBusMessage BusCalls::ask(QDBusMessage call)
{
    if (isSilent())
        return {};
    call.setAutoStartService(false);
    const QDBusMessage reply = m_bus.call(call, QDBus::Block, Patience);
    if (QDBusError(reply).type() == QDBusError::NoReply)
        m_silence.setRemainingTime(Silence);
    return reply;
}

QDBusMessage BusCalls::demand(const QDBusMessage &call)
{
    if (!isSilent())
        return ask(call);
    tell(call);
    return {};
}

void BusCalls::tell(QDBusMessage call)
{
    call.setAutoStartService(false);
    m_bus.call(call, QDBus::NoBlock);
}

} // namespace tovel::kwin
