#include "contract/contract_world.h"
#include "platform/linux/linux_desktop.h"
#include "platform/linux/virtual_keys.h"
#include "platform/session/kwin/kwin_session.h"
#include "support/kwin_user.h"
#include "support/private_session.h"
#include "support/wayland_client.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QFile>
#include <map>

#include <linux/input-event-codes.h>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

struct ModifierKey
{
    std::uint32_t flag;
    std::uint32_t position;
    Qt::KeyboardModifier meaning;
};

constexpr ModifierKey ModifierKeys[] = {{0x100, KEY_LEFTMETA, Qt::MetaModifier},
                                        {0x200, KEY_LEFTSHIFT, Qt::ShiftModifier},
                                        {0x800, KEY_LEFTALT, Qt::AltModifier},
                                        {0x1000, KEY_LEFTCTRL, Qt::ControlModifier}};

// The letters that the suite takes, in the usual layout.
constexpr std::pair<std::uint32_t, int> Letters[]
    = {{4, Qt::Key_H}, {16, Qt::Key_Y}, {17, Qt::Key_T}, {38, Qt::Key_J}};

class KWinContractWorld final : public ContractWorld
{
public:
    KWinContractWorld()
        : m_session(Manager::KWin)
    { }

    bool start()
    {
        if (!m_session.isReady())
            return false;
        m_session.adopt();
        const QByteArray socket = qgetenv("WAYLAND_DISPLAY");
        m_client = std::make_unique<WaylandClient>(socket);
        m_user = std::make_unique<KWinUser>(socket);
        auto session = kwin::KWinSession::open(socket, QDBusConnection::sessionBus());
        m_driver = session.get();
        m_desktop = std::make_unique<LinuxDesktop>(std::move(session));
        return m_driver && m_client->isConnected() && m_user->isConnected();
    }

    Platform &platform() override { return *m_desktop; }
    bool usesNumbersAgain() const override { return false; }
    bool tellsCursor() const override { return false; }

    // The driver's numbers are its own: the window that comes last is this one, but for the parent
    // that comes after a dialog.
    std::uint32_t open(const ContractWindow &window, std::uint32_t) override
    {
        const auto before = m_user->windows();
        const int handle = m_client->open({.application = window.application,
                                           .title = window.title,
                                           .isDialog = window.kind == ContractWindowKind::Dialog,
                                           .isPanel = window.kind == ContractWindowKind::Dock,
                                           .size = window.size});
        const qsizetype more = window.kind == ContractWindowKind::Dialog ? 2 : 1;
        if (!eventually([&] { return m_user->windows().size() == before.size() + more; }))
            return 0;
        // KWin tells of a window before it has its place.
        const bool isPlaced = eventually([&] {
            m_driver->invalidate();
            return !m_driver->windows().isEmpty() && !m_driver->windows().last().frame.isEmpty();
        });
        if (!isPlaced)
            return 0;
        const QList<std::uint32_t> all = m_user->windows();
        const std::uint32_t known = all[all.size() - more];
        if (window.desktop > 0)
            m_user->putOnDesktop(known, window.desktop);
        const std::uint32_t number = m_driver->windows()[all.size() - more].id;
        m_windows[number] = {handle, known};
        return number;
    }
    void close(std::uint32_t window) override
    {
        if (const auto found = m_windows.extract(window); !found.empty())
            m_client->close(found.mapped().handle);
    }
    void minimize(std::uint32_t window) override { m_client->minimize(m_windows[window].handle); }
    void makeFullScreen(std::uint32_t window) override
    {
        m_client->makeFullScreen(m_windows[window].handle);
    }
    void putOnAllDesktops(std::uint32_t window) override
    {
        m_user->putOnAllDesktops(m_windows[window].known);
    }
    void showDesktop(int desktop) override { m_user->showDesktop(desktop); }
    OwnWindow own(std::uint32_t window) const override
    {
        for (const SessionWindow &candidate : m_driver->windows()) {
            if (candidate.id == window)
                return {.title = candidate.title.value_or(QString())};
        }
        return {.title = u"None of these"_s};
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
            m_user->holdKey(key, true);
        pass(seconds);
        // The modifiers go first, as fingers do now and then.
        for (const std::uint32_t key : keys)
            m_user->holdKey(key, false);
        pass(0.02);
    }
    void toggleLocks() override
    {
        for (const std::uint32_t key : {KEY_CAPSLOCK, KEY_NUMLOCK}) {
            m_user->holdKey(key, true);
            m_user->holdKey(key, false);
        }
    }
    void changeKeyboard(bool usual) override
    {
        m_session.write(u"config/kxkbrc"_s,
                        u"[Layout]\nUse=true\nLayoutList=us\nVariantList=%1\n"_s.arg(
                            usual ? QString() : u"dvorak"_s));
        QDBusConnection::sessionBus().send(
            QDBusMessage::createSignal(u"/Layouts"_s, u"org.kde.keyboard"_s, u"reloadConfig"_s));
    }
    bool take(std::uint32_t keyCode, std::uint32_t modifiers, bool) override
    {
        const auto *letter = std::ranges::find(Letters, keyCode, [](auto it) { return it.first; });
        int key = letter->second;
        for (const ModifierKey &modifier : ModifierKeys)
            key |= modifiers & modifier.flag ? int(modifier.meaning) : 0;
        const QStringList action{u"others"_s, u"key-%1"_s.arg(keyCode), u"Others"_s, u"Key"_s};
        const auto ask = [](const QString &method, const QVariantList &arguments) {
            auto call = QDBusMessage::createMethodCall(
                u"org.kde.kglobalaccel"_s, u"/kglobalaccel"_s, u"org.kde.KGlobalAccel"_s, method);
            call.setArguments(arguments);
            return QDBusConnection::sessionBus().call(call).arguments().value(0);
        };
        ask(u"doRegister"_s, {action});
        const QVariant taken
            = ask(u"setShortcut"_s, {action, QVariant::fromValue(QList<int>{key}), 6U});
        return qdbus_cast<QList<int>>(taken) == QList<int>{key};
    }

private:
    struct Open
    {
        int handle = 0;
        std::uint32_t known = 0; // KWin's number
    };

    PrivateSession m_session;
    std::unique_ptr<WaylandClient> m_client;
    std::unique_ptr<KWinUser> m_user;
    std::unique_ptr<LinuxDesktop> m_desktop;
    kwin::KWinSession *m_driver = nullptr;
    std::map<std::uint32_t, Open> m_windows;
};

} // namespace

std::unique_ptr<ContractWorld> makeKWinWorld()
{
    auto world = std::make_unique<KWinContractWorld>();
    if (!world->start())
        return nullptr;
    return world;
}

} // namespace tovel
