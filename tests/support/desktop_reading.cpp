#include "support/desktop_reading.h"

#include "support/private_session.h"

#include <QStringList>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

QString xprop(const PrivateSession &session, const QStringList &which, const QString &property)
{
    return session.run(u"xprop"_s, which + QStringList{property}).out.trimmed();
}

QStringList byId(std::uint32_t window) { return {u"-id"_s, QString::number(window)}; }

// Of a line such as "_NET_CURRENT_DESKTOP(CARDINAL) = 2".
std::optional<std::uint32_t> valueOf(const QString &line)
{
    bool isNumber = false;
    const std::uint32_t value = line.section(u" = "_s, 1).toUInt(&isNumber);
    return isNumber ? std::optional(value) : std::nullopt;
}

} // namespace

QList<ListedWindow> listedWindows(const PrivateSession &session)
{
    QList<ListedWindow> windows;
    const QString list = session.run(u"wmctrl"_s, {u"-l"_s}).out;
    for (const QString &line : list.split(u'\n', Qt::SkipEmptyParts)) {
        const auto flags = QString::SectionSkipEmpty;
        windows.append({line.section(u' ', 0, 0, flags).toUInt(nullptr, 16),
                        static_cast<std::uint32_t>(line.section(u' ', 1, 1, flags).toInt()),
                        line.section(u' ', 3, -1, flags)});
    }
    return windows;
}

std::uint32_t windowTitled(const PrivateSession &session, const QString &title)
{
    std::uint32_t id = 0;
    eventually([&] {
        for (const ListedWindow &window : listedWindows(session)) {
            if (window.title == title && desktopOf(session, window.id))
                id = window.id;
        }
        return id != 0;
    });
    return id;
}

std::optional<std::uint32_t> desktopOf(const PrivateSession &session, std::uint32_t window)
{
    return valueOf(xprop(session, byId(window), u"_NET_WM_DESKTOP"_s));
}

std::optional<std::uint32_t> shownDesktop(const PrivateSession &session)
{
    return valueOf(xprop(session, {u"-root"_s}, u"_NET_CURRENT_DESKTOP"_s));
}

bool hasState(const PrivateSession &session, std::uint32_t window, const QString &state)
{
    return xprop(session, byId(window), u"_NET_WM_STATE"_s).contains(state);
}

} // namespace tovel
