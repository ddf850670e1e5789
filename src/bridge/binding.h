#pragma once

#include "platform/window_server.h"

namespace tovel {

// The private entry points, each null when the platform has none.
struct Binding
{
    void *sky = nullptr;
    windowserver::MainConnectionID connection = nullptr;
    windowserver::CopyManagedDisplaySpaces displays = nullptr;
    windowserver::CopySpacesForWindows spaces = nullptr;
    windowserver::SpaceSetCompatID compat = nullptr;
    windowserver::SetWindowListWorkspace workspace = nullptr;
    windowserver::WindowIsOrderedIn isOrderedIn = nullptr;
    windowserver::CopyWindowsWithOptionsAndTags windowsWithTags = nullptr;
    windowserver::GetWindow windowID = nullptr;
    windowserver::SubmitMove submitMove = nullptr;

    bool canMove() const
    {
        return connection && displays && spaces && compat && workspace && windowID;
    }
};

// The binding of the current platform. Looks everything up at the first call after a platform was
// installed and never again; what is missing then stays missing. May be called from any thread.
Binding load();

} // namespace tovel
