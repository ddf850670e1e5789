#include "contract/contract_world.h"
#include "platform/linux/linux_desktop.h"
#include "platform/linux/virtual_keys.h"
#include "platform/session/gnome/gnome_session.h"
#include "support/gnome_user.h"
#include "support/private_session.h"
#include "support/wayland_client.h"

#include <QJsonArray>
#include <QTest>

#include <map>

#include <linux/input-event-codes.h>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

struct ModifierKey
{
    std::uint32_t flag;
    std::uint32_t position;
    const char16_t *name;
};

constexpr ModifierKey ModifierKeys[] = {{0x100, KEY_LEFTMETA, u"<Super>"},
                                        {0x200, KEY_LEFTSHIFT, u"<Shift>"},
                                        {0x800, KEY_LEFTALT, u"<Alt>"},
                                        {0x1000, KEY_LEFTCTRL, u"<Control>"}};

class GnomeContractWorld final : public ContractWorld
{
public:
    bool start()
    {
        if (!m_session.isReady())
            return false;
        m_session.adopt();
        m_client = std::make_unique<WaylandClient>(qgetenv("WAYLAND_DISPLAY"));
        m_desktop = std::make_unique<LinuxDesktop>(gnome::GnomeSession::open(m_user.bus()));
        return m_desktop->hasSession() && m_client->isConnected();
    }

    Platform &platform() override { return *m_desktop; }
    bool usesNumbersAgain() const override { return false; }
    bool tellsDocks() const override { return false; }

    std::uint32_t open(const ContractWindow &window, std::uint32_t) override
    {
        const bool isDialog = window.kind == ContractWindowKind::Dialog;
        const auto before = numbers();
        const int handle = m_client->open({.application = window.application,
                                           .title = window.title,
                                           .isDialog = isDialog,
                                           .size = window.size});
        if (!eventually([&] { return numbers().size() == before.size() + (isDialog ? 2 : 1); }))
            return 0;
        std::uint32_t number = 0;
        for (const std::uint32_t candidate : numbers()) {
            if (before.contains(candidate))
                continue;
            // It comes to the front when it is shown, which is a little later.
            const auto made = u"numbered(%1)."_s.arg(candidate);
            if (!m_user.holds(made + u"get_compositor_private().visible"_s))
                return 0;
            if (m_user.evaluate(made + u"get_transient_for() !== null"_s).toBool() == isDialog)
                number = candidate;
        }
        m_handles[number] = handle;
        if (window.desktop > 0) {
            m_user.evaluate(u"numbered(%1).change_workspace_by_index(%2, false)"_s.arg(number).arg(
                window.desktop));
        }
        return number;
    }
    void close(std::uint32_t window) override
    {
        if (const auto found = m_handles.extract(window); !found.empty())
            m_client->close(found.mapped());
    }
    void minimize(std::uint32_t window) override { m_client->minimize(m_handles[window]); }
    void makeFullScreen(std::uint32_t window) override
    {
        m_client->makeFullScreen(m_handles[window]);
    }
    void putOnAllDesktops(std::uint32_t window) override
    {
        m_user.evaluate(u"numbered(%1).stick()"_s.arg(window));
    }
    void showDesktop(int desktop) override
    {
        m_user.evaluate(
            u"row[%1].activate(global.display.get_current_time_roundtrip())"_s.arg(desktop));
    }
    OwnWindow own(std::uint32_t window) const override
    {
        const QJsonValue title
            = m_user.evaluate(u"numbered(%1)?.get_title() ?? 'None of these'"_s.arg(window));
        return {.title = title.toString()};
    }

    void press(std::uint32_t keyCode, std::uint32_t modifiers, double seconds) override
    {
        QList<std::uint32_t> keys;
        for (const ModifierKey &modifier : ModifierKeys) {
            if (modifiers & modifier.flag)
                keys.append(modifier.position);
        }
        keys.append(positionOfVirtualKey(keyCode).value());
        for (const std::uint32_t key : keys)
            m_user.holdKey(key, true);
        pass(seconds);
        for (const std::uint32_t key : keys)
            m_user.holdKey(key, false);
        pass(0.02);
    }
    void toggleLocks() override
    {
        for (const std::uint32_t key : {KEY_CAPSLOCK, KEY_NUMLOCK}) {
            m_user.holdKey(key, true);
            m_user.holdKey(key, false);
        }
    }
    void changeKeyboard(bool usual) override
    {
        // Its arguments have become more, and it asynchronous, from one version to the next.
        m_user.evaluate(u"(backend => backend.set_keymap\n"
                        "    ? backend.set_keymap(...['us', '%1', '', 'pc105'].slice(0, "
                        "backend.set_keymap.length))\n"
                        "    : backend.set_keymap_async('us', '%1', '', 'pc105', null, null)\n"
                        ")(Meta.get_backend())"_s.arg(usual ? QString() : u"dvorak"_s));
    }
    bool take(std::uint32_t keyCode, std::uint32_t modifiers, bool) override
    {
        QString key;
        for (const ModifierKey &modifier : ModifierKeys) {
            if (modifiers & modifier.flag)
                key += QStringView(modifier.name);
        }
        key += u"0x%1"_s.arg(positionOfVirtualKey(keyCode).value() + 8, 0, 16);
        const bool isTaken = m_taken.contains(key)
            || m_user.evaluate(u"global.display.grab_accelerator('%1', 0)"_s.arg(key)).toInt() != 0;
        if (isTaken)
            m_taken.insert(key);
        return isTaken;
    }

private:
    // Oldest first.
    QList<std::uint32_t> numbers() const
    {
        QList<std::uint32_t> numbers;
        const auto told = m_user.evaluate(u"listed.map(w => w.get_stable_sequence())"_s).toArray();
        for (const QJsonValue &number : told)
            numbers.append(static_cast<std::uint32_t>(number.toInteger()));
        return numbers;
    }

    PrivateSession m_session{Manager::Gnome, {.evaluates = true}};
    GnomeUser m_user;
    std::unique_ptr<WaylandClient> m_client;
    std::unique_ptr<LinuxDesktop> m_desktop;
    std::map<std::uint32_t, int> m_handles;
    QSet<QString> m_taken; // keys
};

} // namespace

std::unique_ptr<ContractWorld> makeGnomeWorld()
{
    auto world = std::make_unique<GnomeContractWorld>();
    if (!world->start())
        return nullptr;
    return world;
}

} // namespace tovel
