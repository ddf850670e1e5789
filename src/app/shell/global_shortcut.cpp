#include "app/shell/global_shortcut.h"

#include "settings/shortcut.h"

#include <array>
#include <utility>

namespace tovel {

namespace {

constexpr EventHotKeyID identity{.signature = 0x544F564C, .id = 1}; // "TOVL"

} // namespace

GlobalShortcut::GlobalShortcut(HotKeys &hotKeys, std::function<void()> action)
    : m_hotKeys(hotKeys)
    , m_action(std::move(action))
{ }

GlobalShortcut::~GlobalShortcut() { unregisterShortcut(); }

bool GlobalShortcut::installHandler()
{
    constexpr std::array types{EventTypeSpec{kEventClassKeyboard, kEventHotKeyPressed}};
    const EventHandlerInstallation installation = m_hotKeys.InstallEventHandler(
        m_hotKeys.GetApplicationEventTarget(), &GlobalShortcut::handle, types, this);
    m_handler = installation.handler;
    return installation.status == noErr;
}

bool GlobalShortcut::registerShortcut(const TovelShortcut &shortcut)
{
    const HotKeyRegistration registration = m_hotKeys.RegisterEventHotKey(
        shortcut.keyCode, shortcut.modifiers, identity, m_hotKeys.GetApplicationEventTarget(), 0);
    if (registration.status != noErr)
        return false;
    m_hotKey = registration.hotKey;
    return true;
}

void GlobalShortcut::unregisterShortcut()
{
    if (isRegistered())
        m_hotKeys.UnregisterEventHotKey(std::exchange(m_hotKey, EventHotKeyRef{}));
}

OSStatus GlobalShortcut::handle(void *, void *, void *userData)
{
    if (!userData)
        return eventNotHandledErr;
    static_cast<GlobalShortcut *>(userData)->m_action();
    return noErr;
}

} // namespace tovel
