#include "platform/session/gnome/access.h"

#include "platform/session/gnome/shell_bus.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDeadlineTimer>
#include <QStandardPaths>

#include <thread>

namespace tovel::gnome {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr auto Pause = 10ms;

const QString Uuid = u"tovel@tovel.org"_s;

// The Shell's own interface for its extensions, which another program hands on.
ShellBus::Method extensions(const QString &method)
{
    return {ShellService, ShellPath, u"org.gnome.Shell.Extensions"_s, method};
}

bool isInstalled()
{
    const QString file = u"gnome-shell/extensions/%1/metadata.json"_s.arg(Uuid);
    return !QStandardPaths::locate(QStandardPaths::GenericDataLocation, file).isEmpty();
}

bool isLocked(ShellBus &bus)
{
    // Of the Shell's own name: another program has that of the interface, and hands on to it.
    const auto reply = bus.call(
        {ShellService, u"/org/gnome/ScreenSaver"_s, u"org.gnome.ScreenSaver"_s, u"GetActive"_s});
    return reply.type() == QDBusMessage::ReplyMessage && reply.arguments().value(0).toBool();
}

} // namespace

Hindrance hindranceFrom(const QVariantMap &information)
{
    if (information.isEmpty())
        return Hindrance::NotLoaded;
    switch (information.value(u"state"_s).toInt()) {
    case 1: // enabled, or active
    case 8: // activating
        return Hindrance::Starting;
    case 3:
        return Hindrance::Failed;
    case 4:
        return Hindrance::OutOfDate;
    case 99:
        return Hindrance::NotInstalled;
    default:
        return Hindrance::Disabled;
    }
}

Hindrance findHindrance(ShellBus &bus)
{
    if (!bus.isShellThere())
        return Hindrance::NoShell;
    const QDBusMessage reply = bus.call(extensions(u"GetExtensionInfo"_s), {Uuid});
    if (bus.isSilent())
        return Hindrance::Silent;
    const auto information = qdbus_cast<QVariantMap>(reply.arguments().value(0));
    const Hindrance hindrance = hindranceFrom(information);
    if (hindrance == Hindrance::NotLoaded && !isInstalled())
        return Hindrance::NotInstalled;
    if (hindrance != Hindrance::Disabled && hindrance != Hindrance::Starting)
        return hindrance;
    if (isLocked(bus))
        return Hindrance::Locked;
    const QVariant allowed = bus.property(extensions({}), u"UserExtensionsEnabled"_s);
    return allowed.isValid() && !allowed.toBool() ? Hindrance::AllDisabled : hindrance;
}

QString sentenceFor(Hindrance hindrance)
{
    switch (hindrance) {
    case Hindrance::NoShell:
        return u"GNOME Shell is gone."_s;
    case Hindrance::Silent:
        return u"GNOME Shell does not answer."_s;
    case Hindrance::NotInstalled:
        return u"GNOME Shell shows windows to its extensions alone, and Tovel’s is not installed: "
               "install Tovel with it, then log out and in again."_s;
    case Hindrance::NotLoaded:
        return u"GNOME Shell does not know Tovel’s extension yet, since it was installed after you "
               "logged in: log out and in again."_s;
    case Hindrance::Disabled:
        return u"GNOME Shell shows windows to its extensions alone, and Tovel’s is off: allow it "
               "in Tovel’s panel, or with “tovelctl access”."_s;
    case Hindrance::AllDisabled:
        return u"Extensions of GNOME Shell are switched off as a whole, Tovel’s with them: switch "
               "them on in the program Extensions."_s;
    case Hindrance::OutOfDate:
        return u"Tovel’s extension is not made for this version of GNOME Shell: install a Tovel "
               "that is."_s;
    case Hindrance::Failed:
        return u"Tovel’s extension failed in GNOME Shell: install Tovel again, then log out and in "
               "again."_s;
    case Hindrance::Locked:
        return u"The screen is locked, and Tovel moves nothing then."_s;
    case Hindrance::Starting:
        return u"GNOME Shell has enabled Tovel’s extension, but it does not answer: log out and in "
               "again if that lasts."_s;
    }
    return {};
}

bool enableExtension(ShellBus &bus, std::chrono::milliseconds patience)
{
    if (findHindrance(bus) != Hindrance::Disabled)
        return false;
    bus.call(extensions(u"EnableExtension"_s), {Uuid});
    const QDeadlineTimer deadline(patience);
    const auto isUnderWay = [&] {
        if (bus.isExtensionThere())
            return false;
        const Hindrance hindrance = findHindrance(bus);
        return hindrance == Hindrance::Disabled || hindrance == Hindrance::Starting;
    };
    while (isUnderWay()) {
        if (deadline.hasExpired())
            return true;
        std::this_thread::sleep_for(Pause);
    }
    return false;
}

} // namespace tovel::gnome
