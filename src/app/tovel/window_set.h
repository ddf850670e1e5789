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

    OwnWindow open(const QString &title, const QRect &content) override;
    void minimize(const QString &title) override;

private:
    std::vector<std::unique_ptr<QWindow>> m_windows;
};

} // namespace tovel
