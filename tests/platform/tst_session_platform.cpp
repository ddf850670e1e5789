#include "bridge/bridge.h"
#include "model/tovel_model.h"
#include "platform/linux/displays.h"
#include "platform/linux/linux_desktop.h"
#include "platform/platform.h"
#include "platform/user_defaults.h"
#include "support/memory_session.h"
#include "support/test.h"

#include <QCoroTask>

#include <unistd.h>

namespace {

SessionWindow windowOf(const QString &application, std::uint64_t workspace)
{
    return {.workspaces = {workspace},
            .frame = QRectF(0, 0, 300, 200),
            .process = ::getpid(),
            .className = application};
}

} // namespace

// The platform over a session, where the contract of all platforms does not reach.
class TestSessionPlatform final : public QObject
{
    Q_OBJECT

private:
    // A model of the flock "alpha", which follows.
    void start(bool isOneRow, const SessionCapabilities &can = {})
    {
        cleanup();
        auto session = std::make_unique<MemorySession>(isOneRow, can);
        m_session = session.get();
        m_desktop = std::make_unique<LinuxDesktop>(std::move(session));
        m_installation.emplace(*m_desktop);
        UserDefaults &defaults = m_desktop->userDefaults().standardUserDefaults();
        QVERIFY(defaults.setObject(u"selected"_s, QStringList{u"alpha"_s}).isStored());
        m_model = std::make_unique<TovelModel>();
    }

    const Desktop &desktop(std::uint64_t id) const
    {
        return *std::ranges::find(m_model->desktops(), id, &Desktop::id);
    }

    QTemporaryDir m_folder;
    std::unique_ptr<LinuxDesktop> m_desktop;
    std::optional<PlatformInstallation> m_installation;
    std::unique_ptr<TovelModel> m_model;
    MemorySession *m_session = nullptr;

private Q_SLOTS:
    void initTestCase()
    {
        qputenv("XDG_CONFIG_HOME", m_folder.path().toLocal8Bit());
        qputenv("XDG_DATA_HOME", m_folder.path().toLocal8Bit());
    }

    void cleanup()
    {
        m_model.reset();
        m_installation.reset();
        m_desktop.reset();
    }

    void eachRowHasItsDisplay()
    {
        start(false);
        QVERIFY(m_model->displayIsBuiltIn(desktop(12).display));
        QVERIFY(!m_model->displayIsBuiltIn(desktop(22).display));
        QCOMPARE(displayIdentifier({.screen = 3, .isLone = true}, m_session->screens()), u"Main"_s);
        // Names stay with what the session knows a workspace by.
        QVERIFY(desktop(11).key().endsWith(u"/one"_s));
        QVERIFY(desktop(12).key().endsWith(u"/12"_s));

        start(true);
        const Desktop &second = desktop(12);
        QCOMPARE(second.key(), u"Main/12"_s);
        QCOMPARE(m_model->displayName(second.display), u"All displays"_s);
        QVERIFY(!m_model->displayIsBuiltIn(second.display));
        QVERIFY(QCoro::waitFor(m_model->switchDesktop(second, std::nullopt)));
        QCOMPARE(m_session->cursorMoves(), 0); // it is on that display wherever it is
    }

    void aSwitchDoesWithoutTheCursor()
    {
        for (const CursorAccess access : {CursorAccess::Readable, CursorAccess::Hidden}) {
            start(false, {.cursor = access});
            for (const std::uint64_t id : {22, 12, 21}) {
                const Desktop target = desktop(id);
                QVERIFY(QCoro::waitFor(m_model->switchDesktop(target, std::nullopt)));
            }
            QCOMPARE(m_session->outputs()[0].shown, 12u);
            QCOMPARE(m_session->outputs()[1].shown, 21u);
            QCOMPARE(m_session->cursorMoves(), 0);
        }
    }

    void aNumberUsedAgainJustBeforeTheRequestIsNotMoved()
    {
        start(false);
        const std::uint32_t window = m_session->open(windowOf(u"alpha"_s, 11));
        QVERIFY(!TWindowSpaces(window).isEmpty());
        m_session->hold();
        m_session->window(window).className = u"stranger"_s;
        QVERIFY(TMove(window, 12) != 0);
        QCOMPARE(m_session->window(window).workspaces, QList<std::uint64_t>{11});
        QCOMPARE(TMove(window, 12), 0);
    }

    void whatASessionCannotDoIsSaid()
    {
        start(true);
        QCOMPARE(m_desktop->limits(), QStringList());
        start(true,
              {.globalKeys = false,
               .above = false,
               .onAllWorkspaces = false,
               .keepsEmptyWorkspaces = false});
        QCOMPARE(m_desktop->limits().size(), 4);
        m_session->setControllable(false);
        QCOMPARE(m_desktop->limits(), QStringList());
    }
};

QTEST_GUILESS_MAIN(TestSessionPlatform)
#include "tst_session_platform.moc"
