#pragma once

#include "platform/platform.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <chrono>
#include <functional>
#include <memory>

namespace tovel {

// For how long what was done about access may take effect before its user is told that it did not.
inline constexpr std::chrono::milliseconds AccessPatience{2000};

// The platform that this process runs on, picked once at start.
class PlatformChoice
{
public:
    virtual ~PlatformChoice() = default;

    virtual Platform &platform() = 0;

    // Why there is no desktop session to work with; empty when there is one.
    virtual QString missingSession() const = 0;

    // What the session calls itself, with its version where it is known; empty when unknown.
    virtual QString sessionName() const = 0;

    // What a user of this session has to know that it cannot do; a sentence each.
    virtual QStringList limits() const = 0;

    // Why this session lets no windows be moved, and what its user can do about it, as of now;
    // empty when it lets them.
    virtual QString accessAdvice() = 0;

    // Does what can be done at once for the session to let windows be moved, because its user asks
    // for it, and waits for so long at most until that takes effect. Whether it is still to do so
    // in a moment. What is left to do is the advice.
    virtual bool requestAccess(std::chrono::milliseconds patience) = 0;

    // Does Workspace::openAccessibilitySettings, where the session has no settings of its own.
    virtual void setSettingsOpener(std::function<void()> opener) = 0;
};

struct AccessText
{
    bool isGranted = false;
    QString text;
};

// Whether the session lets windows be moved, and what its user has to know about that.
AccessText accessText(PlatformChoice &choice);

// For how long a platform is picked: a program that stays may be there before the window manager.
enum class Stay { OneRun, Session };

// Picks by the environment variable TOVEL_DESKTOP: "sway", "gnome", "kwin", "i3" or "x11" for a
// session of that kind, "simulated" (a desktop in memory, with user defaults of its own) or "none".
// Without it, the first of those sessions that answers, in this order, X11 for one run only where a
// window manager runs; otherwise none. Null for any other value. To be called after the
// QCoreApplication was made.
std::unique_ptr<PlatformChoice> choosePlatform(Stay stay = Stay::OneRun);

// Qt's platform plug-ins, the one first that shows windows as this environment's session knows
// them: in a Wayland session that there is a driver for, native ones; anywhere else those of X11,
// since no others can be put where they belong; none for a compositor that does not answer. To be
// called before the application is made; goes by the environment, so it may name the other one
// first where that says less than choosePlatform() sees.
QByteArray toolkitPlugins();

// Whether choosePlatform() picks, or finds none, in the user's own session: the environment asks
// for nothing else. Only then does it make sense to be, or to ask, the one Tovel of that session.
bool isUsersSession();

// What to say when choosePlatform() gave null.
QString unknownPlatformText();

} // namespace tovel
