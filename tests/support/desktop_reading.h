#pragma once

#include <QList>
#include <QString>

#include <cstdint>
#include <optional>

namespace tovel {

class PrivateSession;

// What a client of its own finds in a session: a view of the windows that shares nothing with the
// code under test. Desktops count from 0; allDesktops stands for every one.

struct ListedWindow
{
    std::uint32_t id = 0;
    std::uint32_t desktop = 0;
    QString title{};
};

QList<ListedWindow> listedWindows(const PrivateSession &session);
bool isListed(const PrivateSession &session, const QString &title);

// The window with the title, once it is there and the manager has given it a desktop; 0 when none
// comes in good time.
std::uint32_t windowTitled(const PrivateSession &session, const QString &title);

// Installs an application of terminals, if need be, and opens one; its window as above.
std::uint32_t openTerminal(PrivateSession &session, const QString &application,
                           const QString &title);

std::optional<std::uint32_t> desktopOf(const PrivateSession &session, std::uint32_t window);
std::optional<std::uint32_t> shownDesktop(const PrivateSession &session);

// Whether the window comes to be there in good time.
bool isOn(const PrivateSession &session, std::uint32_t window, std::uint32_t desktop);

// Whether _NET_WM_STATE has the state.
bool hasState(const PrivateSession &session, std::uint32_t window, const QString &state);

} // namespace tovel
