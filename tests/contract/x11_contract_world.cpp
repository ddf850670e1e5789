#include "contract/contract_world.h"
#include "platform/linux/linux_desktop.h"
#include "platform/linux/x11/x11_session.h"
#include "support/private_session.h"
#include "support/test_client.h"

#include <QTest>

namespace tovel {

namespace {

class X11ContractWorld final : public ContractWorld
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
        m_desktop = std::make_unique<LinuxDesktop>(x11::X11Session::open(m_session.display()));
        return m_desktop->hasSession();
    }

    Platform &platform() override { return *m_desktop; }

    std::uint32_t open(const ContractWindow &window) override
    {
        ClientWindow facts{.application = window.application,
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

    bool eventually(const std::function<bool()> &condition) override
    {
        return tovel::eventually(condition);
    }
    void pass(double seconds) override { QTest::qWait(qRound(seconds * 1000)); }

private:
    PrivateSession m_session;
    TestClient m_client;
    std::unique_ptr<LinuxDesktop> m_desktop;
};

} // namespace

std::unique_ptr<ContractWorld> makeX11World()
{
    auto world = std::make_unique<X11ContractWorld>();
    if (!world->start())
        return nullptr;
    return world;
}

} // namespace tovel
