#include "bridge/binding.h"
#include "bridge/bridge.h"
#include "platform/dynamic_loader.h"
#include "platform/platform.h"
#include "platform/quartz.h"

namespace tovel {

namespace {

constexpr std::uint32_t compatibilityTag = 0x746F766C; // "tovl"
constexpr char moveClass[] = "SLSBridgedMoveWindowsToManagedSpaceOperation";
constexpr char moveInitialiser[] = "initWithWindows:spaceID:";

std::unique_ptr<Object> moveOperation(std::uint32_t window, std::uint64_t desktop)
{
    const ObjectClass *operation = currentPlatform().loader().NSClassFromString(moveClass);
    if (!operation || !operation->instancesRespondToSelector(moveInitialiser))
        return nullptr;
    const QVariantList windows{QVariant::fromValue<uint>(window)};
    return operation->initWithWindowsSpaceID(windows, desktop);
}

// Marks the desktop, sends the window to whatever is marked, and takes the mark away again.
std::int32_t moveByTag(const Binding &binding, std::uint32_t window, std::uint64_t desktop)
{
    const std::int32_t connection = binding.connection();
    if (const std::int32_t error = binding.compat(connection, desktop, compatibilityTag))
        return error;
    const std::int32_t moved = binding.workspace(connection, &window, 1, compatibilityTag);
    const std::int32_t cleared = binding.compat(connection, desktop, 0);
    return moved != 0 ? moved : cleared;
}

} // namespace

std::int32_t TMove(std::uint32_t window, std::uint64_t desktop)
{
    const Binding binding = load();
    if (!binding.canMove())
        return kBridgeUnavailable;
    if (binding.submitMove) {
        if (const auto operation = moveOperation(window, desktop)) {
            binding.submitMove(*operation);
            return 0;
        }
    }
    return moveByTag(binding, window, desktop);
}

bool TPostDesktopStep(bool toRight)
{
    load();
    Platform &platform = currentPlatform();
    if (!platform.accessibility().AXIsProcessTrusted())
        return false;
    Quartz &quartz = platform.quartz();
    const auto source = quartz.CGEventSourceCreate(kCGEventSourceStateHIDSystemState);
    if (!source)
        return false;
    const std::uint16_t key = toRight ? kVK_RightArrow : kVK_LeftArrow;
    auto down = quartz.CGEventCreateKeyboardEvent(*source, key, true);
    auto up = quartz.CGEventCreateKeyboardEvent(*source, key, false);
    if (!down || !up)
        return false;
    for (auto *event : {&*down, &*up})
        event->flags = kCGEventFlagMaskControl | kCGEventFlagMaskSecondaryFn;
    quartz.CGEventPost(kCGHIDEventTap, *down);
    quartz.CGEventPost(kCGHIDEventTap, *up);
    return true;
}

} // namespace tovel
