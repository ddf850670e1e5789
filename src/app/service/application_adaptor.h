#pragma once

#include <QDBusAbstractAdaptor>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QStringList>
#include <QVariantList>
#include <QVariantMap>

#include <functional>
#include <utility>

namespace tovel {

// org.freedesktop.Application of the Desktop Entry Specification ("D-Bus Activation"). Its one
// action is "toggle"; any other is answered by org.freedesktop.DBus.Error.InvalidArgs.
class ApplicationAdaptor final : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

public:
    struct Actions
    {
        std::function<void()> show = [] {};
        std::function<void()> toggle = [] {};
    };

    // For an object that is registered on the bus.
    ApplicationAdaptor(QObject *parent, const QDBusConnection &bus);

    // What is done from now on; before, nothing is.
    void serve(Actions actions) { m_actions = std::move(actions); }

public Q_SLOTS:
    void Activate(const QVariantMap &platform_data);
    // There is nothing that Tovel opens: the same as Activate.
    void Open(const QStringList &uris, const QVariantMap &platform_data);
    void ActivateAction(const QString &action_name, const QVariantList &parameter,
                        const QVariantMap &platform_data, const QDBusMessage &message);

private:
    QDBusConnection m_bus;
    Actions m_actions;
};

} // namespace tovel
