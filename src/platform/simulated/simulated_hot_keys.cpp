#include "platform/simulated/simulated_hot_keys.h"

#include "platform/simulated/simulated_state.h"

#include <algorithm>

namespace tovel {

namespace {

constexpr EventTargetRef applicationTarget{1};
constexpr std::uint32_t lastKeyCode = 127;

QString journalLine(const char *verb, const SimulatedDesktop::HotKey &key)
{
    return QStringLiteral("%1 %2 %3")
        .arg(QLatin1StringView(verb))
        .arg(key.keyCode)
        .arg(key.modifiers, 0, 16);
}

} // namespace

SimulatedHotKeys::SimulatedHotKeys(SimulatedState &state)
    : m_state(state)
{ }

EventTargetRef SimulatedHotKeys::GetApplicationEventTarget() { return applicationTarget; }

EventHandlerInstallation SimulatedHotKeys::InstallEventHandler(EventTargetRef target,
                                                               EventHandlerUPP handler,
                                                               std::span<const EventTypeSpec> types,
                                                               void *userData)
{
    if (m_state.world.installHandlerStatus != noErr)
        return {m_state.world.installHandlerStatus, {}};
    if (target != applicationTarget || !handler || types.empty())
        return {};
    const bool wantsHotKeys = std::ranges::any_of(types, [](const EventTypeSpec &type) {
        return type.eventClass == kEventClassKeyboard && type.eventKind == kEventHotKeyPressed;
    });
    if (wantsHotKeys)
        m_state.hotKeyHandlers.push_back({handler, userData});
    return {noErr, EventHandlerRef{++m_lastHandle}};
}

HotKeyRegistration SimulatedHotKeys::RegisterEventHotKey(std::uint32_t keyCode,
                                                         std::uint32_t modifiers, EventHotKeyID id,
                                                         EventTargetRef target, std::uint32_t)
{
    if (target != applicationTarget)
        return {};
    if (m_state.world.registerStatus != noErr)
        return {m_state.world.registerStatus, {}};
    if (keyCode > lastKeyCode)
        return {eventHotKeyInvalidErr, {}};
    const bool isOurs = std::ranges::any_of(m_state.hotKeys, [=](const auto &entry) {
        return entry.second.keyCode == keyCode && entry.second.modifiers == modifiers;
    });
    if (isOurs || m_state.takenHotKeys.contains(std::pair(keyCode, modifiers)))
        return {eventHotKeyExistsErr, {}};
    const SimulatedDesktop::HotKey hotKey{keyCode, modifiers, id.signature, id.id};
    m_state.hotKeys.emplace(++m_lastHandle, hotKey);
    m_state.note(journalLine("register", hotKey));
    return {noErr, EventHotKeyRef{m_lastHandle}};
}

OSStatus SimulatedHotKeys::UnregisterEventHotKey(EventHotKeyRef hotKey)
{
    if (m_state.world.unregisterStatus != noErr)
        return m_state.world.unregisterStatus;
    const auto node = m_state.hotKeys.extract(static_cast<std::uint64_t>(hotKey));
    if (node.empty())
        return eventHotKeyInvalidErr;
    m_state.note(journalLine("unregister", node.mapped()));
    return noErr;
}

} // namespace tovel
