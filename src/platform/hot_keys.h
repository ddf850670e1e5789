#pragma once

#include <cstdint>
#include <span>

namespace tovel {

using OSStatus = std::int32_t;
inline constexpr OSStatus noErr = 0;
inline constexpr OSStatus eventNotHandledErr = -9874;
inline constexpr OSStatus eventHotKeyExistsErr = -9878;
inline constexpr OSStatus eventHotKeyInvalidErr = -9879;
inline constexpr OSStatus paramErr = -50;

inline constexpr std::uint32_t kEventClassKeyboard = 0x6B657962; // "keyb"
inline constexpr std::uint32_t kEventHotKeyPressed = 5;

// Handles; 0 is none.
enum class EventTargetRef : std::uint64_t {};
enum class EventHandlerRef : std::uint64_t {};
enum class EventHotKeyRef : std::uint64_t {};

struct EventTypeSpec
{
    std::uint32_t eventClass = 0;
    std::uint32_t eventKind = 0;
};

struct EventHotKeyID
{
    std::uint32_t signature = 0;
    std::uint32_t id = 0;
};

// Called on the main thread, from the event loop, once for each press however long it is held. The
// user data is what the handler was installed with; the other two may be null. What returns noErr
// has taken the press; otherwise the handler installed before it is asked.
using EventHandlerUPP = OSStatus (*)(void *nextHandler, void *event, void *userData);

struct EventHandlerInstallation
{
    OSStatus status = paramErr;
    EventHandlerRef handler{};
};

struct HotKeyRegistration
{
    OSStatus status = paramErr;
    EventHotKeyRef hotKey{};
};

// Global hot keys (Carbon events).
class HotKeys
{
public:
    virtual ~HotKeys() = default;

    virtual EventTargetRef GetApplicationEventTarget() = 0;

    virtual EventHandlerInstallation InstallEventHandler(EventTargetRef target,
                                                         EventHandlerUPP handler,
                                                         std::span<const EventTypeSpec> types,
                                                         void *userData)
        = 0;

    // Virtual key code and modifiers (command 0x100, shift 0x200, option 0x800, control 0x1000).
    // The key stays where it is on the keyboard, whatever the layout, and the locks (Caps Lock, Num
    // Lock) do not matter. eventHotKeyExistsErr when another program holds the combination, or it
    // is registered here already; eventHotKeyInvalidErr when the session has no such key or no
    // global keys at all; paramErr for another target. Ends with the program at the latest.
    virtual HotKeyRegistration RegisterEventHotKey(std::uint32_t keyCode, std::uint32_t modifiers,
                                                   EventHotKeyID id, EventTargetRef target,
                                                   std::uint32_t options)
        = 0;

    // eventHotKeyInvalidErr for a handle that is not registered.
    virtual OSStatus UnregisterEventHotKey(EventHotKeyRef hotKey) = 0;
};

} // namespace tovel
