#include "contract/contract_world.h"
#include "platform/linux/linux_desktop.h"
#include "platform/linux/virtual_keys.h"
#include "platform/session/i3/i3_session.h"
#include "platform/session/x11/x11_session.h"
#include "support/private_session.h"
#include "support/test_client.h"
#include "support/tiling_user.h"

#include <xcb/xproto.h>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

std::uint8_t keycode(std::uint32_t virtualKey)
{
    return static_cast<std::uint8_t>(positionOfVirtualKey(virtualKey).value() + 8);
}

struct ModifierKey
{
    std::uint32_t flag;
    QString keycode;
    std::uint16_t bit;
};

const ModifierKey ModifierKeys[] = {{0x100, u"133"_s, XCB_MOD_MASK_4},
                                    {0x200, u"50"_s, XCB_MOD_MASK_SHIFT},
                                    {0x800, u"64"_s, XCB_MOD_MASK_1},
                                    {0x1000, u"37"_s, XCB_MOD_MASK_CONTROL}};

class X11ContractWorld : public ContractWorld
{
public:
    X11ContractWorld()
        : m_session(managerFromEnvironment(),
                    {.activateAction = qEnvironmentVariable("TOVEL_TEST_ACTIVATION")})
        , m_client(m_session.display())
    {
        m_session.adopt();
    }

    bool start()
    {
        if (!m_session.isReady())
            return false;
        m_desktop = std::make_unique<LinuxDesktop>(openDriver());
        return m_desktop->hasSession();
    }

    Platform &platform() override { return *m_desktop; }

    std::uint32_t open(const ContractWindow &window, std::uint32_t number) override
    {
        ClientWindow facts{.number = number,
                           .application = window.application,
                           .title = window.title,
                           .desktop = static_cast<std::uint32_t>(window.desktop),
                           .size = window.size};
        if (window.kind == ContractWindowKind::Dialog)
            facts.type = "_NET_WM_WINDOW_TYPE_DIALOG";
        if (window.kind == ContractWindowKind::Dock)
            facts.type = "_NET_WM_WINDOW_TYPE_DOCK";
        return m_client.open(facts);
    }

    void close(std::uint32_t window) override { m_client.close(window); }
    void minimize(std::uint32_t window) override { m_client.minimize(window); }
    void makeFullScreen(std::uint32_t window) override
    {
        m_client.addState(window, "_NET_WM_STATE_FULLSCREEN");
    }
    void putOnAllDesktops(std::uint32_t window) override
    {
        m_client.askForDesktop(window, allDesktops);
    }
    void showDesktop(int desktop) override
    {
        m_client.showDesktop(static_cast<std::uint32_t>(desktop));
    }

    void press(std::uint32_t keyCode, std::uint32_t modifiers, double seconds) override
    {
        QStringList keys;
        for (const ModifierKey &modifier : ModifierKeys) {
            if (modifiers & modifier.flag)
                keys.append(modifier.keycode);
        }
        keys.append(QString::number(keycode(keyCode)));
        type(u"keydown"_s, keys);
        pass(seconds);
        type(u"keyup"_s, keys);
        pass(0.02); // a finger needs no less for its next press
    }
    void toggleLocks() override { type(u"key"_s, {u"Caps_Lock"_s, u"Num_Lock"_s}); }
    void changeKeyboard(bool usual) override
    {
        m_session.run(u"setxkbmap"_s,
                      {u"-layout"_s, u"us"_s, u"-variant"_s, usual ? QString() : u"dvorak"_s});
        if (!usual)
            m_client.swapModifiers(XCB_MAP_INDEX_3, XCB_MAP_INDEX_4);
    }
    bool take(std::uint32_t keyCode, std::uint32_t modifiers, bool locked) override
    {
        unsigned state = locked ? XCB_MOD_MASK_LOCK | XCB_MOD_MASK_2 : 0;
        for (const ModifierKey &modifier : ModifierKeys)
            state |= modifiers & modifier.flag ? modifier.bit : 0U;
        return m_client.grabKey(keycode(keyCode), static_cast<std::uint16_t>(state));
    }

protected:
    virtual std::unique_ptr<DesktopSession> openDriver()
    {
        return x11::X11Session::open(m_session.display());
    }

    PrivateSession m_session;
    TestClient m_client;

private:
    void type(const QString &action, const QStringList &keys)
    {
        m_session.run(u"xdotool"_s, QStringList{action, u"--delay"_s, u"0"_s} + keys);
    }

    std::unique_ptr<LinuxDesktop> m_desktop;
};

// i3, whose two screens are made up. What nobody can do there by the Hints, its own program does.
class I3ContractWorld final : public X11ContractWorld
{
public:
    int displayCount() const override { return 2; }
    bool minimizesInPlace() const override { return false; }
    std::uint32_t open(const ContractWindow &window, std::uint32_t wanted) override
    {
        const std::uint32_t number = X11ContractWorld::open(window, wanted);
        if (window.kind == ContractWindowKind::Dock)
            return number;
        eventually([&] { return m_client.isManaged(number); });
        tell(number,
             u"move --no-auto-back-and-forth container to workspace number %1"_s.arg(window.desktop
                                                                                     + 1));
        return number;
    }
    void minimize(std::uint32_t window) override { tell(window, u"move scratchpad"_s); }
    void putOnAllDesktops(std::uint32_t window) override { tell(window, u"sticky enable"_s); }
    void showDesktop(int desktop) override
    {
        m_user.command(u"workspace --no-auto-back-and-forth number %1"_s.arg(desktop + 1));
    }

private:
    std::unique_ptr<DesktopSession> openDriver() override
    {
        auto x11 = x11::X11Session::open(m_session.display());
        const QByteArray socket = x11->managerSocket();
        return i3::I3Session::open(socket, std::move(x11));
    }
    void tell(std::uint32_t window, const QString &command)
    {
        m_user.command(u"[id=%1] "_s.arg(window) + command);
    }

    TilingUser m_user{m_session};
};

template <typename World>
std::unique_ptr<ContractWorld> makeWorld()
{
    auto world = std::make_unique<World>();
    if (!world->start())
        return nullptr;
    return world;
}

} // namespace

std::unique_ptr<ContractWorld> makeX11World() { return makeWorld<X11ContractWorld>(); }

std::unique_ptr<ContractWorld> makeI3World() { return makeWorld<I3ContractWorld>(); }

} // namespace tovel
