#pragma once

#include <cstdint>
#include <vector>

struct xcb_connection_t;

// Looks into trayer, the tray of the X session, for the icon of Tovel.
class TrayWatch
{
public:
    // Waits for trayer's window; ends the program when there is none.
    TrayWatch();
    ~TrayWatch();

    TrayWatch(const TrayWatch &) = delete;
    TrayWatch &operator=(const TrayWatch &) = delete;

    // Waits until the icon is mapped there, or is not; false when that takes more than ten seconds.
    bool waitForIcon(bool there);

private:
    std::vector<std::uint32_t> children(std::uint32_t window);
    std::uint32_t find(std::uint32_t root, const char *instance);
    bool isViewable(std::uint32_t window);

    xcb_connection_t *m_connection;
    std::uint32_t m_tray = 0;
};
