#include "platform/linux/linux_hot_keys.h"

#include "platform/linux/virtual_keys.h"

#include <algorithm>
#include <optional>

namespace tovel {

namespace {

constexpr EventTargetRef applicationTarget{1};

constexpr std::uint32_t commandKey = 0x100;
constexpr std::uint32_t shiftKey = 0x200;
constexpr std::uint32_t optionKey = 0x800;
constexpr std::uint32_t controlKey = 0x1000;

std::optional<SessionKey> sessionKey(std::uint32_t keyCode, std::uint32_t modifiers)
{
    const auto position = positionOfVirtualKey(keyCode);
    if (!position || (modifiers & ~(commandKey | shiftKey | optionKey | controlKey)) != 0)
        return std::nullopt;
    return SessionKey{.position = *position,
                      .shift = (modifiers & shiftKey) != 0,
                      .control = (modifiers & controlKey) != 0,
                      .alt = (modifiers & optionKey) != 0,
                      .super = (modifiers & commandKey) != 0};
}

} // namespace

LinuxHotKeys::LinuxHotKeys(DesktopSession *session)
    : m_session(session)
{
    if (m_session)
        m_session->setKeyHandler([this](const SessionKey &key) { press(key); });
}

LinuxHotKeys::~LinuxHotKeys()
{
    if (m_session)
        m_session->setKeyHandler({});
}

EventTargetRef LinuxHotKeys::GetApplicationEventTarget() { return applicationTarget; }

EventHandlerInstallation LinuxHotKeys::InstallEventHandler(EventTargetRef target,
                                                           EventHandlerUPP handler,
                                                           std::span<const EventTypeSpec> types,
                                                           void *userData)
{
    if (target != applicationTarget || !handler || types.empty())
        return {};
    const bool wantsHotKeys = std::ranges::any_of(types, [](const EventTypeSpec &type) {
        return type.eventClass == kEventClassKeyboard && type.eventKind == kEventHotKeyPressed;
    });
    if (wantsHotKeys)
        m_handlers.push_back({handler, userData});
    return {noErr, EventHandlerRef{++m_lastHandle}};
}

HotKeyRegistration LinuxHotKeys::RegisterEventHotKey(std::uint32_t keyCode, std::uint32_t modifiers,
                                                     EventHotKeyID, EventTargetRef target,
                                                     std::uint32_t)
{
    if (target != applicationTarget)
        return {};
    const auto key = sessionKey(keyCode, modifiers);
    if (!m_session || !key)
        return {eventHotKeyInvalidErr, {}};
    const KeyGrab grab = isRegistered(*key) ? KeyGrab::Taken : m_session->grabKey(*key);
    if (grab != KeyGrab::Granted)
        return {grab == KeyGrab::Taken ? eventHotKeyExistsErr : eventHotKeyInvalidErr, {}};
    const EventHotKeyRef hotKey{++m_lastHandle};
    m_keys.emplace(hotKey, *key);
    return {noErr, hotKey};
}

OSStatus LinuxHotKeys::UnregisterEventHotKey(EventHotKeyRef hotKey)
{
    const auto node = m_keys.extract(hotKey);
    if (node.empty())
        return eventHotKeyInvalidErr;
    m_session->releaseKey(node.mapped());
    return noErr;
}

bool LinuxHotKeys::isRegistered(const SessionKey &key) const
{
    return std::ranges::any_of(m_keys, [&](const auto &entry) { return entry.second == key; });
}

void LinuxHotKeys::press(const SessionKey &key) const
{
    // An earlier press's handler may have given the key up.
    if (!isRegistered(key))
        return;
    // The handler installed last is asked first. A copy, because handlers may install others.
    const auto handlers = m_handlers;
    for (auto it = handlers.rbegin(); it != handlers.rend(); ++it) {
        if (it->function(nullptr, nullptr, it->userData) == noErr)
            return;
    }
}

} // namespace tovel
