#include "platform/linux/linux_window_server.h"

#include "platform/linux/displays.h"
#include "platform/variants.h"
#include "platform/window_server.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

constexpr std::int32_t Success = 0;
constexpr std::int32_t Failure = 1000;
constexpr std::int32_t IllegalArgument = 1001;
constexpr std::int32_t InvalidConnection = 1002;

constexpr std::int32_t ConnectionID = 1;
constexpr std::uint32_t LeaveOutMinimized = 2;

constexpr int RegularSpace = 0;
constexpr int FullScreenSpace = 4;

// Entry points are plain functions and carry no context; there is one session in a process.
LinuxWindowServer *server = nullptr;

} // namespace

struct LinuxEntryPoints
{
    static DesktopSession &session() { return server->m_applications->session(); }

    static bool isConnected(std::int32_t connection)
    {
        return server && connection == ConnectionID;
    }

    static QVariantMap spaceDictionary(const SessionWorkspace &workspace)
    {
        QVariantMap space{{u"ManagedSpaceID"_s, qulonglong(workspace.id)},
                          {u"type"_s, workspace.regular ? RegularSpace : FullScreenSpace}};
        if (!workspace.uuid.isEmpty())
            space.insert(u"uuid"_s, workspace.uuid);
        if (!workspace.name.isEmpty())
            space.insert(u"name"_s, workspace.name);
        return space;
    }

    static std::int32_t mainConnectionID() { return ConnectionID; }

    static std::optional<QVariantList> copyManagedDisplaySpaces(std::int32_t connection)
    {
        if (!isConnected(connection))
            return std::nullopt;
        const QList<SessionScreen> known = displaysOf(session());
        QVariantList displays;
        for (const SessionOutput &output : session().outputs()) {
            QVariantMap display{{u"Display Identifier"_s, displayIdentifier(output, known)}};
            QVariantList spaces;
            for (const SessionWorkspace &workspace : output.workspaces) {
                const QVariantMap space = spaceDictionary(workspace);
                spaces.append(space);
                if (workspace.id == output.shown)
                    display.insert(u"Current Space"_s, space);
            }
            display.insert(u"Spaces"_s, spaces);
            displays.append(display);
        }
        return displays;
    }

    static std::optional<QVariantList> copySpacesForWindows(std::int32_t connection, std::int32_t,
                                                            const QVariantList &windows)
    {
        if (!isConnected(connection))
            return std::nullopt;
        QVariantList spaces;
        for (const QVariant &number : windows) {
            const auto id = static_cast<std::uint32_t>(unsignedNumber(number).value_or(0));
            if (const SessionWindow *window = server->m_applications->window(id)) {
                for (const std::uint64_t workspace : window->workspaces)
                    spaces.append(qulonglong(workspace));
            }
        }
        return spaces;
    }

    static std::int32_t spaceSetCompatID(std::int32_t connection, std::uint64_t space,
                                         std::uint32_t tag)
    {
        if (!isConnected(connection))
            return InvalidConnection;
        if (tag == 0) {
            if (server->m_tag && server->m_tag->space == space)
                server->m_tag.reset();
            return Success;
        }
        for (const SessionOutput &output : session().outputs()) {
            for (const SessionWorkspace &workspace : output.workspaces) {
                if (workspace.id == space) {
                    server->m_tag = {tag, space};
                    return Success;
                }
            }
        }
        return IllegalArgument;
    }

    static std::int32_t setWindowListWorkspace(std::int32_t connection,
                                               const std::uint32_t *windows, std::int32_t count,
                                               std::uint32_t tag)
    {
        if (!isConnected(connection))
            return InvalidConnection;
        if (!server->m_tag || server->m_tag->value != tag || !windows || count < 0)
            return IllegalArgument;
        if (!session().isControllable())
            return Failure;
        std::int32_t result = Success;
        for (const std::uint32_t window : std::span(windows, static_cast<std::size_t>(count))) {
            if (!moveWindow(window, server->m_tag->space))
                result = IllegalArgument;
        }
        return result;
    }

    // A number can have become another application's since the caller last looked at its window.
    static bool moveWindow(std::uint32_t window, std::uint64_t space)
    {
        const SessionApplicationRef owner = server->m_applications->ownerOf(window);
        session().invalidate();
        return owner && server->m_applications->ownerOf(window) == owner
            && session().moveWindow(window, space);
    }

    static std::int32_t windowIsOrderedIn(std::int32_t connection, std::uint32_t window,
                                          std::uint8_t *orderedIn)
    {
        if (!isConnected(connection))
            return InvalidConnection;
        if (!server->m_applications->window(window))
            return IllegalArgument;
        // A window that its owner withdrew is no longer managed and not known here.
        *orderedIn = 1;
        return Success;
    }

    static std::optional<QVariantList> copyWindowsWithOptionsAndTags(
        std::int32_t connection, std::uint32_t, const QVariantList &spaces, std::uint32_t options,
        std::uint64_t *, std::uint64_t *)
    {
        if (!isConnected(connection))
            return std::nullopt;
        QVariantList numbers;
        for (const SessionWindow &window : session().windows()) {
            const bool isOnOne = std::any_of(
                window.workspaces.cbegin(), window.workspaces.cend(),
                [&spaces](std::uint64_t id) { return spaces.contains(QVariant(qulonglong(id))); });
            if (isOnOne && !(options == LeaveOutMinimized && window.minimized))
                numbers.append(uint(window.id));
        }
        return numbers;
    }

    static AXError getWindow(const AXUIElementRef &element, std::uint32_t *window)
    {
        return server ? server->m_accessibility.windowOf(element, window)
                      : kAXErrorInvalidUIElement;
    }
};

LinuxWindowServer::LinuxWindowServer(SessionApplications *applications,
                                     LinuxAccessibility &accessibility)
    : m_applications(applications)
    , m_accessibility(accessibility)
{
    if (m_applications)
        server = this;
}

LinuxWindowServer::~LinuxWindowServer()
{
    if (server == this)
        server = nullptr;
}

void *LinuxWindowServer::dlopen(const char *path, int)
{
    const bool isWindowServer
        = path && std::string_view(path).find("/SkyLight.framework/") != std::string_view::npos;
    return m_applications && isWindowServer ? this : nullptr;
}

void *LinuxWindowServer::dlsym(void *handle, const char *name)
{
    using namespace windowserver;
    struct Symbol
    {
        const char *name;
        void *address;
        bool isAccessibility;
    };
    // The conversions make sure that each function has the type that its callers will use.
    const std::array symbols{
        Symbol{"SLSMainConnectionID",
               reinterpret_cast<void *>(MainConnectionID(LinuxEntryPoints::mainConnectionID)),
               false},
        Symbol{"SLSCopyManagedDisplaySpaces",
               reinterpret_cast<void *>(
                   CopyManagedDisplaySpaces(LinuxEntryPoints::copyManagedDisplaySpaces)),
               false},
        Symbol{
            "SLSCopySpacesForWindows",
            reinterpret_cast<void *>(CopySpacesForWindows(LinuxEntryPoints::copySpacesForWindows)),
            false},
        Symbol{"SLSSpaceSetCompatID",
               reinterpret_cast<void *>(SpaceSetCompatID(LinuxEntryPoints::spaceSetCompatID)),
               false},
        Symbol{"SLSSetWindowListWorkspace",
               reinterpret_cast<void *>(
                   SetWindowListWorkspace(LinuxEntryPoints::setWindowListWorkspace)),
               false},
        Symbol{"SLSWindowIsOrderedIn",
               reinterpret_cast<void *>(WindowIsOrderedIn(LinuxEntryPoints::windowIsOrderedIn)),
               false},
        Symbol{"SLSCopyWindowsWithOptionsAndTags",
               reinterpret_cast<void *>(
                   CopyWindowsWithOptionsAndTags(LinuxEntryPoints::copyWindowsWithOptionsAndTags)),
               false},
        Symbol{"_AXUIElementGetWindow",
               reinterpret_cast<void *>(GetWindow(LinuxEntryPoints::getWindow)), true},
    };
    if (!m_applications || !handle || !name)
        return nullptr;
    for (const Symbol &symbol : symbols) {
        const bool isSearched = symbol.isAccessibility ? handle == rtldDefault() : handle == this;
        if (isSearched && std::strcmp(symbol.name, name) == 0)
            return symbol.address;
    }
    return nullptr;
}

} // namespace tovel
