#include "platform/simulated/simulated_window_server.h"

#include "platform/simulated/simulated_accessibility.h"
#include "platform/simulated/simulated_loader.h"
#include "platform/simulated/simulated_state.h"
#include "platform/variants.h"
#include "platform/window_server.h"

#include <QHash>

#include <algorithm>

namespace tovel::simulatedwindowserver {

namespace {

using Reply = SimulatedDesktop::Reply;

constexpr std::int32_t success = 0;
constexpr std::int32_t illegalArgument = 1001;
constexpr std::int32_t invalidConnection = 1002;

SimulatedState *active = nullptr;

// The active desktop when the call comes over its connection, else null. Counts the call.
SimulatedState *called(const char *name, std::int32_t connection)
{
    if (!active)
        return nullptr;
    active->count(name);
    return connection == active->world.connection ? active : nullptr;
}

QVariantMap spaceDictionary(const SimSpace &space)
{
    QVariantMap result{
        {QStringLiteral("ManagedSpaceID"), QVariant::fromValue<qulonglong>(space.id)},
        {QStringLiteral("type"), space.type}};
    if (space.uuid)
        result.insert(QStringLiteral("uuid"), *space.uuid);
    return result;
}

QVariantMap displayDictionary(const SimDisplay &display)
{
    QVariantList spaces;
    for (const SimSpace &space : display.spaces)
        spaces.append(spaceDictionary(space));
    QVariantMap result{{QStringLiteral("Display Identifier"), display.identifier},
                       {QStringLiteral("Spaces"), spaces}};
    const auto current = std::ranges::find(display.spaces, display.currentSpace, &SimSpace::id);
    if (current != display.spaces.end())
        result.insert(QStringLiteral("Current Space"), spaceDictionary(*current));
    return result;
}

std::int32_t mainConnectionID()
{
    if (!active)
        return 0;
    active->count("SLSMainConnectionID");
    return active->world.connection;
}

Reply copyManagedDisplaySpaces(std::int32_t connection)
{
    SimulatedState *desktop = called("SLSCopyManagedDisplaySpaces", connection);
    if (!desktop)
        return std::nullopt;
    QVariantList displays;
    for (const SimDisplay &display : desktop->world.displays)
        displays.append(displayDictionary(display));
    return desktop->altered("SLSCopyManagedDisplaySpaces", displays);
}

Reply copySpacesForWindows(std::int32_t connection, std::int32_t mask, const QVariantList &windows)
{
    SimulatedState *desktop = called("SLSCopySpacesForWindows", connection);
    if (!desktop)
        return std::nullopt;
    QVariantList spaces;
    for (const QVariant &item : windows) {
        const auto number = unsignedNumber(item);
        if (!number || mask != 7)
            continue;
        if (const SimWindow *window = desktop->findWindow(static_cast<std::uint32_t>(*number))) {
            for (const std::uint64_t space : window->spaces) {
                const auto value = QVariant::fromValue<qulonglong>(space);
                if (!spaces.contains(value))
                    spaces.append(value);
            }
        }
    }
    return desktop->altered("SLSCopySpacesForWindows", spaces);
}

std::int32_t spaceSetCompatID(std::int32_t connection, std::uint64_t space, std::uint32_t tag)
{
    SimulatedState *desktop = called("SLSSpaceSetCompatID", connection);
    if (!desktop)
        return invalidConnection;
    desktop->note(QStringLiteral("SLSSpaceSetCompatID %1 %2").arg(space).arg(tag, 0, 16));
    const auto status
        = tag == 0 ? desktop->world.clearCompatStatus : desktop->world.setCompatStatus;
    if (status != success)
        return status;
    if (!desktop->displayOfSpace(space))
        return illegalArgument;
    if (tag != 0)
        desktop->spaceTags.insert(tag, space);
    else
        desktop->spaceTags.removeIf([space](const auto &entry) { return entry.value() == space; });
    return success;
}

std::int32_t setWindowListWorkspace(std::int32_t connection, const std::uint32_t *windows,
                                    std::int32_t count, std::uint32_t tag)
{
    SimulatedState *desktop = called("SLSSetWindowListWorkspace", connection);
    if (!desktop)
        return invalidConnection;
    if (!windows || count < 1)
        return illegalArgument;
    const QList<std::uint32_t> numbers(windows, windows + count);
    QStringList texts;
    for (const std::uint32_t number : numbers)
        texts.append(QString::number(number));
    desktop->note(QStringLiteral("SLSSetWindowListWorkspace %1 %2")
                      .arg(texts.join(u','), QString::number(tag, 16)));
    if (desktop->world.setWorkspaceStatus != success)
        return desktop->world.setWorkspaceStatus;
    const auto space = desktop->spaceTags.constFind(tag);
    if (space == desktop->spaceTags.constEnd())
        return illegalArgument;
    desktop->requestMove(numbers, *space);
    return success;
}

std::int32_t windowIsOrderedIn(std::int32_t connection, std::uint32_t number,
                               std::uint8_t *orderedIn)
{
    SimulatedState *desktop = called("SLSWindowIsOrderedIn", connection);
    if (!desktop)
        return invalidConnection;
    const SimWindow *window = desktop->findWindow(number);
    if (!window || !orderedIn)
        return illegalArgument;
    *orderedIn = window->orderedIn ? 1 : 0; // also where it fails, as callers must not trust it
    return window->orderedInStatus;
}

Reply copyWindowsWithOptionsAndTags(std::int32_t connection, std::uint32_t owner,
                                    const QVariantList &spaces, std::uint32_t options,
                                    std::uint64_t *setTags, std::uint64_t *clearTags)
{
    constexpr std::uint32_t allWindows = 7;
    constexpr std::uint32_t notMinimized = 2;
    SimulatedState *desktop = called("SLSCopyWindowsWithOptionsAndTags", connection);
    if (!desktop || !setTags || !clearTags || (options != allWindows && options != notMinimized))
        return std::nullopt;
    // No window here has a tag or another owner's connection. The masks come back changed, as they
    // may, so that a caller who passes them on asks for windows that have tags, and finds none.
    const bool wanted = owner == 0 && *setTags == 0 && *clearTags == 0;
    *setTags = 1;
    *clearTags = 1;
    QVariantList numbers;
    for (const SimWindow &window : desktop->world.windows) {
        const bool isThere = std::ranges::any_of(window.spaces, [&spaces](std::uint64_t space) {
            return std::ranges::any_of(
                spaces, [space](const QVariant &item) { return unsignedNumber(item) == space; });
        });
        if (wanted && isThere && (options == allWindows || !window.minimized))
            numbers.append(QVariant::fromValue<uint>(window.number));
    }
    return desktop->altered("SLSCopyWindowsWithOptionsAndTags " + QByteArray::number(options),
                            numbers);
}

AXError getWindow(const AXUIElementRef &element, std::uint32_t *number)
{
    if (!active)
        return kAXErrorCannotComplete;
    active->count("_AXUIElementGetWindow");
    if (!element || !number)
        return kAXErrorIllegalArgument;
    const SimWindow *window = simulatedWindow(*active, element);
    if (!window)
        return kAXErrorInvalidUIElement;
    const auto answer = window->elementNumber.value_or(window->number);
    if (answer == 0)
        return kAXErrorFailure;
    *number = answer;
    return kAXErrorSuccess;
}

AXUIElementRef createWithRemoteToken(const QByteArray &token)
{
    if (!active)
        return nullptr;
    active->count("_AXUIElementCreateWithRemoteToken");
    return elementOfRemoteToken(*active, token);
}

void submitMove(const Object &operation)
{
    if (!active)
        return;
    active->count(SimulatedDesktop::submitMoveSymbol());
    const auto *move = dynamic_cast<const SimMoveOperation *>(&operation);
    if (!move)
        return;
    QStringList texts;
    for (const std::uint32_t number : move->windows)
        texts.append(QString::number(number));
    active->note(QStringLiteral("submit %1 %2").arg(texts.join(u',')).arg(move->space));
    active->requestMove(move->windows, move->space);
}

// Through the declared type, so that an entry which strays from its signature does not compile.
template <typename Signature>
void *address(Signature entry)
{
    return reinterpret_cast<void *>(entry);
}

} // namespace

SimulatedState *setActiveDesktop(SimulatedState *desktop) { return std::exchange(active, desktop); }

void *frameworkEntry(const QByteArray &name)
{
    using namespace windowserver;
    static const QHash<QByteArray, void *> entries{
        {"SLSMainConnectionID", address<MainConnectionID>(mainConnectionID)},
        {"SLSCopyManagedDisplaySpaces",
         address<CopyManagedDisplaySpaces>(copyManagedDisplaySpaces)},
        {"SLSCopySpacesForWindows", address<CopySpacesForWindows>(copySpacesForWindows)},
        {"SLSSpaceSetCompatID", address<SpaceSetCompatID>(spaceSetCompatID)},
        {"SLSSetWindowListWorkspace", address<SetWindowListWorkspace>(setWindowListWorkspace)},
        {"SLSWindowIsOrderedIn", address<WindowIsOrderedIn>(windowIsOrderedIn)},
        {"SLSCopyWindowsWithOptionsAndTags",
         address<CopyWindowsWithOptionsAndTags>(copyWindowsWithOptionsAndTags)}};
    return entries.value(name, nullptr);
}

void *processEntry(const QByteArray &name)
{
    using namespace windowserver;
    static const QHash<QByteArray, void *> entries{
        {"_AXUIElementGetWindow", address<GetWindow>(getWindow)},
        {"_AXUIElementCreateWithRemoteToken",
         address<CreateWithRemoteToken>(createWithRemoteToken)}};
    return entries.value(name, nullptr);
}

void *submitMoveEntry() { return address<windowserver::SubmitMove>(submitMove); }

} // namespace tovel::simulatedwindowserver
