#pragma once

namespace tovel {

// What the model asks of the program it runs in (NSApp).
class Application
{
public:
    virtual ~Application() = default;

    // Whether any of the program's own windows is on screen. False for a program without windows.
    virtual bool hasVisibleWindow() const = 0;
};

} // namespace tovel
