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
    void windowsFindTheirApplication()
    {
        FakeSession session;
        SessionApplications applications(session, m_installed);
        session.show({window(1, m_here, u"Editor"_s), window(2, m_here, u"WebApp"_s),
                      window(3, 0, u"Remote"_s), window(4, m_here, u"Editor"_s)});
        const auto &running = applications.running();
        QCOMPARE(running.size(), 3);
        // Two applications share the process: its number can only stand for one of them.
        QCOMPARE(running[0]->processIdentifier(), m_here);
        QVERIFY(running[0]->launchDate().has_value());
        QCOMPARE(running[0]->windows(), (QList<std::uint32_t>{1, 4}));
        QVERIFY(running[1]->processIdentifier() > (1 << 22));
        QCOMPARE(running[1]->windows(), QList<std::uint32_t>{2});
        QCOMPARE(running[1]->bundleIdentifier(), u"WebApp"_s);
        // Nobody knows the process of this one.
        QVERIFY(running[2]->processIdentifier() > running[1]->processIdentifier());
        QVERIFY(!running[2]->launchDate());
        QCOMPARE(applications.withProcess(m_here), running[0]);
        QCOMPARE(applications.ownerOf(2), running[1]);
        QVERIFY(!applications.withProcess(1));
        QVERIFY(!applications.ownerOf(99));
        QVERIFY(!applications.window(99));
    }

    void transientWindowsBelongToTheirParents()
    {
        FakeSession session;
        SessionApplications applications(session, m_installed);
        session.show({window(1, m_here, u"Editor"_s), window(2, 0, u"Portal"_s, 1),
                      window(3, 0, u"Portal"_s, 2), window(4, 0, u"Portal"_s, 99),
                      window(5, m_here, u"A"_s, 6), window(6, m_here, u"B"_s, 5)});
        const auto editor = applications.ownerOf(1);
        QCOMPARE(applications.ownerOf(2), editor);
        QCOMPARE(applications.ownerOf(3), editor);
        // A parent that is not there, or a ring of parents, leaves every window with some owner.
        QCOMPARE(applications.ownerOf(4)->bundleIdentifier(), u"Portal"_s);
        QVERIFY(applications.ownerOf(5));
        QVERIFY(applications.ownerOf(6));
    }

    void handlesLastAsLongAsTheirWindows()
    {
        FakeSession session;
        SessionApplications applications(session, m_installed);
        session.show({window(1, m_here, u"Editor"_s), window(2, m_here, u"WebApp"_s)});
        const auto editor = applications.ownerOf(1);
        const auto webApp = applications.ownerOf(2);
        const std::int32_t webProcess = webApp->processIdentifier();

        session.show({window(2, m_here, u"WebApp"_s), window(3, m_here, u"WebApp"_s)});
        QCOMPARE(applications.ownerOf(3), webApp);
        QCOMPARE(webApp->processIdentifier(), webProcess);
        QVERIFY(editor->isTerminated());
        QVERIFY(!editor->activateWithOptions(0));
        QVERIFY(!webApp->isTerminated());

        session.show({window(1, m_here, u"Editor"_s)});
        QVERIFY(webApp->isTerminated());
        QVERIFY(applications.ownerOf(1) != editor);
        QVERIFY(session.activated.isEmpty());
    }

    void onlyWindowsForTaskBarsMakeAnApplicationRegular()
    {
        FakeSession session;
        SessionApplications applications(session, m_installed);
        SessionWindow dock = window(1, 0, u"Panel"_s);
        dock.kind = WindowKind::Dock;
        SessionWindow hidden = window(2, 0, u"Helper"_s);
        hidden.skipsTaskBar = true;
        SessionWindow dialog = window(3, 0, u"Prompt"_s);
        dialog.kind = WindowKind::Dialog;
        session.show({dock, hidden, dialog, window(4, 0, u"Helper"_s)});
        using enum NSApplicationActivationPolicy;
        QCOMPARE(applications.ownerOf(1)->activationPolicy(), Accessory);
        QCOMPARE(applications.ownerOf(2)->activationPolicy(), Regular);
        QCOMPARE(applications.ownerOf(3)->activationPolicy(), Regular);
        session.show({hidden});
        QCOMPARE(applications.ownerOf(2)->activationPolicy(), Accessory);
    }

    void activationPrefersTheMainWindowOnce()
    {
        FakeSession session;
        SessionApplications applications(session, m_installed);
        session.show({window(1, m_here, u"Editor"_s), window(2, m_here, u"Editor"_s)});
        const auto editor = applications.ownerOf(1);
        editor->setMainWindow(1);
        QVERIFY(editor->activateWithOptions(0));
        QVERIFY(editor->activateWithOptions(0));
        QCOMPARE(session.activated, (QList<std::uint32_t>{1, 2}));
    }

private:
    InstalledApplications m_installed{QStringList()};
    const std::int32_t m_here = static_cast<std::int32_t>(QCoreApplication::applicationPid());
};

QTEST_GUILESS_MAIN(TestSessionApplications)
#include "tst_session_applications.moc"
