#include "platform/linux/session_applications.h"

#include <QCoreApplication>
#include <QTest>

#include <algorithm>

using namespace tovel;
using namespace Qt::StringLiterals;

namespace {

// A session whose windows are what the test says.
class FakeSession final : public DesktopSession
{
public:
    void invalidate() override { }
    std::uint64_t revision() override { return m_revision; }
    bool hasManager() override { return true; }
    bool isControllable() override { return true; }
    QList<SessionScreen> screens() override { return {}; }
    QList<SessionOutput> outputs() override { return {}; }
    const QList<SessionWindow> &windows() override { return m_windows; }
    QList<std::uint32_t> stackingOrder() override
    {
        QList<std::uint32_t> ids;
        for (const SessionWindow &window : m_windows)
            ids.prepend(window.id);
        return ids;
    }
    std::uint32_t activeWindow() override { return 0; }
    bool moveWindow(std::uint32_t, std::uint64_t) override { return false; }
    bool showWorkspace(std::uint64_t) override { return false; }
    bool activateWindow(std::uint32_t window) override
    {
        activated.append(window);
        return true;
    }
    bool raiseWindow(std::uint32_t) override { return false; }
    bool setOnAllWorkspaces(std::uint32_t, bool) override { return false; }
    bool setAbove(std::uint32_t, bool) override { return false; }
    bool activationShowsWorkspace() override { return false; }
    std::optional<QPointF> cursorPosition() override { return std::nullopt; }
    void moveCursor(QPointF) override { }
    KeyGrab grabKey(const SessionKey &) override { return KeyGrab::Impossible; }
    void releaseKey(const SessionKey &) override { }
    void setKeyHandler(std::function<void(const SessionKey &)>) override { }
    QStringList limits() override { return {}; }
    void setShownWorkspaceHandler(std::function<void()>) override { }

    void show(const QList<SessionWindow> &windows)
    {
        m_windows = windows;
        ++m_revision;
    }

    QList<std::uint32_t> activated;

private:
    QList<SessionWindow> m_windows;
    std::uint64_t m_revision = 1;
};

SessionWindow window(std::uint32_t id, std::int32_t process, const QString &className,
                     std::uint32_t transientFor = 0)
{
    SessionWindow window;
    window.id = id;
    window.process = process;
    window.className = className;
    window.transientFor = transientFor;
    return window;
}

} // namespace

class TestSessionApplications : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_session = std::make_unique<FakeSession>();
        m_applications = std::make_unique<SessionApplications>(*m_session, m_installed);
    }
    void cleanup() { m_applications.reset(); }

    void aProcessNumberStandsForOneApplication()
    {
        m_session->show({window(1, m_here, u"Editor"_s), window(2, m_here, u"WebApp"_s),
                         window(3, 0, u"Remote"_s)});
        const auto &running = m_applications->running();
        QCOMPARE(running.size(), 3);
        QCOMPARE(m_applications->withProcess(m_here), running[0]);
        QCOMPARE(m_applications->ownerOf(2), running[1]);
        QVERIFY(running[2]->processIdentifier() > running[1]->processIdentifier());
        m_session->show({window(3, 0, u"Remote"_s)});
        QVERIFY(!m_applications->withProcess(m_here));
    }

    void transientWindowsBelongToTheirParents()
    {
        m_session->show({window(1, m_here, u"Editor"_s), window(2, 0, u"Portal"_s, 1),
                         window(3, 0, u"Portal"_s, 2), window(4, 0, u"Portal"_s, 99),
                         window(5, m_here, u"A"_s, 6), window(6, m_here, u"B"_s, 5)});
        const auto editor = m_applications->ownerOf(1);
        QCOMPARE(m_applications->ownerOf(2), editor);
        QCOMPARE(m_applications->ownerOf(3), editor);
        // A parent that is not there, or a ring of parents, leaves every window with some owner.
        QCOMPARE(m_applications->ownerOf(4)->bundleIdentifier(), u"Portal"_s);
        QVERIFY(m_applications->ownerOf(5));
        QVERIFY(m_applications->ownerOf(6));
    }

    void onlyWindowsForTaskBarsMakeAnApplicationRegular()
    {
        SessionWindow dock = window(1, 0, u"Panel"_s);
        dock.kind = WindowKind::Dock;
        SessionWindow hidden = window(2, 0, u"Helper"_s);
        hidden.skipsTaskBar = true;
        SessionWindow dialog = window(3, 0, u"Prompt"_s);
        dialog.kind = WindowKind::Dialog;
        m_session->show({dock, hidden, dialog, window(4, 0, u"Helper"_s)});
        using enum NSApplicationActivationPolicy;
        QCOMPARE(m_applications->ownerOf(1)->activationPolicy(), Accessory);
        QCOMPARE(m_applications->ownerOf(2)->activationPolicy(), Regular);
        QCOMPARE(m_applications->ownerOf(3)->activationPolicy(), Regular);
        m_session->show({hidden});
        QCOMPARE(m_applications->ownerOf(2)->activationPolicy(), Accessory);
    }

    void activationPrefersTheMainWindowOnce()
    {
        m_session->show({window(1, m_here, u"Editor"_s), window(2, m_here, u"Editor"_s)});
        const auto editor = m_applications->ownerOf(1);
        editor->setMainWindow(1);
        QVERIFY(editor->activateWithOptions(0));
        QVERIFY(editor->activateWithOptions(0));
        QCOMPARE(m_session->activated, (QList<std::uint32_t>{1, 2}));
    }

private:
    InstalledApplications m_installed{QStringList()};
    std::unique_ptr<FakeSession> m_session;
    std::unique_ptr<SessionApplications> m_applications;
    const std::int32_t m_here = static_cast<std::int32_t>(QCoreApplication::applicationPid());
};

QTEST_GUILESS_MAIN(TestSessionApplications)
#include "tst_session_applications.moc"
