#include "platform/linux/applications/application_launcher.h"
#include "platform/linux/applications/installed_applications.h"
#include "support/test.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

ApplicationEntry entry(const QString &identifier, const QString &windowClass = {},
                       const QString &executable = {}, bool visible = true)
{
    return {identifier,  u"Name of "_s + identifier,
            u"icon"_s,   u"/usr/share/applications/"_s + identifier + u".desktop"_s,
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
    void identifiesWindows_data()
    {
        QTest::addColumn<WindowClues>("clues");
        QTest::addColumn<QString>("identifier");
        const auto row = [](const char *name, const WindowClues &clues, const QString &identifier) {
            QTest::newRow(name) << clues << identifier;
        };

        row("exact case before another", windowClass({}, u"navigator"_s), u"small"_s);
        row("web application of a browser",
            windowClass(u"crx_mail"_s, u"Navigator"_s, u"browser-bin"_s), u"web-mail"_s);
        row("file name of the instance before the class's",
            windowClass(u"editor"_s, u"org.example.Notes"_s), u"editor"_s);
        row("last component", windowClass({}, u"notes"_s), u"org.example.Notes"_s);
        row("unseen entry gives way", windowClass({}, u"Player"_s), u"player"_s);
        row("program", windowClass(u"x"_s, u"X"_s, u"browser-bin"_s), u"browser"_s);
        row("interpreter", windowClass({}, u"Script"_s, u"python3.11"_s), u"Script"_s);
        row("named like one", windowClass({}, u"X"_s, u"python-editor"_s), u"python-editor"_s);
        row("unseen program", windowClass({}, u"X"_s, u"player-handler"_s), u"X"_s);
        row("nothing known", WindowClues(), u"unidentified"_s);
        row("hostile class", windowClass({}, u"A\n\u202E"_s + QString(5000, u'b')),
            u'A' + QString(255, u'b'));

        WindowClues native;
        native.appId = u"Navigator"_s;
        row("native window of the same program", native, u"browser"_s);
        native.appId = u"nobody"_s;
        row("native window of none", native, u"nobody"_s);
        native.process.sandboxId = u"small"_s;
        row("sandbox", native, u"small"_s);

        WindowClues clues;
        clues.process.executable = u"browser-bin"_s;
        clues.process.launchedDesktopFile = u"/usr/share/applications/small.desktop"_s;
        row("launched entry before program", clues, u"small"_s);
        clues.kdeDesktopFile = u"/home/me/.local/share/applications/web/mail.desktop"_s;
        row("KDE path before launched entry", clues, u"web-mail"_s);
        clues.gtkApplicationId = u"org.example.Notes"_s;
        row("GTK before KDE", clues, u"org.example.Notes"_s);
        clues.process.sandboxId = u"player"_s;
        row("sandbox before GTK", clues, u"player"_s);
        clues.className = u"Navigator"_s;
        row("class before sandbox", clues, u"browser"_s);
    }

    void identifiesWindows()
    {
        QFETCH(const WindowClues, clues);
        const ApplicationIndex index(
            {entry(u"player-handler"_s, u"Player"_s, {}, false), entry(u"player"_s),
             entry(u"browser"_s, u"Navigator"_s, u"browser-bin"_s),
             entry(u"small"_s, u"navigator"_s), entry(u"web-mail"_s, u"crx_mail"_s),
             entry(u"python3.11"_s), entry(u"python-editor"_s), entry(u"editor"_s),
             entry(u"org.example.Notes"_s)});

        const ApplicationIdentity identity = index.identify(clues);
        QTEST(identity.bundleIdentifier, "identifier");
        // What no entry describes is named by what it says of itself.
        QCOMPARE(identity.installed, bool(index.find(identity.bundleIdentifier)));
        QCOMPARE(identity.name,
                 identity.installed ? u"Name of "_s + identity.bundleIdentifier
                                    : identity.bundleIdentifier);
        QCOMPARE(identity.icon, identity.installed ? u"icon"_s : QString());
    }

    void readsInstalledEntries()
    {
        const QTemporaryDir folder;
        const QString user = folder.filePath(u"user/applications"_s);
        const QString system = folder.filePath(u"system/applications"_s);
        writeEntry(system + u"/both.desktop"_s, "Name=System\nExec=true\n");
        writeEntry(user + u"/both.desktop"_s,
                   "Name=User\nIcon=both.png\nExec=/bin/true %U\nStartupWMClass=Both\n");
        writeEntry(system + u"/kde/viewer.desktop"_s,
                   "Name=Viewer\nExec=env A=b true\nNoDisplay=true\n");
        writeEntry(system + u"/masked.desktop"_s, "Name=Masked\nExec=true\n");
        writeEntry(user + u"/masked.desktop"_s, "Name=Masked\nExec=true\nHidden=true\n");
        writeEntry(system + u"/broken.desktop"_s, "Name=Broken\nExec=no-such-program-here\n");
        writeEntry(system + u"/untried.desktop"_s, "Name=No\nExec=true\nTryExec=no-such-program\n");
        writeEntry(system + u"/quoted.desktop"_s, "Name=Broken\nExec='true\n");
        writeEntry(system + u"/link.desktop"_s, "Type=Link\nName=Link\nExec=true\n");
        writeEntry(system + u"/large.desktop"_s,
                   "Name=Large\nExec=true\n#" + QByteArray(2 << 20, 'x'));
        writeEntry(system + u"/bus.desktop"_s, "DBusActivatable=true\n");
        // What would hold up whoever opened it.
        const QString pipe = folder.filePath(u"pipe"_s);
        QCOMPARE(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
        for (const auto &[name, target] :
             {std::pair(u"piped"_s, pipe), {u"device"_s, u"/dev/zero"_s}})
            QVERIFY(QFile::link(target, user + u'/' + name + u".desktop"_s));
        QVERIFY(QFile::link(pipe, user + u"/mimeapps.list"_s));

        InstalledApplications applications({user, system});
        std::vector<ApplicationEntry> expected{
            {u"both"_s, u"User"_s, u"both"_s, user + u"/both.desktop"_s, u"Both"_s, u"true"_s},
            {u"bus"_s, u"bus"_s, {}, system + u"/bus.desktop"_s, {}, {}},
            {u"kde-viewer"_s, u"Viewer"_s, {}, system + u"/kde/viewer.desktop"_s, {}, {}, false}};
        QCOMPARE(applications.index().entries(), expected);

        const auto makeOld = [&] {
            for (const QString &path : {user, system, system + u"/kde"_s}) {
                const timespec times[2] = {{1'000'000, 0}, {1'000'000, 0}};
                QCOMPARE(::utimensat(AT_FDCWD, QFile::encodeName(path).constData(), times, 0), 0);
            }
        };
        makeOld();
        QVERIFY(applications.reloadIfChanged());
        QVERIFY(!applications.reloadIfChanged());
        writeEntry(system + u"/kde/late.desktop"_s, "Name=Late\nExec=true\n");
        QVERIFY(applications.reloadIfChanged());
        QVERIFY(applications.index().find(u"kde-late"_s));
        QVERIFY(applications.reloadIfChanged()); // more of the package may still be arriving
    }

    void readsProcessFiles()
    {
        const auto ticks
            = [](const QByteArray &stat) { return startTicksFromStat(stat).value_or(0); };
        const QByteArray fields = " S 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 4711 20 21\n";
        QCOMPARE(ticks("7 (sh)" + fields), 4711U);
        QCOMPARE(ticks("7 (a) S (b c)" + fields), 4711U); // a hostile name
        QCOMPARE(ticks("7 (sh) S 1 2 3"), 0U);

        const QByteArray instance = "[Instance]\nname=1\n";
        QCOMPARE(flatpakIdFromInfo("[Application]\nname=org.example.Notes\nruntime=x\n" + instance),
                 u"org.example.Notes"_s);
        QCOMPARE(flatpakIdFromInfo(instance), QString());

        const QByteArray slice = "0::/user.slice/user@1000.service/app.slice/snap.";
        QCOMPARE(snapIdFromCgroup(slice + "fox.fox-0f0e0d0c-0b0a-0908-0706-050403020100.scope\n"),
                 u"fox_fox"_s);
        QCOMPARE(
            snapIdFromCgroup("1:name=systemd:/\n" + slice + "my-fox.web.0f0e0d0c-0b0a.scope\n"),
            u"my-fox_web"_s);
        QCOMPARE(snapIdFromCgroup(slice + "fox.hook.configure.scope"), QString());

        const QByteArray file("GIO_LAUNCHED_DESKTOP_FILE=/a b.desktop\0", 39);
        const QByteArray launched = file + "GIO_LAUNCHED_DESKTOP_FILE_PID=42";
        QCOMPARE(launchedDesktopFileFromEnvironment(QByteArray("A=1\0", 4) + launched, 42),
                 u"/a b.desktop"_s);
        QCOMPARE(launchedDesktopFileFromEnvironment(launched, 421), QString()); // its child
        QCOMPARE(launchedDesktopFileFromEnvironment(file, 42), QString());
    }

    void locatesAndStartsWhatIsInstalled()
    {
        const QTemporaryDir folder;
        qputenv("XDG_DATA_HOME", QFile::encodeName(folder.path()));
        const auto path = [&](const QString &name) {
            return folder.filePath(u"applications/%1.desktop"_s.arg(name));
        };
        const QString marker = folder.filePath(u"marker"_s);
        writeEntry(path(u"kde/my-viewer"_s),
                   "Name=A\nExec=sh -c \"exec cut -d' ' -f6 /proc/self/stat >"
                       + QFile::encodeName(marker) + "\"\n");
        writeEntry(path(u"my-app"_s), "Name=A\nExec=no-such-program\n");
        writeEntry(path(u"hidden"_s), "Name=A\nExec=true\nHidden=true\n");
        auto launcher = std::make_unique<ApplicationLauncher>();
        QCOMPARE(launcher->locate(u"my-app"_s), QUrl::fromLocalFile(path(u"my-app"_s)));
        for (const QString &absent : {u"hidden"_s, u"kde/my-viewer"_s, u"kde-..-my-app"_s, u"kde"_s,
                                      u"my-app.desktop"_s, QString()})
            QCOMPARE(launcher->locate(absent), QUrl());

        QList<std::optional<QString>> outcomes;
        const QUrl viewer = launcher->locate(u"kde-my-viewer"_s);
        launcher->launch(viewer, [&](const auto &reason) { outcomes << reason; });
        QTRY_COMPARE(outcomes, QList<std::optional<QString>>{std::nullopt});
        QFile file(marker);
        QTRY_VERIFY(file.size() > 0);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QVERIFY(file.readAll().trimmed() != QByteArray::number(::getsid(0))); // outlives this one

        // A pipe in the place of one of GIO's lists, and folders without end.
        const QString list = folder.filePath(u"applications/mimeapps.list"_s);
        QCOMPARE(::mkfifo(QFile::encodeName(list).constData(), 0600), 0);
        launcher->launch(viewer, [&](const auto &reason) { outcomes << reason; });
        QTRY_COMPARE(outcomes.size(), 2);
        QVERIFY(outcomes[1].value_or(QString()).contains(list));
        QVERIFY(QFile::remove(list));
        for (const QString &loop : {u"a"_s, u"b"_s})
            QVERIFY(QFile::link(u"."_s, folder.filePath(u"applications/"_s + loop)));
        launcher->launch(viewer, [&](const auto &reason) { outcomes << reason; });
        QTRY_COMPARE(outcomes.size(), 3);
        QVERIFY(outcomes[2].value_or(QString()).contains(u"folders"_s));
        for (const QString &loop : {u"a"_s, u"b"_s})
            QVERIFY(QFile::remove(folder.filePath(u"applications/"_s + loop)));

        // It may go at any time, also within a handler; nobody is told after that.
        launcher->launch(viewer, [&](const auto &reason) { outcomes << reason; });
        launcher = std::make_unique<ApplicationLauncher>();
        launcher->launch(viewer, [&](const auto &) { launcher.reset(); });
        QTRY_VERIFY(!launcher);
        QCOMPARE(outcomes.size(), 3);
    }
};

QTEST_GUILESS_MAIN(TestApplicationIndex)
#include "tst_application_index.moc"
