#pragma once

#include <QPoint>
#include <QStringList>

#include <cstdint>
#include <optional>

struct xcb_connection_t;

namespace tovel {

class PrivateSession;

// The screen of a session with trayer: what its user sees of Tovel there, and the mouse and the
// keys.
class SoakedScreen final
{
public:
    // The session must be ready and live longer.
    explicit SoakedScreen(const PrivateSession &session);
    ~SoakedScreen();

    SoakedScreen(const SoakedScreen &) = delete;
    SoakedScreen &operator=(const SoakedScreen &) = delete;

    bool isPanelShown() const { return panel() != 0; }
    // Shown, and with the keyboard.
    bool isPanelInUse() const;
    // A point of the panel; none while it is not shown.
    std::optional<QPoint> inPanel(int fromRight, int fromTop) const;
    // A point of the icon in the tray; none while it is not there.
    std::optional<QPoint> icon() const;
    // Whether a menu or a popover is open.
    bool isPopupOpen() const;

    void point(const QPoint &place) const;
    // Never twice at one place, which would be a double click.
    void click(const QPoint &place, int button);
    void press(const QString &keys) const;

    // What the server keeps for the connection of the panel, which must have been shown before.
    struct Share
    {
        int resources = 0;
        int pixmapKibibytes = 0;
    };
    Share share() const;

private:
    std::uint32_t panel() const;
    QString xdotool(const QStringList &arguments) const;

    const PrivateSession &m_session;
    xcb_connection_t *m_connection;
    std::uint32_t m_root;
    mutable std::uint32_t m_anyPanel = 0; // the last that was seen; stands for its connection
    int m_aside = 0;
};

} // namespace tovel
