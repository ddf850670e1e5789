#include "app/service/application_adaptor.h"

#include "app/service/activation_token.h"

#include <QDBusError>

namespace tovel {

using namespace Qt::StringLiterals;

ApplicationAdaptor::ApplicationAdaptor(QObject *parent, const QDBusConnection &bus)
    : QDBusAbstractAdaptor(parent)
    , m_bus(bus)
{ }

void ApplicationAdaptor::Activate(const QVariantMap &platform_data)
{
    takeUpPlatformData(platform_data);
    m_actions.show();
}

void ApplicationAdaptor::Open(const QStringList &, const QVariantMap &platform_data)
{
    Activate(platform_data);
}

void ApplicationAdaptor::ActivateAction(const QString &action_name, const QVariantList &,
                                        const QVariantMap &platform_data,
                                        const QDBusMessage &message)
{
    if (action_name == "toggle"_L1) {
        takeUpPlatformData(platform_data);
        m_actions.toggle();
        return;
    }
    message.setDelayedReply(true);
    m_bus.send(message.createErrorReply(QDBusError::InvalidArgs,
                                        u"there is no action “%1”"_s.arg(action_name)));
}

} // namespace tovel
