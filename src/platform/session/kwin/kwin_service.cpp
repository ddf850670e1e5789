#include "platform/session/kwin/kwin_service.h"

#include <QDBusMessage>
#include <QDBusVariant>

namespace tovel::kwin {

using namespace Qt::StringLiterals;

namespace {

constexpr int Deadline = 1000; // milliseconds

const QString Service = u"org.kde.KWin"_s;

// Nothing where there is no answer, or one that is something else.
QVariant ask(const QDBusConnection &bus, QDBusMessage call)
{
    call.setAutoStartService(false);
    if (!bus.isConnected())
        return {};
    const QDBusMessage reply = bus.call(call, QDBus::Block, Deadline);
    return reply.type() == QDBusMessage::ReplyMessage ? reply.arguments().value(0) : QVariant();
}

} // namespace

KWinService::KWinService(const QDBusConnection &bus)
    : m_bus(bus)
{
    if (m_bus.isConnected()) {
        // Whoever changes the configuration says so, as if it were KWin.
        m_bus.connect(QString(), u"/KWin"_s, u"org.kde.KWin"_s, u"reloadConfig"_s, this,
                      SLOT(forgetInformation()));
    }
}

QString KWinService::currentDesktop() const
{
    auto call = QDBusMessage::createMethodCall(Service, u"/VirtualDesktopManager"_s,
                                               u"org.freedesktop.DBus.Properties"_s, u"Get"_s);
    call << u"org.kde.KWin.VirtualDesktopManager"_s << u"current"_s;
    return ask(m_bus, call).value<QDBusVariant>().variant().toString();
}

const SupportInformation &KWinService::supportInformation()
{
    if (!m_information) {
        m_information = parseSupportInformation(
            ask(m_bus,
                QDBusMessage::createMethodCall(Service, u"/KWin"_s, u"org.kde.KWin"_s,
                                               u"supportInformation"_s))
                .toString());
    }
    return *m_information;
}

void KWinService::forgetInformation() { m_information.reset(); }

} // namespace tovel::kwin
