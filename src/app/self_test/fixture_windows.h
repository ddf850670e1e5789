#pragma once

#include "platform/own_windows.h"

#include <QCoroTask>
#include <QRect>
#include <QString>

#include <cstdint>

namespace tovel {

class Platform;

// Windows of this process for the self-tests to move. What becomes of them is for the window
// server to say: their desktops, frames and states are read from there, not from here.
class FixtureWindows
{
public:
    virtual ~FixtureWindows() = default;

    // Shows a titled window in front, its content in the rectangle of screen coordinates where
    // programs choose their windows' places. The window stays until this object goes, even when the
    // user closes it.
    virtual OwnWindow open(const QString &title, const QRect &content) = 0;

    // The title must be that of a window opened here.
    virtual void minimize(const QString &title) = 0;
};

// Their numbers; 0 for one that the window server does not know.
struct FixturePair
{
    std::uint32_t first = 0;
    std::uint32_t second = 0;
};

// Opens two windows, each at its fixed place, and gives them 0.3 seconds to settle.
QCoro::Task<FixturePair> openFixturePair(Platform &platform, FixtureWindows &windows,
                                         QString firstTitle, QString secondTitle);

// Where the two stand.
inline constexpr QRect firstFixtureContent(120, 140, 260, 120);
inline constexpr QRect secondFixtureContent(160, 180, 260, 120);

} // namespace tovel
