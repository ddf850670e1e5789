#include "app/service/bus_presence.h"

#include "app/service/activation_token.h"
#include "app/service/application_adaptor.h"
#include "app/service/bus_names.h"
#include "app/service/command_adaptor.h"
#include "app/service/running_tovel.h"

#include <QDBusMessage>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

constexpr int patience = 5000; // milliseconds

} // namespace

BusPresence::BusPresence(const QDBusConnection &bus)
    : m_bus(bus)
    , m_application(new ApplicationAdaptor(this, bus))
    , m_commands(new CommandAdaptor(this, bus))
{
    m_bus.connect(QString(), u"/org/freedesktop/DBus/Local"_s, u"org.freedesktop.DBus.Local"_s,
                  u"Disconnected"_s, this, SIGNAL(busLost()));
}

// Whoever starts Tovel now is to find no name without its object. Qt's own call would wait for the
// bus, which may not answer.
BusPresence::~BusPresence()
{
    QDBusMessage release
        = QDBusMessage::createMethodCall(u"org.freedesktop.DBus"_s, u"/org/freedesktop/DBus"_s,
                                         u"org.freedesktop.DBus"_s, u"ReleaseName"_s);
    release << BusNames::Service;
    m_bus.send(release);
    m_bus.unregisterObject(BusNames::Path);
}

Claim BusPresence::claim()
{
    if (!m_bus.isConnected())
        return Claim::Unowned;
    m_bus.registerObject(BusNames::Path, this, QDBusConnection::ExportAdaptors);
    if (m_bus.registerService(BusNames::Service))
        return Claim::Ours;
    const RunningTovel other = findRunningTovel(m_bus);
    // The other may have ended instead of answering.
    if (other != RunningTovel::Answers && m_bus.registerService(BusNames::Service))
        return Claim::Ours;
    m_bus.unregisterObject(BusNames::Path);
    switch (other) {
    case RunningTovel::Answers:
        return Claim::Taken;
    case RunningTovel::Silent:
        return Claim::Unanswered;
    case RunningTovel::None:
        break;
    }
    return Claim::Unowned;
}

bool BusPresence::activateOther()
{
    const QDBusMessage reply = m_bus.call(
        callOfRunningTovel(u"org.freedesktop.Application"_s, u"Activate"_s, {ownPlatformData()}),
        QDBus::Block, patience);
    return reply.type() == QDBusMessage::ReplyMessage;
}

} // namespace tovel
