#pragma once

#include "platform/own_windows.h"
#include "support/private_session.h"

#include <QRectF>
#include <QSize>
#include <QString>
#include <QTest>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

namespace tovel {

class Platform;

enum class ContractWindowKind { Standard, Dialog, Dock };

struct ContractWindow
{
    QString application{}; // its bundle identifier, too
    std::optional<QString> title{};
    ContractWindowKind kind = ContractWindowKind::Standard;
    int desktop = 0;
    QSize size = QSize(300, 200);
};

// A desktop that the contract is tried on: four regular spaces in a row on its first display, two
// on its second if it has one. What is done here is done to the desktop by somebody else; the
// platform is only looked at. Takes effect as soon as the desktop gets to it.
class ContractWorld
{
public:
    virtual ~ContractWorld() = default;

    virtual Platform &platform() = 0;
    virtual int displayCount() const { return 1; }
    // Whether another window may get the number of one that is gone, and whether anybody is told
    // where the cursor is.
    virtual bool usesNumbersAgain() const { return true; }
    virtual bool tellsCursor() const { return true; }
    // Whether a minimised window is still on its desktop, whether panels are windows of their own
    // kind, and whether a key is known to be another program's.
    virtual bool minimizesInPlace() const { return true; }
    virtual bool tellsDocks() const { return true; }
    virtual bool tellsTakenKeys() const { return true; }
    // Of the first display.
    virtual QRectF bounds() const { return QRectF(0, 0, 1280, 800); }

    // Gives the window's number, which is the one given, if any. All windows are of one process of
    // the kernel.
    virtual std::uint32_t open(const ContractWindow &window, std::uint32_t number = 0) = 0;
    // An application ends with its last window.
    virtual void close(std::uint32_t window) = 0;
    // Closes the window, and at once another one gets its number.
    void replace(std::uint32_t window, const ContractWindow &other)
    {
        close(window);
        open(other, window);
    }
    virtual void minimize(std::uint32_t window) = 0;
    virtual void makeFullScreen(std::uint32_t window) = 0;
    virtual void putOnAllDesktops(std::uint32_t window) = 0;
    // Of the first display.
    virtual void showDesktop(int desktop) = 0;
    // The window by what a program would know of its own.
    virtual OwnWindow own(std::uint32_t window) const { return {.windowNumber = window}; }

    // The keyboard, in key codes and modifiers of HotKeys. A press is held for so long.
    virtual void press(std::uint32_t keyCode, std::uint32_t modifiers, double seconds = 0) = 0;
    virtual void toggleLocks() = 0;
    // The usual layout, or one with its letters and modifiers in other places.
    virtual void changeKeyboard(bool usual) = 0;
    // Another program takes a key for good; whether it got it. In one state of the locks alone.
    virtual bool take(std::uint32_t keyCode, std::uint32_t modifiers, bool locked) = 0;

    // Lets time pass until the condition holds; false when it does not in good time.
    virtual bool eventually(const std::function<bool()> &condition)
    {
        return tovel::eventually(condition);
    }
    virtual void pass(double seconds) { QTest::qWait(qRound(seconds * 1000)); }
};

std::unique_ptr<ContractWorld> makeSimulatedWorld(int displays);

std::unique_ptr<ContractWorld> makeMemoryWorld();

// On the manager that managerFromEnvironment() names; null when it does not start.
std::unique_ptr<ContractWorld> makeX11World();

// On a private i3 or sway; null when it does not start.
std::unique_ptr<ContractWorld> makeI3World();
std::unique_ptr<ContractWorld> makeSwayWorld();

// On a private GNOME Shell or KWin; null when it does not start.
std::unique_ptr<ContractWorld> makeGnomeWorld();
std::unique_ptr<ContractWorld> makeKWinWorld();

} // namespace tovel
