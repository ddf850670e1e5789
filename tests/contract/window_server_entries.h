#pragma once

#include "platform/dynamic_loader.h"
#include "platform/variants.h"
#include "platform/window_server.h"

namespace tovel {

// The window server's entry points, looked up one by one; null for what is not there.
struct WindowServerEntries
{
    explicit WindowServerEntries(DynamicLoader &loader)
    {
        handle = loader.dlopen("/System/Library/PrivateFrameworks/SkyLight.framework/SkyLight",
                               DynamicLoader::RtldLazy);
        const auto find = [&loader](auto &entry, void *where, const char *name) {
            entry = reinterpret_cast<std::remove_reference_t<decltype(entry)>>(
                loader.dlsym(where, name));
        };
        find(mainConnection, handle, "SLSMainConnectionID");
        find(copyDisplays, handle, "SLSCopyManagedDisplaySpaces");
        find(copySpaces, handle, "SLSCopySpacesForWindows");
        find(setTag, handle, "SLSSpaceSetCompatID");
        find(setWorkspace, handle, "SLSSetWindowListWorkspace");
        find(isOrderedIn, handle, "SLSWindowIsOrderedIn");
        find(copyWindows, handle, "SLSCopyWindowsWithOptionsAndTags");
        find(getWindow, DynamicLoader::rtldDefault(), "_AXUIElementGetWindow");
        if (mainConnection)
            connection = mainConnection();
    }

    bool isComplete() const
    {
        return handle && mainConnection && copyDisplays && copySpaces && setTag && setWorkspace
            && isOrderedIn && copyWindows && getWindow;
    }

    static QList<quint64> numbers(const std::optional<QVariantList> &reply)
    {
        QList<quint64> result;
        for (const QVariant &item : reply.value_or(QVariantList()))
            result.append(unsignedNumber(item).value_or(0));
        return result;
    }

    QList<quint64> spacesOf(std::uint32_t window) const
    {
        return numbers(copySpaces(connection, 7, {QVariant(window)}));
    }

    QList<quint64> windowsOn(quint64 space, std::uint32_t options) const
    {
        std::uint64_t set = 0;
        std::uint64_t clear = 0;
        return numbers(copyWindows(connection, 0, {QVariant(space)}, options, &set, &clear));
    }

    // Ids of the spaces of the first display, and of the one that it shows; 0 when it shows none.
    QList<quint64> row() const
    {
        QList<quint64> ids;
        const QVariantMap display = firstDisplay();
        const auto spaces = array(display.value(QStringLiteral("Spaces")));
        for (const QVariant &space : spaces.value_or(QVariantList()))
            ids.append(idOf(space));
        return ids;
    }
    quint64 shown() const { return idOf(firstDisplay().value(QStringLiteral("Current Space"))); }

    QVariantMap firstDisplay() const
    {
        const auto displays = copyDisplays(connection).value_or(QVariantList());
        return dictionary(displays.value(0)).value_or(QVariantMap());
    }

    static quint64 idOf(const QVariant &space)
    {
        const auto facts = dictionary(space).value_or(QVariantMap());
        return unsignedNumber(facts.value(QStringLiteral("ManagedSpaceID"))).value_or(0);
    }

    void *handle = nullptr;
    std::int32_t connection = 0;
    windowserver::MainConnectionID mainConnection = nullptr;
    windowserver::CopyManagedDisplaySpaces copyDisplays = nullptr;
    windowserver::CopySpacesForWindows copySpaces = nullptr;
    windowserver::SpaceSetCompatID setTag = nullptr;
    windowserver::SetWindowListWorkspace setWorkspace = nullptr;
    windowserver::WindowIsOrderedIn isOrderedIn = nullptr;
    windowserver::CopyWindowsWithOptionsAndTags copyWindows = nullptr;
    windowserver::GetWindow getWindow = nullptr;
};

} // namespace tovel
