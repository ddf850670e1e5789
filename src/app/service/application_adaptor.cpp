#include "app/service/application_adaptor.h"

#include <QDBusError>

namespace tovel {

using namespace Qt::StringLiterals;

ApplicationAdaptor::ApplicationAdaptor(QObject *parent, const QDBusConnection &bus)
    : QDBusAbstractAdaptor(parent)
    , m_bus(bus)
{ }

void ApplicationAdaptor::Activate(const QVariantMap &) { m_actions.show(); }

void ApplicationAdaptor::Open(const QStringList &, const QVariantMap &) { m_actions.show(); }

void ApplicationAdaptor::ActivateAction(const QString &action_name, const QVariantList &,
                                        const QVariantMap &, const QDBusMessage &message)
{
    if (action_name == "toggle"_L1) {
        m_actions.toggle();
        return;
    }
    message.setDelayedReply(true);
    m_bus.send(message.createErrorReply(QDBusError::InvalidArgs,
                                        u"there is no action “%1”"_s.arg(action_name)));
}

} // namespace tovel
