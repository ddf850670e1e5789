#include "contract/contract_world.h"
#include "platform/linux/linux_desktop.h"
#include "platform/linux/virtual_keys.h"
#include "support/memory_session.h"

#include <QTemporaryDir>
#include <QTest>

#include <unistd.h>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

constexpr std::uint64_t FirstWorkspace = 11;
class SessionContractWorld final : public ContractWorld
{
public:
    explicit SessionContractWorld(const QByteArray &name)
    {
        qputenv("XDG_CONFIG_HOME", m_folder.path().toLocal8Bit());
        qputenv("XDG_DATA_HOME", m_folder.path().toLocal8Bit());
        SessionCapabilities can;
        if (name == "hidden_cursor")
            can.cursor = CursorAccess::Hidden;
        auto session = std::make_unique<MemorySession>(name == "one_row", can);
        m_session = session.get();
        m_desktop = std::make_unique<LinuxDesktop>(std::move(session));
    }

    Platform &platform() override { return *m_desktop; }
    int displayCount() const override { return static_cast<int>(m_session->outputs().size()); }
    QRectF bounds() const override
    {
        return displayCount() == 1 ? QRectF(0, 0, 2304, 800) : QRectF(0, 0, 1280, 800);
    }

    std::uint32_t open(const ContractWindow &window) override
    {
        return m_session->open(facts(window));
    }
    void close(std::uint32_t window) override { m_session->close(window); }
    void replace(std::uint32_t window, const ContractWindow &other) override
    {
        m_session->close(window);
        SessionWindow stranger = facts(other);
        stranger.id = window;
        m_session->open(stranger);
    }
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
        m_session->showWorkspace(FirstWorkspace + std::uint64_t(desktop));
    }
    // Its toolkit knows no numbers.
    OwnWindow own(std::uint32_t window) const override
    {
        for (const SessionWindow &candidate : m_session->windows()) {
            if (candidate.id == window)
                return {.title = candidate.title.value_or(QString())};
        }
        return {.title = u"None"_s};
    }

    void press(std::uint32_t keyCode, std::uint32_t modifiers, double) override
    {
        m_session->press(key(keyCode, modifiers));
    }
    void toggleLocks() override { }
    void changeKeyboard(bool) override { }
    bool take(std::uint32_t keyCode, std::uint32_t modifiers, bool locked) override
    {
        return m_session->take(key(keyCode, modifiers), locked);
    }

    bool eventually(const std::function<bool()> &condition) override
    {
        return QTest::qWaitFor(condition);
    }
    void pass(double seconds) override { QTest::qWait(qRound(seconds * 1000)); }

private:
    static SessionKey key(std::uint32_t keyCode, std::uint32_t modifiers)
    {
        return {.position = positionOfVirtualKey(keyCode).value(),
                .shift = (modifiers & 0x200) != 0,
                .control = (modifiers & 0x1000) != 0,
                .alt = (modifiers & 0x800) != 0,
                .super = (modifiers & 0x100) != 0};
    }

    static SessionWindow facts(const ContractWindow &window)
    {
        SessionWindow facts{.title = window.title,
                            .workspaces = {FirstWorkspace + std::uint64_t(window.desktop)},
                            .frame = QRectF(QPointF(40, 60), QSizeF(window.size)),
                            .process = ::getpid(),
                            .className = window.application};
        if (window.kind == ContractWindowKind::Dialog)
            facts.kind = WindowKind::Dialog;
        if (window.kind == ContractWindowKind::Dock)
            facts.kind = WindowKind::Dock;
        return facts;
    }

    QTemporaryDir m_folder;
    MemorySession *m_session;
    std::unique_ptr<LinuxDesktop> m_desktop;
};

} // namespace

std::unique_ptr<ContractWorld> makeSessionWorld(const QByteArray &name)
{
    return std::make_unique<SessionContractWorld>(name);
}

} // namespace tovel
