#pragma once

#include "platform/hot_keys.h"

#include <functional>

namespace tovel {

struct TovelShortcut;

// The one key that works everywhere, as the system knows it. Which key that is, and what to tell
// the user when it cannot be had, is others' to decide.
class GlobalShortcut final
{
public:
    // Borrows the system's hot keys. The action runs on the main thread at each press.
    GlobalShortcut(HotKeys &hotKeys, std::function<void()> action);
    // Gives the key up.
    ~GlobalShortcut();

    GlobalShortcut(const GlobalShortcut &) = delete;
    GlobalShortcut &operator=(const GlobalShortcut &) = delete;

    // To be called once, before anything is registered. False when the system refuses.
    bool installHandler();

    // False when the key cannot be had; none is registered then. Only while none is registered.
    bool registerShortcut(const TovelShortcut &shortcut);
    void unregisterShortcut();
    bool isRegistered() const { return m_hotKey != EventHotKeyRef{}; }

private:
    static OSStatus handle(void *nextHandler, void *event, void *userData);

    HotKeys &m_hotKeys;
    std::function<void()> m_action;
    EventHandlerRef m_handler{};
    EventHotKeyRef m_hotKey{};
};

} // namespace tovel
