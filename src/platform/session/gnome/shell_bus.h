#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QObject>
#include <QVariantList>

#include <functional>
#include <optional>

namespace tovel::gnome {

// Calls to GNOME Shell, whichever of its names they go to. One that it does not answer in time is
// the last that is waited for: the others are refused at once until it answers again.
class ShellBus final
{
public:
    explicit ShellBus(const QDBusConnection &bus);

    const QDBusConnection &connection() const { return m_bus; }

    struct Method
    {
        QString service;
        QString path;
        QString interface;
        QString name;
    };
    // The answer, or an error as of the bus. Nothing is started for it.
    QDBusMessage call(const Method &method, const QVariantList &arguments = {});
    // Without the variant around it; nothing where there is no answer.
    QVariant property(const Method &method, const QString &name);

    // Whether it has not answered yet what it was asked.
    bool isSilent();
    // Called from the event loop when it answers again, or is gone.
    void setReturnHandler(std::function<void()> handler) { m_returned = std::move(handler); }

    // The unique name of whoever has the service's; empty where nobody has, or there is no bus.
    QString ownerOf(const QString &service);

    // Whether the Shell is on the bus, silent or not.
    bool isShellThere() const;
    // Whether the extension is.
    bool isExtensionThere() const;

private:
    void awaitReturn();

    QDBusConnection m_bus;
    std::optional<QDBusPendingCall> m_question; // that is not answered yet
    std::function<void()> m_returned;
    QObject m_context;
};

inline const QString ExtensionService = QStringLiteral("org.tovel.Shell1");
// Of the Shell itself, without the extension.
inline const QString ShellService = QStringLiteral("org.gnome.Shell");
inline const QString ShellPath = QStringLiteral("/org/gnome/Shell");

} // namespace tovel::gnome
