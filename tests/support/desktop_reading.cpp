#include "support/desktop_reading.h"

#include "support/private_session.h"
#include "support/test_client.h"

#include <algorithm>

namespace tovel {

using namespace Qt::StringLiterals;

QList<ListedWindow> listedWindows(const PrivateSession &session)
{
    const TestClient client(session.display());
    QList<ListedWindow> windows;
    for (const std::uint32_t id : client.numbers(client.root(), "_NET_CLIENT_LIST")) {
        const QByteArray title = client.property(id, "_NET_WM_NAME");
        windows.append(
            {id, client.number(id, "_NET_WM_DESKTOP").value_or(allDesktops),
             QString::fromUtf8(title.isEmpty() ? client.property(id, "WM_NAME") : title)});
    }
    return windows;
}

bool isListed(const PrivateSession &session, const QString &title)
{
    const QList<ListedWindow> windows = listedWindows(session);
    return std::ranges::count(windows, title, &ListedWindow::title) > 0;
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

std::uint32_t openTerminal(PrivateSession &session, const QString &application,
                           const QString &title)
{
    session.install(u"org.example."_s + application.toLower(), application, application);
    session.start(
        u"xterm"_s,
        {u"-class"_s, application, u"-name"_s, application, u"-T"_s, title, u"-e"_s, u"cat"_s});
    return windowTitled(session, title);
}

std::optional<std::uint32_t> desktopOf(const PrivateSession &session, std::uint32_t window)
{
    return TestClient(session.display()).number(window, "_NET_WM_DESKTOP");
}

std::optional<std::uint32_t> shownDesktop(const PrivateSession &session)
{
    const TestClient client(session.display());
    return client.number(client.root(), "_NET_CURRENT_DESKTOP");
}

bool isOn(const PrivateSession &session, std::uint32_t window, std::uint32_t desktop)
{
    return eventually([&] { return desktopOf(session, window) == desktop; });
}

bool hasState(const PrivateSession &session, std::uint32_t window, const QString &state)
{
    const TestClient client(session.display());
    return client.numbers(window, "_NET_WM_STATE").contains(client.atom(state.toLatin1()));
}

} // namespace tovel
