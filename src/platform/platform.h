#pragma once

#include <cstdint>

namespace tovel {

class Accessibility;
class Application;
class Clock;
class DynamicLoader;
class HotKeys;
class OwnWindows;
class Quartz;
class SpaceMaker;
class UserDefaultsDomains;
class Workspace;

// One desktop to run on: each platform interface, answered by one backend. Everything is used from
// the main thread alone.
class Platform
{
public:
    virtual ~Platform() = default;

    virtual DynamicLoader &loader() = 0;
    virtual Accessibility &accessibility() = 0;
    virtual Quartz &quartz() = 0;
    virtual Workspace &workspace() = 0;
    virtual UserDefaultsDomains &userDefaults() = 0;
    virtual Clock &clock() = 0;
    virtual HotKeys &hotKeys() = 0;
    virtual Application &application() = 0;
    virtual OwnWindows &ownWindows() = 0;
    // Null where the session makes no spaces.
    virtual SpaceMaker *spaceMaker() { return nullptr; }
};

// The platform installed last. Asking while none is installed is a programming error.
Platform &currentPlatform();

// Distinguishes installations: changes whenever another platform is installed or removed, so that
// whoever bound anything of a platform knows that the binding is void. Never 0.
std::uint64_t platformGeneration();

// Makes a platform the current one for as long as this object lives, then the one before it again.
// Installations nest and end in the reverse order. Borrows the platform.
class PlatformInstallation final
{
public:
    explicit PlatformInstallation(Platform &platform);
    ~PlatformInstallation();

    PlatformInstallation(const PlatformInstallation &) = delete;
    PlatformInstallation &operator=(const PlatformInstallation &) = delete;

private:
    Platform *m_previous;
};

} // namespace tovel
