#pragma once

#include "app/self_test/fixture_windows.h"

#include <memory>
#include <vector>

class QWindow;

namespace tovel {

// Fixture windows on the display that the QGuiApplication is connected to.
class WindowSet final : public FixtureWindows
{
public:
    WindowSet();
    ~WindowSet() override;

    std::uint32_t open(const QString &title, const QRect &content) override;
    void minimize(std::uint32_t number) override;

private:
    std::vector<std::unique_ptr<QWindow>> m_windows;
};

} // namespace tovel
