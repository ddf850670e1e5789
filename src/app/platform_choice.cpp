#include "app/platform_choice.h"

#include "app/session_bus.h"
#include "platform/linux/linux_desktop.h"
#include "platform/session/gnome/gnome_session.h"
#include "platform/session/i3/i3_session.h"
#include "platform/session/i3/ipc_connection.h"
#include "platform/session/kwin/kwin_session.h"
#include "platform/session/wayland/wayland_socket.h"
#include "platform/session/x11/x11_session.h"
#include "platform/simulated/demo_world.h"
#include "platform/simulated/simulated_desktop.h"
#include "settings/bundle.h"

#include <QFileInfo>

#include <algorithm>
#include <chrono>

namespace tovel {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr char Variable[] = "TOVEL_DESKTOP";

// Those that there is a driver for.
constexpr QStringView Sessions
    = u"a Wayland session of GNOME, KWin or sway, on i3, or in an X11 session whose window manager "
      "follows the Extended Window Manager Hints";

// How long a process waits for others that store choices: a window must not hang, while a run
// without one had better end late than in vain.
constexpr std::chrono::milliseconds patience(Stay stay)
{
    return stay == Stay::Session ? 200ms : 5s;
}

class LinuxChoice final : public PlatformChoice
{
public:
    LinuxChoice(std::unique_ptr<DesktopSession> session, const QString &missingSession,
                std::chrono::milliseconds patience)
        : m_desktop(std::move(session), patience)
        , m_missingSession(missingSession)
    { }

    Platform &platform() override { return m_desktop; }
    QString missingSession() const override { return m_missingSession; }
    QString sessionName() const override { return m_desktop.sessionName(); }
    QStringList limits() const override { return m_desktop.limits(); }
    QString accessAdvice() override
    {
        if (!m_missingSession.isEmpty()) {
            return m_missingSession.left(1).toUpper() + m_missingSession.mid(1)
                + u". Start Tovel in %1."_s.arg(Sessions);
        }
        if (m_desktop.accessibility().AXIsProcessTrusted())
            return {};
        return (limits() + QStringList{u"Tovel then goes on by itself."_s}).join(u' ');
    }
    bool requestAccess(std::chrono::milliseconds patience) override
    {
        return m_desktop.requestAccess(patience);
    }
    void setSettingsOpener(std::function<void()> opener) override
    {
        m_desktop.setSettingsOpener(std::move(opener));
    }

private:
    LinuxDesktop m_desktop;
    QString m_missingSession;
};

// The demo's choices last, in a file of their own: they are about applications that do not exist.
class SimulatedDefaults final : public UserDefaultsDomains
{
public:
    explicit SimulatedDefaults(std::chrono::milliseconds patience)
        : m_standard(LinuxUserDefaults::domain(u"simulated"_s, patience))
    { }

    UserDefaults &standardUserDefaults() override { return m_standard; }
    const UserDefaults *initWithSuiteName(const QString &) override { return nullptr; }

private:
    SqliteUserDefaults m_standard;
};

class SimulatedChoice final : public PlatformChoice
{
public:
    explicit SimulatedChoice(std::chrono::milliseconds patience)
        : m_defaults(patience)
        , m_desktop({.clock = &m_clock, .userDefaults = &m_defaults})
    {
        const auto icon = mainBundle().pathForResource(u"demo/files"_s, u"svg"_s);
        populateDemo(m_desktop, icon ? QFileInfo(*icon).absolutePath() : QString());
    }

    Platform &platform() override { return m_desktop.platform(); }
    QString missingSession() const override { return {}; }
    QString sessionName() const override { return {}; }
    QStringList limits() const override
    {
        return {u"This is a simulated desktop: nothing here is real."_s};
    }
    QString accessAdvice() override { return {}; }
    bool requestAccess(std::chrono::milliseconds) override { return false; }
    void setSettingsOpener(std::function<void()>) override { }

private:
    BoottimeClock m_clock;
    SimulatedDefaults m_defaults;
    SimulatedDesktop m_desktop;
};

// What looking for one kind of session has come to.
struct Search
{
    std::unique_ptr<DesktopSession> session;
    QString missing{}; // why there is none
    bool isSilent = false; // it is there, so the session is of no other kind, but does not answer
};

// The X server that DISPLAY names, connected to once, whichever kinds of session are looked for.
struct Server
{
    std::unique_ptr<x11::X11Session> session{};
    QString missing{};

    void find()
    {
        const QByteArray display = qgetenv("DISPLAY");
        if (display.isEmpty())
            missing = u"DISPLAY is not set"_s;
        else if (!session)
            session = x11::X11Session::open(display);
        if (!session && missing.isEmpty()) {
            missing
                = u"the X server on “%1” does not answer"_s.arg(QString::fromLocal8Bit(display));
        }
    }
};

QString unanswered(const QString &what, i3::Listener listener, const QByteArray &path)
{
    const QString text = listener == i3::Listener::Anothers
        ? u"the socket of %1, “%2”, belongs to another user"_s
        : u"%1 does not answer on “%2”"_s;
    return text.arg(what, QString::fromLocal8Bit(path));
}

Search findSway(Server &, Stay)
{
    const QByteArray path = qgetenv("SWAYSOCK");
    if (path.isEmpty())
        return {nullptr, u"SWAYSOCK is not set"_s};
    auto session = i3::I3Session::open(path);
    if (session)
        return {std::move(session)};
    const i3::Listener listener = i3::listenerAt(path);
    return {nullptr, unanswered(u"sway"_s, listener, path), listener == i3::Listener::Own};
}

Search findI3(Server &server, Stay)
{
    server.find();
    // The variable may be that of an i3 that has gone.
    QByteArray path = server.session ? server.session->managerSocket() : QByteArray();
    if (path.isEmpty())
        path = qgetenv("I3SOCK");
    if (path.isEmpty())
        return {nullptr, u"no i3 is running, or I3SOCK is not set"_s};
    auto session = i3::I3Session::open(path, std::move(server.session));
    if (session)
        return {std::move(session)};
    return {nullptr, unanswered(u"i3"_s, i3::listenerAt(path), path)};
}

// For one run a manager has to be there already.
Search findX11(Server &server, Stay stay)
{
    server.find();
    if (!server.session)
        return {nullptr, server.missing};
    if (stay == Stay::OneRun && !server.session->hasManager()) {
        return {
            nullptr,
            u"no window manager that follows the Extended Window Manager Hints runs on “%1”"_s.arg(
                qEnvironmentVariable("DISPLAY"))};
    }
    return {std::move(server.session)};
}

Search findKWin(Server &, Stay)
{
    const QByteArray socket = qgetenv("WAYLAND_DISPLAY");
    if (socket.isEmpty())
        return {nullptr, u"WAYLAND_DISPLAY is not set"_s};
    auto session = kwin::KWinSession::open(socket, sessionBus());
    if (!session)
        return {nullptr, u"no KWin answers on “%1”"_s.arg(QString::fromLocal8Bit(socket))};
    return {std::move(session)};
}

Search findGnome(Server &, Stay)
{
    if (qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY"))
        return {nullptr, u"WAYLAND_DISPLAY is not set"_s};
    auto session = gnome::GnomeSession::open(sessionBus());
    return {std::move(session), u"no GNOME Shell is on the session’s bus"_s};
}

// A kind of session. One that is asked for by name may lack its manager as yet.
struct Driver
{
    QByteArrayView name; // the value of TOVEL_DESKTOP
    const char *hint; // the environment variable without which there is none
    Search (*find)(Server &server, Stay stay);
};

// Those whose sessions have an X server for their X11 programs come before X11 itself.
constexpr Driver Drivers[] = {{"sway", "SWAYSOCK", findSway},
                              {"gnome", "WAYLAND_DISPLAY", findGnome},
                              {"kwin", "WAYLAND_DISPLAY", findKWin},
                              {"i3", "DISPLAY", findI3},
                              {"x11", "DISPLAY", findX11}};

Search findAny(Stay stay)
{
    QStringList reasons;
    QByteArrayView hint;
    Server server;
    for (const Driver &driver : Drivers) {
        if (qEnvironmentVariableIsEmpty(driver.hint))
            continue;
        Search search = driver.find(server, stay);
        if (search.session || search.isSilent)
            return search;
        // Of i3 and other managers under X11, the more common one's.
        if (std::exchange(hint, driver.hint) == driver.hint)
            reasons.removeLast();
        reasons.append(search.missing);
    }
    return {nullptr, reasons.value(0, u"DISPLAY is not set"_s)};
}

const Driver *driverNamed(QByteArrayView name)
{
    const auto *found = std::ranges::find(Drivers, name, &Driver::name);
    return found == std::end(Drivers) ? nullptr : found;
}

} // namespace

AccessText accessText(PlatformChoice &choice)
{
    const QString advice = choice.accessAdvice();
    if (!advice.isEmpty())
        return {false, advice};
    const QString granted
        = u"This session lets Tovel move windows; there is nothing more to allow."_s;
    return {true, (QStringList{granted} + choice.limits()).join(u' ')};
}

std::unique_ptr<PlatformChoice> choosePlatform(Stay stay)
{
    const QByteArray wanted = qgetenv(Variable);
    if (wanted == "simulated")
        return std::make_unique<SimulatedChoice>(patience(stay));
    Search search;
    Server server;
    if (const Driver *driver = driverNamed(wanted))
        search = driver->find(server, Stay::Session);
    else if (wanted.isEmpty())
        search = findAny(stay);
    else if (wanted == "none")
        search.missing = u"TOVEL_DESKTOP asks for none"_s;
    else
        return nullptr;
    if (search.session)
        search.missing.clear();
    return std::make_unique<LinuxChoice>(std::move(search.session), search.missing, patience(stay));
}

QByteArray toolkitPlugins()
{
    // The toolkit would wait for a silent compositor for ever.
    if (!isCompositorAnswering(qgetenv("WAYLAND_DISPLAY"), 2s))
        return "xcb";
    const QByteArray wanted = qgetenv(Variable);
    bool isNative = wanted == "gnome" || wanted == "kwin" || wanted == "sway";
    if (!driverNamed(wanted)) {
        const auto desktops = qgetenv("XDG_CURRENT_DESKTOP").split(':');
        isNative = desktops.contains("GNOME") || desktops.contains("KDE")
            || !qEnvironmentVariableIsEmpty("SWAYSOCK");
    }
    return isNative ? "wayland;xcb" : "xcb;wayland";
}

bool isUsersSession()
{
    const QByteArray wanted = qgetenv(Variable);
    return wanted.isEmpty() || driverNamed(wanted);
}

QString unknownPlatformText()
{
    QStringList names;
    for (const Driver &driver : Drivers)
        names.append(QString::fromLatin1(driver.name));
    return u"TOVEL_DESKTOP is “%1”, but can only be %2, simulated or none"_s.arg(
        QString::fromLocal8Bit(qgetenv(Variable)), names.join(u", "_s));
}

} // namespace tovel
