#pragma once

#include "platform/hot_keys.h"

namespace tovel {

// A session that offers no global keys: handlers can be installed, and no key can be registered.
class NoHotKeys final : public HotKeys
{
public:
    EventTargetRef GetApplicationEventTarget() override { return EventTargetRef{1}; }

    EventHandlerInstallation InstallEventHandler(EventTargetRef, EventHandlerUPP handler,
                                                 std::span<const EventTypeSpec>, void *) override
    {
        if (!handler)
            return {paramErr, {}};
        return {noErr, EventHandlerRef{1}};
    }

    HotKeyRegistration RegisterEventHotKey(std::uint32_t, std::uint32_t, EventHotKeyID,
                                           EventTargetRef, std::uint32_t) override
    {
        return {eventHotKeyInvalidErr, {}};
    }

    OSStatus UnregisterEventHotKey(EventHotKeyRef) override { return eventHotKeyInvalidErr; }
};

} // namespace tovel
