#include "model/tovel_model.h"
#include "platform/linux/linux_desktop.h"
#include "platform/linux/x11/x11_session.h"
#include "support/private_session.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTest>

using namespace tovel;
using namespace Qt::StringLiterals;

// Launching applications of the flock from their desktop entries, in a real session.
class TestReopen : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void outcomeIsTold_data();
    void outcomeIsTold();

private:
    void install(const QString &identifier, const QString &exec)
    {
        const QDir folder(m_session.environment().value(u"XDG_DATA_HOME"_s) + u"/applications"_s);
        folder.mkpath(u"."_s);
        // A '-' of an identifier may stand for a subfolder.
        const QString name = QString(identifier).replace(u'-', u'/') + u".desktop"_s;
        folder.mkpath(QFileInfo(name).path());
        QFile file(folder.filePath(name));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("[Desktop Entry]\nType=Application\nName=Terminal\nStartupWMClass=Reopened\n"
                   "Exec="
                   + exec.toUtf8() + '\n');
    }

    PrivateSession m_session{Manager::Openbox};
};

void TestReopen::initTestCase()
{
    QVERIFY(m_session.isReady());
    m_session.adopt();
    install(u"vendor-works"_s, u"xterm -class Reopened"_s);
    install(u"org.example.broken"_s, u"there-is-no-such-program"_s);
}

void TestReopen::outcomeIsTold_data()
{
    QTest::addColumn<QString>("identifier");
    QTest::addColumn<QString>("issue");
    QTest::addColumn<bool>("runs");

    QTest::newRow("not installed")
        << u"org.example.absent"_s
        << u"Couldn’t find Terminal. Reinstall it or remove it from your flock."_s << false;
    QTest::newRow("executable missing")
        << u"org.example.broken"_s
        << u"Couldn’t open Terminal: Failed to execute child process “there-is-no-such-program” "
           "(No such file or directory)"_s
        << false;
    QTest::newRow("opens") << u"vendor-works"_s << QString() << true;
}

void TestReopen::outcomeIsTold()
{
    QFETCH(QString, identifier);
    QFETCH(QString, issue);
    QFETCH(bool, runs);
    LinuxDesktop desktop(x11::X11Session::open({}));
    const PlatformInstallation installation(desktop);
    TovelModel model;
    RunningApp app;
    app.id = identifier;
    app.name = u"Terminal"_s;
    model.select(app, true);

    const auto task = model.reopen(app);
    QVERIFY(!task.isReady() || !issue.isEmpty());
    QVERIFY(eventually([&] { return task.isReady(); }, 8000));
    QCOMPARE(model.issues(), issue.isEmpty() ? QStringList() : QStringList{issue});
    const auto listed = std::find_if(model.apps().cbegin(), model.apps().cend(),
                                     [&](const RunningApp &it) { return it.id == identifier; });
    QVERIFY(listed != model.apps().cend());
    QCOMPARE(listed->running != nullptr, runs);
    QCOMPARE(model.windows().size(), runs ? 1 : 0);
}

QTEST_GUILESS_MAIN(TestReopen)
#include "tst_reopen.moc"
