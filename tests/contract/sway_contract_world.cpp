#include "contract/contract_world.h"
#include "platform/linux/linux_desktop.h"
#include "platform/linux/virtual_keys.h"
#include "platform/session/i3/i3_session.h"
#include "support/test_client.h"
#include "support/tiling_user.h"
#include "support/virtual_keyboard.h"
#include "support/wayland_client.h"

#include <map>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

constexpr std::pair<std::uint32_t, std::uint32_t> ModifierBits[]
    = {{0x100, 64}, {0x200, 1}, {0x800, 8}, {0x1000, 4}};
constexpr std::uint32_t Locks = 2 | 16;

class SwayContractWorld final : public ContractWorld
{
public:
    bool start()
    {
        if (!m_session.isReady())
            return false;
        m_session.adopt();
        const QByteArray socket = qgetenv("WAYLAND_DISPLAY");
        m_native = std::make_unique<WaylandClient>(socket);
        m_x11 = std::make_unique<TestClient>(m_session.display());
        m_keyboard = std::make_unique<VirtualKeyboard>(socket);
        m_desktop = std::make_unique<LinuxDesktop>(i3::I3Session::open(qgetenv("SWAYSOCK")));
        return m_desktop->hasSession() && m_native->isConnected() && m_keyboard->isConnected();
    }

    Platform &platform() override { return *m_desktop; }
    int displayCount() const override { return 2; }
    bool usesNumbersAgain() const override { return false; }
    bool tellsCursor() const override { return false; }
    bool minimizesInPlace() const override { return false; }
    bool tellsDocks() const override { return false; }
    bool tellsTakenKeys() const override { return false; }

    // Of Wayland windows nobody is told that they are dialogs: those are X11's.
    std::uint32_t open(const ContractWindow &window, std::uint32_t) override
    {
        const auto before = numbers();
        Open made;
        if (window.kind == ContractWindowKind::Dialog) {
            made.x11 = m_x11->open({.application = window.application,
                                    .title = window.title,
                                    .type = "_NET_WM_WINDOW_TYPE_DIALOG",
                                    .size = window.size});
        } else {
            made.native = m_native->open(
                {.application = window.application, .title = window.title, .size = window.size});
        }
        made.title = window.title.value_or(QString());
        const bool isThere = eventually([&] {
            if (made.x11 != 0)
                m_x11->redraw(made.x11);
            return numbers().size() > before.size();
        });
        if (!isThere)
            return 0;
        const std::uint32_t number = numbers().last();
        m_windows[number] = made;
        tell(number,
             u"move --no-auto-back-and-forth container to workspace number %1"_s.arg(window.desktop
                                                                                     + 1));
        return number;
    }
    void close(std::uint32_t window) override
    {
        const auto found = m_windows.extract(window);
        if (found.empty())
            return;
        if (found.mapped().x11 != 0)
            m_x11->close(found.mapped().x11);
        else
            m_native->close(found.mapped().native);
    }
    void minimize(std::uint32_t window) override { tell(window, u"move scratchpad"_s); }
    void makeFullScreen(std::uint32_t window) override
    {
        m_native->makeFullScreen(m_windows[window].native);
    }
    void putOnAllDesktops(std::uint32_t window) override { tell(window, u"sticky enable"_s); }
    void showDesktop(int desktop) override
    {
        m_user.command(u"workspace --no-auto-back-and-forth number %1"_s.arg(desktop + 1));
    }
    OwnWindow own(std::uint32_t window) const override
    {
        const auto found = m_windows.find(window);
        return {.title = found == m_windows.end() ? u"None of these"_s : found->second.title};
    }

    void press(std::uint32_t keyCode, std::uint32_t modifiers, double seconds) override
    {
        std::uint32_t held = 0;
        for (const auto &[flag, bit] : ModifierBits)
            held |= modifiers & flag ? bit : 0;
        const std::uint32_t key = positionOfVirtualKey(keyCode).value();
        m_keyboard->setModifiers(held, m_locked);
        m_keyboard->holdKey(key, true);
        pass(seconds);
        m_keyboard->holdKey(key, false);
        m_keyboard->setModifiers(0, m_locked);
    }
    void toggleLocks() override { m_locked ^= Locks; }
    void changeKeyboard(bool usual) override { m_keyboard->setVariant(usual ? "" : "dvorak"); }
    bool take(std::uint32_t, std::uint32_t, bool) override { return false; }

private:
    struct Open
    {
        int native = 0;
        std::uint32_t x11 = 0;
        QString title{};
    };

    // Oldest first.
    QList<std::uint32_t> numbers() const
    {
        QList<std::uint32_t> numbers;
        for (const QJsonObject &window : m_user.windows())
            numbers.append(static_cast<std::uint32_t>(window["id"_L1].toInteger()));
        std::ranges::sort(numbers);
        return numbers;
    }
    void tell(std::uint32_t window, const QString &command)
    {
        m_user.command(u"[con_id=%1] "_s.arg(window) + command);
    }

    PrivateSession m_session{Manager::Sway};
    TilingUser m_user{m_session};
    std::unique_ptr<WaylandClient> m_native;
    std::unique_ptr<TestClient> m_x11;
    std::unique_ptr<VirtualKeyboard> m_keyboard;
    std::unique_ptr<LinuxDesktop> m_desktop;
    std::map<std::uint32_t, Open> m_windows;
    std::uint32_t m_locked = 0;
};

} // namespace

std::unique_ptr<ContractWorld> makeSwayWorld()
{
    auto world = std::make_unique<SwayContractWorld>();
    if (!world->start())
        return nullptr;
    return world;
}

} // namespace tovel
