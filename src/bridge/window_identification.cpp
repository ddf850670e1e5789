#include "bridge/binding.h"
#include "bridge/bridge.h"
#include "platform/clock.h"
#include "platform/dynamic_loader.h"
#include "platform/platform.h"
#include "platform/variants.h"
#include "platform/workspace.h"

#include <QDateTime>
#include <QtEndian>

#include <array>
#include <mutex>

namespace tovel {

namespace {

constexpr float windowTimeout = 0.3F;
constexpr float probeTimeout = 0.03F;
constexpr double probingTime = 0.06;
constexpr int lowIdentifiers = 128; // probed at every call
constexpr int mostProbes = 1152;
constexpr std::uint64_t firstHighIdentifier = 128;
constexpr std::uint64_t identifierEnd = 65536;
constexpr quint32 tokenMark = 0x636F636F;

struct ProcessEntry
{
    std::optional<QDateTime> launch;
    WindowTable windows;
    std::uint64_t cursor = firstHighIdentifier; // the next high identifier to probe
};

struct ProcessCache
{
    std::uint64_t generation = 0;
    windowserver::CreateWithRemoteToken createRemote = nullptr;
    QMap<std::int32_t, ProcessEntry> processes;
};

ProcessCache &processCache()
{
    static std::mutex mutex;
    static ProcessCache cache;

    const std::lock_guard lock(mutex);
    if (cache.generation != platformGeneration()) {
        cache = ProcessCache();
        cache.createRemote = reinterpret_cast<windowserver::CreateWithRemoteToken>(
            currentPlatform().loader().dlsym(DynamicLoader::rtldDefault(),
                                             "_AXUIElementCreateWithRemoteToken"));
        cache.generation = platformGeneration();
    }
    return cache;
}

NSRunningApplicationRef liveApplication(std::int32_t pid)
{
    auto application = currentPlatform().workspace().runningApplicationWithProcessIdentifier(pid);
    if (application && application->isTerminated())
        return nullptr;
    return application;
}

ProcessEntry &entryOf(ProcessCache &cache, std::int32_t pid,
                      const NSRunningApplicationRef &application)
{
    cache.processes.removeIf([](const auto &process) { return !liveApplication(process.key()); });
    ProcessEntry &entry = cache.processes[pid];
    const auto launch = application->launchDate();
    if (entry.launch != launch) {
        entry = ProcessEntry();
        entry.launch = launch;
    }
    return entry;
}

AXUIElementRef asElement(const QVariant &value)
{
    if (value.metaType() != QMetaType::fromType<AXUIElementRef>())
        return nullptr;
    return value.value<AXUIElementRef>();
}

void rememberListedWindows(std::int32_t pid, WindowTable &windows)
{
    Accessibility &accessibility = currentPlatform().accessibility();
    const AXUIElementRef application = accessibility.AXUIElementCreateApplication(pid);
    accessibility.AXUIElementSetMessagingTimeout(application, windowTimeout);

    const QVariant listed
        = attribute(application, QStringLiteral("AXWindows")).value_or(QVariant());
    for (const QVariant &item : array(listed).value_or(QVariantList()))
        rememberWindow(asElement(item), pid, windows);
    for (const QString &name :
         {QStringLiteral("AXMainWindow"), QStringLiteral("AXFocusedWindow")}) {
        const QVariant window = attribute(application, name).value_or(QVariant());
        rememberWindow(asElement(window), pid, windows);
    }
}

QByteArray remoteToken(std::int32_t pid, std::uint64_t identifier)
{
    std::array<char, 20> token{};
    qToLittleEndian<qint32>(pid, token.data());
    qToLittleEndian<quint32>(tokenMark, token.data() + 8);
    qToLittleEndian<quint64>(identifier, token.data() + 12);
    return {token.data(), static_cast<qsizetype>(token.size())};
}

// Returns where the next probing starts.
std::uint64_t probeWindows(windowserver::CreateWithRemoteToken createRemote, std::int32_t pid,
                           std::uint64_t cursor, WindowTable &windows)
{
    Platform &platform = currentPlatform();
    Clock &clock = platform.clock();
    const double deadline = clock.CFAbsoluteTimeGetCurrent() + probingTime;
    for (int i = 0; i < mostProbes; ++i) {
        const std::uint64_t identifier
            = i < lowIdentifiers ? static_cast<std::uint64_t>(i) : cursor++;
        if (const AXUIElementRef element = createRemote(remoteToken(pid, identifier))) {
            platform.accessibility().AXUIElementSetMessagingTimeout(element, probeTimeout);
            rememberWindow(element, pid, windows);
        }
        if (clock.CFAbsoluteTimeGetCurrent() >= deadline)
            break;
    }
    return cursor >= identifierEnd ? firstHighIdentifier : cursor;
}

} // namespace

std::uint32_t TWindowID(const AXUIElementRef &element)
{
    if (!element)
        return 0;
    const Binding binding = load();
    if (!binding.windowID)
        return 0;
    std::uint32_t window = 0;
    binding.windowID(element, &window);
    return window;
}

void rememberWindow(const AXUIElementRef &element, std::int32_t pid, WindowTable &windows)
{
    if (!element)
        return;
    Accessibility &accessibility = currentPlatform().accessibility();
    const AXProcessIdentifier owner = accessibility.AXUIElementGetPid(element);
    if (owner.error != kAXErrorSuccess || owner.pid != pid)
        return;
    const QVariant value = attribute(element, QStringLiteral("AXSubrole")).value_or(QVariant());
    const auto subrole = text(value);
    if (subrole != QStringLiteral("AXStandardWindow") && subrole != QStringLiteral("AXDialog"))
        return;
    const std::uint32_t number = TWindowID(element);
    if (number == 0)
        return;
    accessibility.AXUIElementSetMessagingTimeout(element, windowTimeout);
    windows.insert(number, element);
}

QList<AXUIElementRef> TApplicationWindows(std::int32_t pid)
{
    load();
    if (!currentPlatform().accessibility().AXIsProcessTrusted())
        return {};
    const NSRunningApplicationRef application = liveApplication(pid);
    if (!application)
        return {};

    ProcessCache &cache = processCache();
    ProcessEntry &entry = entryOf(cache, pid, application);
    WindowTable windows;
    for (auto known = entry.windows.cbegin(); known != entry.windows.cend(); ++known) {
        if (TWindowID(known.value()) == known.key())
            rememberWindow(known.value(), pid, windows);
    }
    rememberListedWindows(pid, windows);
    if (cache.createRemote)
        entry.cursor = probeWindows(cache.createRemote, pid, entry.cursor, windows);
    entry.windows = windows;
    return windows.values();
}

std::optional<QVariant> attribute(const AXUIElementRef &element, const QString &name)
{
    if (!element)
        return std::nullopt;
    const AXAttributeValue answer
        = currentPlatform().accessibility().AXUIElementCopyAttributeValue(element, name);
    if (answer.error != kAXErrorSuccess)
        return std::nullopt;
    return answer.value;
}

} // namespace tovel
