#include "platform/session/kwin/kwin_service.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>

namespace tovel::kwin {

using namespace Qt::StringLiterals;

namespace {

const QString Service = u"org.kde.KWin"_s;

// Nothing where there is no answer, or one that is something else.
QVariant ask(BusCalls &calls, const QDBusMessage &call)
{
    return calls.bus().isConnected() ? calls.ask(call).arguments().value(0) : QVariant();
}

} // namespace

KWinService::KWinService(BusCalls &calls)
    : m_calls(calls)
{
    if (m_calls.bus().isConnected()) {
        // Whoever changes the configuration says so, as if it were KWin.
        m_calls.bus().connect(QString(), u"/KWin"_s, u"org.kde.KWin"_s, u"reloadConfig"_s, this,
                              SLOT(forgetInformation()));
    }
}

QString KWinService::currentDesktop() const
{
    auto call = QDBusMessage::createMethodCall(Service, u"/VirtualDesktopManager"_s,
                                               u"org.freedesktop.DBus.Properties"_s, u"Get"_s);
    call << u"org.kde.KWin.VirtualDesktopManager"_s << u"current"_s;
    return ask(m_calls, call).value<QDBusVariant>().variant().toString();
}

SupportInformation KWinService::supportInformation()
{
    if (m_information)
        return *m_information;
    const auto information = parseSupportInformation(
        ask(m_calls,
            QDBusMessage::createMethodCall(Service, u"/KWin"_s, u"org.kde.KWin"_s,
                                           u"supportInformation"_s))
            .toString());
    if (!m_calls.isSilent())
        m_information = information;
    return information;
}

void KWinService::forgetInformation() { m_information.reset(); }

} // namespace tovel::kwin
