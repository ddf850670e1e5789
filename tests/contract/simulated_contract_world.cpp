#include "contract/contract_world.h"
#include "platform/simulated/simulated_desktop.h"

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

constexpr std::uint64_t FirstSpace = 11;
constexpr int DesktopCount = 4;
constexpr double Deadline = 10;

class SimulatedContractWorld final : public ContractWorld
{
public:
    explicit SimulatedContractWorld(int displays)
        : m_displayCount(displays)
    {
        SimDisplay display{.identifier = u"Main"_s,
                           .number = 1,
                           .bounds = QRectF(0, 0, 1280, 800),
                           .name = u"Screen"_s,
                           .currentSpace = FirstSpace};
        for (int i = 0; i < DesktopCount; ++i)
            display.spaces.append(SimSpace{.id = FirstSpace + std::uint64_t(i)});
        m_desktop.addDisplay(display);
        if (displays < 2)
            return;
        m_desktop.addDisplay({.identifier = u"Other"_s,
                              .number = 2,
                              .bounds = QRectF(1280, 0, 1024, 768),
                              .name = u"Other screen"_s,
                              .spaces = {SimSpace{.id = 21}, SimSpace{.id = 22}},
                              .currentSpace = 21});
    }

    Platform &platform() override { return m_desktop.platform(); }
    int displayCount() const override { return m_displayCount; }

    std::uint32_t open(const ContractWindow &window, std::uint32_t number) override
    {
        SimWindow facts{.number = number ? number : ++m_lastNumber,
                        .pid = processOf(window),
                        .title = window.title,
                        .spaces = {FirstSpace + std::uint64_t(window.desktop)},
                        .frame = QRectF(QPointF(40, 60), QSizeF(window.size))};
        if (window.kind == ContractWindowKind::Dialog)
            facts.subrole = u"AXDialog"_s;
        if (window.kind == ContractWindowKind::Dock) {
            facts.subrole = u"AXUnknown"_s;
            facts.layer = 20;
        }
        m_desktop.addWindow(facts);
        return facts.number;
    }

    void close(std::uint32_t window) override
    {
        const std::int32_t pid = m_desktop.window(window).pid;
        m_desktop.removeWindow(window);
        for (const SimWindow &other : m_desktop.world().windows) {
            if (other.pid == pid)
                return;
        }
        m_desktop.quit(pid);
    }

    void minimize(std::uint32_t window) override { m_desktop.window(window).minimized = true; }
    void makeFullScreen(std::uint32_t window) override
    {
        m_desktop.window(window).fullScreen = true;
    }
    void putOnAllDesktops(std::uint32_t window) override
    {
        QList<std::uint64_t> &spaces = m_desktop.window(window).spaces;
        spaces.clear();
        for (int i = 0; i < DesktopCount; ++i)
            spaces.append(FirstSpace + std::uint64_t(i));
    }
    void showDesktop(int desktop) override
    {
        m_desktop.showSpace(FirstSpace + std::uint64_t(desktop));
    }

    void press(std::uint32_t keyCode, std::uint32_t modifiers, double) override
    {
        m_desktop.pressHotKey(keyCode, modifiers);
    }
    void toggleLocks() override { }
    void changeKeyboard(bool) override { }
    bool take(std::uint32_t keyCode, std::uint32_t modifiers, bool) override
    {
        for (const auto &registered : m_desktop.registeredHotKeys()) {
            if (registered.keyCode == keyCode && registered.modifiers == modifiers)
                return false;
        }
        m_desktop.takeHotKey(keyCode, modifiers);
        return true;
    }

    bool eventually(const std::function<bool()> &condition) override
    {
        return m_desktop.clock().runUntil(condition, Deadline);
    }
    void pass(double seconds) override { m_desktop.clock().advance(seconds); }

private:
    std::int32_t processOf(const ContractWindow &window)
    {
        using enum NSApplicationActivationPolicy;
        for (const auto &running : platform().workspace().runningApplications()) {
            if (running->bundleIdentifier() == window.application)
                return running->processIdentifier();
        }
        m_desktop.addApplication(
            {.pid = ++m_lastProcess,
             .bundleIdentifier = window.application,
             .name = window.application,
             .policy = window.kind == ContractWindowKind::Dock ? Accessory : Regular});
        return m_lastProcess;
    }

    SimulatedDesktop m_desktop;
    int m_displayCount;
    std::uint32_t m_lastNumber = 100;
    std::int32_t m_lastProcess = 500;
};

} // namespace

std::unique_ptr<ContractWorld> makeSimulatedWorld(int displays)
{
    return std::make_unique<SimulatedContractWorld>(displays);
}

} // namespace tovel
