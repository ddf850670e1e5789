#pragma once

#include <functional>
#include <memory>
#include <vector>

namespace tovel {

// What the model asks of the program it runs in (NSApp), whatever desktop that is on.
class Application
{
public:
    // Whether any of the program's own windows is on screen. False for a program without windows.
    bool hasVisibleWindow() const { return m_hasVisibleWindow; }

    // For whoever shows and hides the windows. Tells the observers of a change.
    void setHasVisibleWindow(bool hasVisibleWindow);

    // The handler is called after each change, until what is returned is dropped.
    [[nodiscard]] std::shared_ptr<void> observeVisibleWindow(std::function<void()> handler);

private:
    bool m_hasVisibleWindow = false;
    std::vector<std::weak_ptr<std::function<void()>>> m_observers;
};

} // namespace tovel
