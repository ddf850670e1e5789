#include "contract/contract_world.h"
#include "platform/linux/linux_desktop.h"
#include "platform/linux/virtual_keys.h"
#include "support/memory_session.h"
#include "support/private_session.h"

#include <QTemporaryDir>
#include <unistd.h>

namespace tovel {

namespace {

// The platform of every Linux session, on one with two screens that each have their row.
class MemoryContractWorld final : public ContractWorld
{
public:
    MemoryContractWorld()
    {
        for (const char *variable : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_DATA_DIRS"})
            qputenv(variable, m_folder.path().toLocal8Bit());
        auto session = std::make_unique<MemorySession>(
            false, SessionCapabilities{.activationShowsWorkspace = true});
        m_session = session.get();
        m_desktop = std::make_unique<LinuxDesktop>(std::move(session));
    }

    Platform &platform() override { return *m_desktop; }
    int displayCount() const override { return 2; }

    std::uint32_t open(const ContractWindow &window, std::uint32_t number) override
    {
        constexpr WindowKind kinds[]{WindowKind::Standard, WindowKind::Dialog, WindowKind::Dock};
        return m_session->open({.id = number,
                                .kind = kinds[int(window.kind)],
                                .title = window.title,
                                .workspaces = {firstRow().workspaces[window.desktop].id},
                                .frame = QRectF(QPointF(40, 60), QSizeF(window.size)),
                                .process = ::getpid(),
                                .className = window.application});
    }
    void close(std::uint32_t window) override { m_session->close(window); }
    void minimize(std::uint32_t window) override { m_session->window(window).minimized = true; }
    void makeFullScreen(std::uint32_t window) override
    {
        m_session->window(window).fullScreen = true;
    }
    void putOnAllDesktops(std::uint32_t window) override
    {
        m_session->setOnAllWorkspaces(window, true);
    }
    void showDesktop(int desktop) override
    {
        m_session->showWorkspace(firstRow().workspaces[desktop].id);
    }

    void press(std::uint32_t keyCode, std::uint32_t modifiers, double) override
    {
        m_session->pressKey(key(keyCode, modifiers));
    }
    void toggleLocks() override { }
    void changeKeyboard(bool) override { }
    bool take(std::uint32_t keyCode, std::uint32_t modifiers, bool) override
    {
        return m_session->takeKey(key(keyCode, modifiers));
    }

private:
    SessionOutput firstRow() { return m_session->outputs().first(); }

    static SessionKey key(std::uint32_t keyCode, std::uint32_t modifiers)
    {
        return {.position = positionOfVirtualKey(keyCode).value(),
                .shift = (modifiers & 0x200) != 0,
                .control = (modifiers & 0x1000) != 0,
                .alt = (modifiers & 0x800) != 0,
                .super = (modifiers & 0x100) != 0};
    }

    QTemporaryDir m_folder;
    std::unique_ptr<LinuxDesktop> m_desktop;
    MemorySession *m_session = nullptr;
};

} // namespace

std::unique_ptr<ContractWorld> makeMemoryWorld() { return std::make_unique<MemoryContractWorld>(); }

} // namespace tovel
