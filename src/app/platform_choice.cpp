#include "app/platform_choice.h"

#include "platform/linux/linux_desktop.h"
#include "platform/session/x11/x11_session.h"
#include "platform/simulated/demo_world.h"
#include "platform/simulated/simulated_desktop.h"
#include "settings/bundle.h"

#include <QFileInfo>

#include <chrono>

namespace tovel {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr char Variable[] = "TOVEL_DESKTOP";

// How long a process waits for others that store choices: a window must not hang, while a run
// without one had better end late than in vain.
constexpr std::chrono::milliseconds patience(Stay stay)
{
    return stay == Stay::Session ? 200ms : 5s;
}

class LinuxChoice final : public PlatformChoice
{
public:
    LinuxChoice(std::unique_ptr<DesktopSession> session, const QString &missingSession,
                std::chrono::milliseconds patience)
        : m_desktop(std::move(session), patience)
        , m_missingSession(missingSession)
    { }

    Platform &platform() override { return m_desktop; }
    QString missingSession() const override { return m_missingSession; }
    QStringList limits() const override { return m_desktop.limits(); }
    QString accessAdvice() override
    {
        if (!m_missingSession.isEmpty()) {
            return m_missingSession.left(1).toUpper() + m_missingSession.mid(1)
                + u". Start Tovel in an X11 session whose window manager follows the Extended "
                  "Window Manager Hints."_s;
        }
        if (m_desktop.accessibility().AXIsProcessTrusted())
            return {};
        return (limits()
                + QStringList{u"Start one that follows the Extended Window Manager Hints; Tovel "
                              "then goes on by itself."_s})
            .join(u' ');
    }
    void setSettingsOpener(std::function<void()> opener) override
    {
        m_desktop.setSettingsOpener(std::move(opener));
    }
    void setVisibleWindowTest(std::function<bool()> test) override
    {
        m_desktop.setVisibleWindowTest(std::move(test));
    }

private:
    LinuxDesktop m_desktop;
    QString m_missingSession;
};

// The demo's choices last, in a file of their own: they are about applications that do not exist.
class SimulatedDefaults final : public UserDefaultsDomains
{
public:
    explicit SimulatedDefaults(std::chrono::milliseconds patience)
        : m_standard(LinuxUserDefaults::domain(u"simulated"_s, patience))
    { }

    UserDefaults &standardUserDefaults() override { return m_standard; }
    const UserDefaults *initWithSuiteName(const QString &) override { return nullptr; }

private:
    SqliteUserDefaults m_standard;
};

class SimulatedChoice final : public PlatformChoice
{
public:
    explicit SimulatedChoice(std::chrono::milliseconds patience)
        : m_defaults(patience)
        , m_desktop({.clock = &m_clock, .userDefaults = &m_defaults})
    {
        const auto icon = mainBundle().pathForResource(u"demo/files"_s, u"svg"_s);
        populateDemo(m_desktop, icon ? QFileInfo(*icon).absolutePath() : QString());
    }

    Platform &platform() override { return m_desktop.platform(); }
    QString missingSession() const override { return {}; }
    QStringList limits() const override
    {
        return {u"This is a simulated desktop: nothing here is real."_s};
    }
    QString accessAdvice() override { return {}; }
    void setSettingsOpener(std::function<void()>) override { }
    void setVisibleWindowTest(std::function<bool()> test) override
    {
        m_desktop.world().visibleWindow = std::move(test);
    }

private:
    BoottimeClock m_clock;
    SimulatedDefaults m_defaults;
    SimulatedDesktop m_desktop;
};

std::unique_ptr<PlatformChoice> x11Choice(bool needsManager, Stay stay)
{
    const QByteArray display = qgetenv("DISPLAY");
    if (display.isEmpty())
        return std::make_unique<LinuxChoice>(nullptr, u"DISPLAY is not set"_s, patience(stay));
    auto session = x11::X11Session::open(display);
    QString missing;
    if (!session)
        missing = u"the X server on “%1” does not answer"_s.arg(QString::fromLocal8Bit(display));
    else if (needsManager && !session->hasManager())
        missing = u"no window manager that follows the Extended Window Manager Hints runs on “%1”"_s
                      .arg(QString::fromLocal8Bit(display));
    if (!missing.isEmpty())
        session.reset();
    return std::make_unique<LinuxChoice>(std::move(session), missing, patience(stay));
}

} // namespace

std::unique_ptr<PlatformChoice> choosePlatform(Stay stay)
{
    const QByteArray wanted = qgetenv(Variable);
    if (wanted.isEmpty())
        return x11Choice(stay == Stay::OneRun, stay);
    if (wanted == "x11")
        return x11Choice(false, stay);
    if (wanted == "simulated")
        return std::make_unique<SimulatedChoice>(patience(stay));
    if (wanted == "none")
        return std::make_unique<LinuxChoice>(nullptr, u"TOVEL_DESKTOP asks for none"_s,
                                             patience(stay));
    return nullptr;
}

bool isUsersSession()
{
    const QByteArray wanted = qgetenv(Variable);
    return wanted.isEmpty() || wanted == "x11";
}

QString unknownPlatformText()
{
    return u"TOVEL_DESKTOP is “%1”, but can only be x11, simulated or none"_s.arg(
        QString::fromLocal8Bit(qgetenv(Variable)));
}

} // namespace tovel
