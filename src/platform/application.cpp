#include "platform/application.h"

#include <utility>

namespace tovel {

void Application::setHasVisibleWindow(bool hasVisibleWindow)
{
    if (std::exchange(m_hasVisibleWindow, hasVisibleWindow) == hasVisibleWindow)
        return;
    std::erase_if(m_observers, [](const auto &observer) { return observer.expired(); });
    const auto observers = m_observers;
    for (const auto &observer : observers) {
        if (const auto handler = observer.lock())
            (*handler)();
    }
}

std::shared_ptr<void> Application::observeVisibleWindow(std::function<void()> handler)
{
    auto observer = std::make_shared<std::function<void()>>(std::move(handler));
    m_observers.push_back(observer);
    return observer;
}

} // namespace tovel
