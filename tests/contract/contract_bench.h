#pragma once

#include "bridge/binding.h"
#include "contract/contract_world.h"
#include "platform/accessibility.h"
#include "platform/hot_keys.h"
#include "platform/platform.h"
#include "platform/quartz.h"
#include "platform/variants.h"
#include "platform/workspace.h"

#include <algorithm>

namespace tovel {

using namespace Qt::StringLiterals;

constexpr std::uint32_t Tag = 0x746F766C;
constexpr std::uint32_t HotKeyModifiers = 0x1900; // control, option, command

// A world, and short questions to its platform.
class ContractBench
{
protected:
    using Numbers = QList<quint64>;

    bool eventually(const std::function<bool()> &condition)
    {
        return m_world->eventually(condition);
    }
    // Somebody shows a desktop of the first display.
    bool show(int desktop)
    {
        m_world->showDesktop(desktop);
        return eventually([&] { return shown() == m_row[desktop]; });
    }
    // Somebody closes the window.
    bool goes(std::uint32_t window)
    {
        close(window);
        return eventually([&] { return spacesOf(window).isEmpty(); });
    }
    // Marks the space, sends the window there, and clears the mark.
    bool sends(std::uint32_t window, quint64 space)
    {
        return m_entries.compat(m_connection, space, Tag) == 0
            && m_entries.workspace(m_connection, &window, 1, Tag) == 0
            && m_entries.compat(m_connection, space, 0) == 0 && arrives(window, space);
    }

    static Numbers numbers(const std::optional<QVariantList> &reply)
    {
        Numbers result;
        for (const QVariant &item : reply.value_or(QVariantList()))
            result.append(unsignedNumber(item).value_or(0));
        return result;
    }
    Numbers spacesOf(std::uint32_t window)
    {
        return numbers(m_entries.spaces(m_connection, 7, {QVariant(window)}));
    }
    Numbers windowsOn(quint64 space, std::uint32_t options)
    {
        std::uint64_t set = 0;
        std::uint64_t clear = 0;
        return numbers(
            m_entries.windowsWithTags(m_connection, 0, {QVariant(space)}, options, &set, &clear));
    }
    QVariantMap display(int position = 0)
    {
        const auto displays = m_entries.displays(m_connection).value_or(QVariantList());
        return dictionary(displays.value(position)).value_or(QVariantMap());
    }
    static quint64 idOf(const QVariant &space)
    {
        const auto facts = dictionary(space).value_or(QVariantMap());
        return unsignedNumber(facts[u"ManagedSpaceID"_s]).value_or(0);
    }
    Numbers row(int position = 0)
    {
        Numbers ids;
        for (const QVariant &space : array(display(position)[u"Spaces"_s]).value_or(QVariantList()))
            ids.append(idOf(space));
        return ids;
    }
    quint64 shown(int position = 0) { return idOf(display(position)[u"Current Space"_s]); }
    // Of its display at least.
    bool isOnAll(std::uint32_t window)
    {
        const Numbers spaces = spacesOf(window);
        return std::ranges::all_of(m_row, [&](quint64 space) { return spaces.contains(space); });
    }
    bool arrives(std::uint32_t window, quint64 space)
    {
        return eventually([&] { return spacesOf(window) == Numbers{space}; });
    }
    bool becomes(std::uint32_t window, const QString &name)
    {
        return eventually([&] { return attribute(window, name) == QVariant(true); });
    }

    QVariantMap information(std::uint32_t window)
    {
        const auto list = m_platform->quartz().CGWindowListCopyWindowInfo(
            kCGWindowListOptionIncludingWindow, window);
        return dictionary(list.value_or(QVariantList()).value(0)).value_or(QVariantMap());
    }

    // Opens a window and waits until the platform knows it and where it is.
    std::uint32_t open(const ContractWindow &window)
    {
        const std::uint32_t number = m_world->open(window);
        m_open.append(number);
        const bool isThere = eventually([&] {
            return spacesOf(number) == Numbers{m_row.value(window.desktop)} && element(number);
        });
        if (!isThere)
            qWarning("window %u of %s does not appear", number, qPrintable(window.application));
        return number;
    }

    void close(std::uint32_t window)
    {
        m_open.removeOne(window);
        m_world->close(window);
    }

    // The application that has the window, by the window's own word.
    NSRunningApplicationRef owner(std::uint32_t window)
    {
        const auto pid = signedNumber(information(window)[QString::fromUtf16(kCGWindowOwnerPID)]);
        return m_platform->workspace().runningApplicationWithProcessIdentifier(
            static_cast<std::int32_t>(pid.value_or(0)));
    }

    QList<AXUIElementRef> elements(std::int32_t pid)
    {
        Accessibility &accessibility = m_platform->accessibility();
        const auto value = accessibility.AXUIElementCopyAttributeValue(
            accessibility.AXUIElementCreateApplication(pid), u"AXWindows"_s);
        QList<AXUIElementRef> result;
        for (const QVariant &item : array(value.value).value_or(QVariantList()))
            result.append(item.value<AXUIElementRef>());
        return result;
    }

    std::uint32_t windowOf(const AXUIElementRef &element)
    {
        std::uint32_t number = 0;
        m_entries.windowID(element, &number);
        return number;
    }
    QList<std::uint32_t> windowsOf(std::int32_t pid)
    {
        QList<std::uint32_t> windows;
        for (const AXUIElementRef &found : elements(pid))
            windows.append(windowOf(found));
        return windows;
    }
    AXUIElementRef element(std::uint32_t window)
    {
        const auto application = owner(window);
        const auto all = elements(application ? application->processIdentifier() : 0);
        const auto found = std::find_if(all.cbegin(), all.cend(), [&](const auto &candidate) {
            return windowOf(candidate) == window;
        });
        return found == all.cend() ? nullptr : *found;
    }

    QVariant attribute(const AXUIElementRef &of, const QString &name)
    {
        const auto value = m_platform->accessibility().AXUIElementCopyAttributeValue(of, name);
        return value.error == kAXErrorSuccess ? value.value : QVariant();
    }
    QVariant attribute(std::uint32_t window, const QString &name)
    {
        return attribute(element(window), name);
    }

    Numbers frontToBack()
    {
        Numbers windows;
        const auto list = m_platform->quartz().CGWindowListCopyWindowInfo(0, 0);
        for (const QVariant &facts : list.value_or(QVariantList()))
            windows.append(
                unsignedNumber(facts.toMap()[QString::fromUtf16(kCGWindowNumber)]).value());
        return windows;
    }

    void press(std::uint16_t arrow)
    {
        Quartz &quartz = m_platform->quartz();
        const auto source = quartz.CGEventSourceCreate(kCGEventSourceStateHIDSystemState);
        for (const bool isDown : {true, false}) {
            auto event = quartz.CGEventCreateKeyboardEvent(source.value(), arrow, isDown).value();
            event.flags = kCGEventFlagMaskControl | kCGEventFlagMaskSecondaryFn;
            quartz.CGEventPost(kCGHIDEventTap, event);
        }
    }

    HotKeyRegistration registerKey(std::uint32_t keyCode)
    {
        HotKeys &hotKeys = m_platform->hotKeys();
        return hotKeys.RegisterEventHotKey(keyCode, HotKeyModifiers, {1, 2},
                                           hotKeys.GetApplicationEventTarget(), 0);
    }

    // Takes the world's platform into use.
    void bind()
    {
        m_platform = &m_world->platform();
        m_installation.emplace(*m_platform);
        m_entries = load();
        if (m_entries.connection)
            m_connection = m_entries.connection();
    }

    std::unique_ptr<ContractWorld> m_world;
    Platform *m_platform = nullptr;
    std::optional<PlatformInstallation> m_installation;
    Binding m_entries;
    std::int32_t m_connection = 0;
    Numbers m_row;
    QList<std::uint32_t> m_open;
};

} // namespace tovel
