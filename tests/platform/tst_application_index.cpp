#include "platform/linux/installed_applications.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

#include <limits>

#include <fcntl.h>
#include <sys/stat.h>

using namespace tovel;

namespace {

ApplicationEntry entry(const QString &identifier, const QString &windowClass = {},
                       const QString &executable = {}, bool visible = true)
{
    return {identifier,  u"Name of "_qs + identifier,
            u"icon"_qs,  u"/usr/share/applications/"_qs + identifier + u".desktop"_qs,
            windowClass, executable,
            visible};
}

WindowClues windowClass(const QString &instance, const QString &className,
                        const QString &executable = {})
{
    WindowClues clues;
    clues.instance = instance;
    clues.className = className;
    clues.process.executable = executable;
    return clues;
}

void writeEntry(const QString &path, const QByteArray &rest)
{
    QVERIFY(QDir().mkpath(QFileInfo(path).path()));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("[Desktop Entry]\nType=Application\n" + rest);
}

} // namespace

class TestApplicationIndex final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void identifiesWindows_data();
    void identifiesWindows();
    void readsInstalledEntries();
    void readsProcessFiles_data();
    void readsProcessFiles();
    void knowsARunningProcess();
};

void TestApplicationIndex::identifiesWindows_data()
{
    QTest::addColumn<WindowClues>("clues");
    QTest::addColumn<QString>("identifier");
    QTest::addColumn<bool>("installed");
    const auto row
        = [](const char *name, const WindowClues &clues, const QString &identifier,
             bool installed = true) { QTest::newRow(name) << clues << identifier << installed; };

    row("class as StartupWMClass", windowClass(u"x"_qs, u"Navigator"_qs), u"browser"_qs);
    row("StartupWMClass in another case", windowClass(u"x"_qs, u"NAVIGATOR"_qs), u"browser"_qs);
    row("exact case before another", windowClass({}, u"navigator"_qs), u"small"_qs);
    row("web application of a browser",
        windowClass(u"crx_mail"_qs, u"Navigator"_qs, u"browser-bin"_qs), u"web-mail"_qs);
    row("StartupWMClass of the class before the instance's file name",
        windowClass(u"editor"_qs, u"Navigator"_qs), u"browser"_qs);
    row("file name of the instance before the class's",
        windowClass(u"editor"_qs, u"org.example.Notes"_qs), u"editor"_qs);
    row("file name in another case", windowClass({}, u"Editor"_qs), u"editor"_qs);
    row("last component", windowClass({}, u"notes"_qs), u"org.example.Notes"_qs);
    row("last component of several", windowClass({}, u"Calendar"_qs), u"Calendar"_qs, false);
    row("last component of a short name", windowClass({}, u"11"_qs), u"11"_qs, false);
    row("unseen entry gives way", windowClass({}, u"Player"_qs), u"player"_qs);
    row("unseen entry on its own", windowClass({}, u"Link"_qs), u"link-handler"_qs);
    row("named like its class", windowClass({}, u"Twin"_qs), u"twin"_qs);
    row("program", windowClass(u"x"_qs, u"X"_qs, u"browser-bin"_qs), u"browser"_qs);
    row("program of several entries", windowClass(u"x"_qs, u"X"_qs, u"office"_qs), u"X"_qs, false);
    row("program of an unseen entry", windowClass({}, {}, u"linker"_qs), u"linker"_qs, false);
    row("nothing known", WindowClues(), u"unidentified"_qs, false);
    row("hostile class", windowClass({}, u"A\n\u202E"_qs + QString(5000, u'b')),
        u'A' + QString(255, u'b'), false);

    WindowClues clues;
    clues.process.executable = u"browser-bin"_qs;
    clues.process.launchedDesktopFile = u"/usr/share/applications/small.desktop"_qs;
    row("launched entry before program", clues, u"small"_qs);
    clues.kdeDesktopFile = u"/home/me/.local/share/applications/web/mail.desktop"_qs;
    row("KDE path before launched entry", clues, u"web-mail"_qs);
    clues.kdeDesktopFile = u"editor.desktop"_qs;
    row("KDE file name", clues, u"editor"_qs);
    clues.gtkApplicationId = u"org.example.Notes"_qs;
    row("GTK before KDE", clues, u"org.example.Notes"_qs);
    clues.process.sandboxId = u"player"_qs;
    row("sandbox before GTK", clues, u"player"_qs);
    clues.className = u"Navigator"_qs;
    row("class before sandbox", clues, u"browser"_qs);
}

void TestApplicationIndex::identifiesWindows()
{
    QFETCH(const WindowClues, clues);
    const ApplicationIndex index(
        {entry(u"link-handler"_qs, u"Link"_qs, u"linker"_qs, false),
         entry(u"player-handler"_qs, u"Player"_qs, {}, false), entry(u"player"_qs),
         entry(u"browser"_qs, u"Navigator"_qs, u"browser-bin"_qs),
         entry(u"small"_qs, u"navigator"_qs), entry(u"web-mail"_qs, u"crx_mail"_qs),
         entry(u"editor"_qs), entry(u"org.example.Notes"_qs), entry(u"org.example.Calendar"_qs),
         entry(u"com.example.Calendar"_qs), entry(u"python3.11"_qs),
         entry(u"other-twin"_qs, u"Twin"_qs, u"office"_qs),
         entry(u"twin"_qs, u"Twin"_qs, u"office"_qs)});

    const ApplicationIdentity identity = index.identify(clues);
    QTEST(identity.bundleIdentifier, "identifier");
    QTEST(identity.installed, "installed");
    QCOMPARE(identity.name,
             identity.installed ? u"Name of "_qs + identity.bundleIdentifier
                                : identity.bundleIdentifier);
    QCOMPARE(identity.icon, identity.installed ? u"icon"_qs : QString());
}

void TestApplicationIndex::readsInstalledEntries()
{
    const QTemporaryDir folder;
    const QString user = folder.filePath(u"user/applications"_qs);
    const QString system = folder.filePath(u"system/applications"_qs);
    writeEntry(system + u"/both.desktop"_qs, "Name=System\nExec=true\n");
    writeEntry(user + u"/both.desktop"_qs,
               "Name=User\nIcon=both.png\nExec=/bin/true %U\nStartupWMClass=Both\n");
    writeEntry(system + u"/kde/viewer.desktop"_qs,
               "Name=Viewer\nExec=env A=b true\nNoDisplay=true\n");
    writeEntry(system + u"/masked.desktop"_qs, "Name=Masked\nExec=true\n");
    writeEntry(user + u"/masked.desktop"_qs, "Name=Masked\nExec=true\nHidden=true\n");
    writeEntry(system + u"/broken.desktop"_qs, "Name=Broken\nExec=no-such-program-here\n");

    InstalledApplications applications({user, system});
    std::vector<ApplicationEntry> expected{
        {u"both"_qs, u"User"_qs, u"both"_qs, user + u"/both.desktop"_qs, u"Both"_qs, u"true"_qs},
        {u"kde-viewer"_qs, u"Viewer"_qs, {}, system + u"/kde/viewer.desktop"_qs, {}, {}, false}};
    QCOMPARE(applications.index().entries(), expected);

    const auto makeOld = [&] {
        for (const QString &path : {user, system, system + u"/kde"_qs}) {
            const timespec times[2] = {{1'000'000, 0}, {1'000'000, 0}};
            QCOMPARE(::utimensat(AT_FDCWD, QFile::encodeName(path).constData(), times, 0), 0);
        }
    };
    makeOld();
    QVERIFY(applications.reloadIfChanged());
    QVERIFY(!applications.reloadIfChanged());
    writeEntry(system + u"/kde/late.desktop"_qs, "Name=Late\nExec=true\n");
    QVERIFY(applications.reloadIfChanged());
    QVERIFY(applications.index().find(u"kde-late"_qs));
    QVERIFY(applications.reloadIfChanged()); // more of the package may still be arriving
}

void TestApplicationIndex::readsProcessFiles_data()
{
    QTest::addColumn<QString>("read");
    QTest::addColumn<QString>("expected");
    const auto ticks = [](QByteArrayView stat) {
        const auto value = startTicksFromStat(stat);
        return value ? QString::number(*value) : u"none"_qs;
    };
    const QByteArray fields = " S 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 4711 20 21\n";
    QTest::newRow("start time") << ticks("7 (sh)" + fields) << u"4711"_qs;
    QTest::newRow("hostile name") << ticks("7 (a) S (b c)" + fields) << u"4711"_qs;
    QTest::newRow("cut short") << ticks("7 (sh) S 1 2 3") << u"none"_qs;
    QTest::newRow("no name") << ticks("7 sh") << u"none"_qs;
    QTest::newRow("empty") << ticks("") << u"none"_qs;

    QTest::newRow("flatpak") << flatpakIdFromInfo("[Application]\nname=org.example.Notes\n"
                                                  "runtime=x\n[Instance]\nname=1\n")
                             << u"org.example.Notes"_qs;
    QTest::newRow("flatpak, other group") << flatpakIdFromInfo("[Instance]\nname=1\n") << QString();

    const QByteArray slice = "0::/user.slice/user@1000.service/app.slice/snap.";
    QTest::newRow("snap scope") << snapIdFromCgroup(
        slice + "fox.fox-0f0e0d0c-0b0a-0908-0706-050403020100.scope\n")
                                << u"fox_fox"_qs;
    QTest::newRow("snap scope, older")
        << snapIdFromCgroup("1:name=systemd:/\n" + slice + "my-fox.web.0f0e0d0c-0b0a.scope\n")
        << u"my-fox_web"_qs;
    QTest::newRow("snap hook") << snapIdFromCgroup(slice + "fox.hook.configure.scope") << QString();
    QTest::newRow("no snap") << snapIdFromCgroup("0::/user.slice/app-fox.scope\n") << QString();

    const QByteArray file("GIO_LAUNCHED_DESKTOP_FILE=/a b.desktop\0", 39);
    QTest::newRow("launched") << launchedDesktopFileFromEnvironment(
        QByteArray("A=1\0", 4) + file + "GIO_LAUNCHED_DESKTOP_FILE_PID=42", 42)
                              << u"/a b.desktop"_qs;
    QTest::newRow("child of launched")
        << launchedDesktopFileFromEnvironment(file + "GIO_LAUNCHED_DESKTOP_FILE_PID=42", 421)
        << QString();
    QTest::newRow("no process") << launchedDesktopFileFromEnvironment(file, 42) << QString();
}

void TestApplicationIndex::readsProcessFiles()
{
    QFETCH(const QString, read);
    QTEST(read, "expected");
}

void TestApplicationIndex::knowsARunningProcess()
{
    const ProcessClues clues
        = readProcessClues(static_cast<std::int32_t>(QCoreApplication::applicationPid()));
    QCOMPARE(clues.executable, QFileInfo(QCoreApplication::applicationFilePath()).fileName());
    QVERIFY(qAbs(clues.startTime.secsTo(QDateTime::currentDateTime())) < 300);
    QCOMPARE(readProcessClues(-1), ProcessClues());
    QCOMPARE(readProcessClues(std::numeric_limits<std::int32_t>::max()), ProcessClues());
}

QTEST_GUILESS_MAIN(TestApplicationIndex)
#include "tst_application_index.moc"
