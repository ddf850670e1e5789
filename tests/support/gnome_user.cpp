#include "support/gnome_user.h"

#include "support/private_session.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QJsonArray>
#include <QJsonDocument>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

const QString Remote = u"org.gnome.Mutter.RemoteDesktop"_s;

QDBusMessage call(const QDBusConnection &bus, const QString &service, const QString &path,
                  const QString &interface, const QString &method,
                  const QVariantList &arguments = {})
{
    auto message = QDBusMessage::createMethodCall(service, path, interface, method);
    message.setArguments(arguments);
    return bus.call(message);
}

} // namespace

QDBusConnection GnomeUser::bus() const
{
    if (!m_bus.isConnected()) {
        static int last = 0;
        m_bus = QDBusConnection::connectToBus(qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS"),
                                              u"gnome user %1"_s.arg(++last));
    }
    return m_bus;
}

QJsonValue GnomeUser::evaluate(const QString &script) const
{
    const QString names
        = u"const {Meta, GLib, Gio} = imports.gi;\n"
          "const row = [...Array(global.workspace_manager.n_workspaces).keys()].map(i =>\n"
          "    global.workspace_manager.get_workspace_by_index(i));\n"
          "const listed = global.display.list_all_windows().filter(w =>\n"
          "    !w.is_override_redirect() && w.get_frame_rect().width > 0).sort((a, b) =>\n"
          "    a.get_stable_sequence() - b.get_stable_sequence());\n"
          "const numbered = n => listed.find(w => w.get_stable_sequence() === n);\n"_s;
    const QDBusMessage reply
        = call(bus(), u"org.gnome.Shell"_s, u"/org/gnome/Shell"_s, u"org.gnome.Shell"_s, u"Eval"_s,
               {u"(() => {%1 return [%2]; })()"_s.arg(names, script)});
    const QString text = reply.arguments().value(1).toString();
    if (!reply.arguments().value(0).toBool()) {
        qWarning("%s: %s", qPrintable(script), qPrintable(text + reply.errorMessage()));
        return QJsonValue::Undefined;
    }
    return QJsonDocument::fromJson(text.toUtf8()).array().at(0);
}

bool GnomeUser::holds(const QString &script) const
{
    return eventually([&] { return evaluate(script).toBool(); });
}

void GnomeUser::notify(const QString &method, const QVariantList &arguments)
{
    const QString session = Remote + u".Session"_s;
    if (m_remote.isEmpty()) {
        m_remote
            = call(bus(), Remote, u"/org/gnome/Mutter/RemoteDesktop"_s, Remote, u"CreateSession"_s)
                  .arguments()
                  .value(0)
                  .value<QDBusObjectPath>()
                  .path();
        call(bus(), Remote, m_remote, session, u"Start"_s);
    }
    call(bus(), Remote, m_remote, session, method, arguments);
}

void GnomeUser::holdKey(std::uint32_t key, bool down)
{
    notify(u"NotifyKeyboardKeycode"_s, {key, down});
}

void GnomeUser::moveCursor(QPoint way)
{
    notify(u"NotifyPointerMotionRelative"_s, {double(way.x()), double(way.y())});
}

void GnomeUser::holdButton(std::int32_t button, bool down)
{
    notify(u"NotifyPointerButton"_s, {button, down});
}

} // namespace tovel
