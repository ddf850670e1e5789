#pragma once

#include "platform/hot_keys.h"
#include "platform/session/desktop_session.h"

#include <map>
#include <vector>

namespace tovel {

// Global hot keys by the session's. Handlers get no event: it is null, as is the next handler.
class LinuxHotKeys final : public HotKeys
{
public:
    // Borrows; null where there is no session: handlers can be installed then, and no key can be
    // registered.
    explicit LinuxHotKeys(DesktopSession *session);
    ~LinuxHotKeys() override;

    LinuxHotKeys(const LinuxHotKeys &) = delete;
    LinuxHotKeys &operator=(const LinuxHotKeys &) = delete;

    EventTargetRef GetApplicationEventTarget() override;
    EventHandlerInstallation InstallEventHandler(EventTargetRef target, EventHandlerUPP handler,
                                                 std::span<const EventTypeSpec> types,
                                                 void *userData) override;
    HotKeyRegistration RegisterEventHotKey(std::uint32_t keyCode, std::uint32_t modifiers,
                                           EventHotKeyID id, EventTargetRef target,
                                           std::uint32_t options) override;
    OSStatus UnregisterEventHotKey(EventHotKeyRef hotKey) override;

private:
    struct Handler
    {
        EventHandlerUPP function = nullptr;
        void *userData = nullptr;
    };

    bool isRegistered(const SessionKey &key) const;
    void press(const SessionKey &key) const;

    DesktopSession *m_session;
    std::vector<Handler> m_handlers;
    std::map<EventHotKeyRef, SessionKey> m_keys;
    std::uint64_t m_lastHandle = 0;
};

} // namespace tovel
