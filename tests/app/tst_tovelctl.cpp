#include "app/tovelctl/arguments.h"
#include "app/tovelctl/commands.h"
#include "model/model_world.h"
#include "model/texts.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>

using namespace tovel;

namespace {

struct Outcome
{
    int status = -1;
    QString output;
    QStringList complaints;
    QStringList progress;

    QJsonObject json() const { return QJsonDocument::fromJson(output.toUtf8()).object(); }
};

QCoro::Task<> store(QCoro::Task<int> task, int *status)
{
    const int result = co_await task;
    *status = result;
}

QStringList words(const QString &line) { return line.isEmpty() ? QStringList() : line.split(u' '); }

Outcome run(ModelWorld &world, const QString &line, int *interrupted = nullptr)
{
    Outcome outcome;
    CommandContext context;
    context.print = [&](const QString &text) { outcome.output += text; };
    context.complain = [&](const QString &text) { outcome.complaints.append(text); };
    context.progress = [&](const QString &text) { outcome.progress.append(text); };
    context.interrupted = interrupted;
    const ParsedArguments parsed = parseArguments(words(line));
    const auto waiting
        = store(runCommand(*world.model, parsed.arguments, context), &outcome.status);
    world.desktop.clock().runUntil([&] { return outcome.status >= 0; }, 600);
    return outcome;
}

} // namespace

class TestTovelctl : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void lineIsUnderstoodOrRefused_data()
    {
        using enum Arguments::Command;
        QTest::addColumn<QString>("line");
        QTest::addColumn<Arguments>("expected");
        QTest::addColumn<QString>("error");

        const auto good = [](const QString &line, const Arguments &expected) {
            QTest::newRow(qPrintable(line)) << line << expected << QString();
        };
        good(u"move --help"_s, {.command = Help});
        good(u"status --json"_s, {.command = Status, .json = true});
        good(u"flock add a b"_s, {.command = FlockAdd, .applications = {u"a"_s, u"b"_s}});
        good(u"rename 2 "_s, {.command = Rename, .desktop = u"2"_s, .name = u""_s});
        good(u"rename 2 -- --help"_s, {.command = Rename, .desktop = u"2"_s, .name = u"--help"_s});
        good(u"move --no-follow 3"_s, {.command = Move, .desktop = u"3"_s, .follow = false});

        const auto bad = [](const QString &line, const QString &error) {
            QTest::newRow(line.isEmpty() ? "nothing" : qPrintable(line))
                << line << Arguments() << error;
        };
        bad({}, u"a command is missing"_s);
        bad(u"fly"_s, u"there is no command fly"_s);
        bad(u"move 3 --fast"_s, u"there is no option --fast"_s);
        bad(u"flock"_s, u"flock wants add or remove"_s);
        bad(u"flock add"_s, u"flock add wants at least one application"_s);
        bad(u"rename 2"_s, u"rename wants a desktop and a name"_s);
        bad(u"move 3 4"_s, u"4 is one word too many"_s);
        bad(u"move 3 --follow --no-follow"_s, u"--follow and --no-follow exclude each other"_s);
        bad(u"status --follow"_s, u"--follow and --no-follow belong to move"_s);
    }

    void lineIsUnderstoodOrRefused()
    {
        QFETCH(QString, line);
        QFETCH(Arguments, expected);
        QFETCH(QString, error);
        const ParsedArguments parsed = parseArguments(words(line));
        QCOMPARE(parsed.error, error);
        if (error.isEmpty())
            QVERIFY(parsed.arguments == expected);
    }

    void commandEndsWithItsStatus_data()
    {
        QTest::addColumn<Change>("change");
        QTest::addColumn<QString>("line");
        QTest::addColumn<int>("status");
        QTest::addColumn<QStringList>("complaints");

        const auto row = [](const char *name, const QString &line, int status,
                            const QStringList &complaints, const Change &change = nothing) {
            QTest::newRow(name) << change << line << status << complaints;
        };
        row("moved", u"move 2"_s, 0, {});
        row("moved by name", u"move wORK --no-follow"_s, 0, {}, [](auto &w) {
            w.defaults().setObject(u"aliases"_s, QVariantMap{{u"A/eleven"_s, u"Work"_s}});
        });
        row("a window stays", u"move 3 --no-follow"_s, 1, {u"Notes: could not move (0)."_s},
            [](auto &w) { w.window(101).move = SimMove::Never; });
        row("cannot follow", u"move 3"_s, 1, {ModelTexts::couldNotSwitch()}, [](auto &w) {
            w.facts().stepsEnabled = false;
            w.app(notesPid).activation = w.app(mailPid).activation = SimActivation::Refused;
        });
        row("no such desktop", u"move 9"_s, 3, {u"there is no desktop “9”"_s});
        row("nothing to move", u"move 2"_s, 3, {ModelTexts::nothingToMove()}, [](auto &w) {
            w.desktop.removeWindow(101);
            w.desktop.removeWindow(102);
        });
        const Change denied = [](auto &w) { w.facts().trusted = false; };
        row("move without access", u"move 2"_s, 3, {ModelTexts::accessNeeded()}, denied);
        row("status without access", u"status"_s, 3, {ModelTexts::accessNeeded()}, denied);
        row("no such application", u"flock add none"_s, 3, {u"there is no application “none”"_s});

        const auto meanwhile = [&](const char *name, int status, const QStringList &complaints,
                                   const std::function<void(ModelWorld &, std::uint32_t)> &change) {
            row(name, u"move 3 --no-follow"_s, status, complaints, [=](ModelWorld &world) {
                world.desktop.onMoveRequested(
                    [=, &world](std::uint32_t number, std::uint64_t) { change(world, number); });
            });
        };
        // What cannot be seen any more has not arrived.
        meanwhile("access ends", 1, {}, [](auto &w, auto) { w.facts().trusted = false; });
        meanwhile("made sticky", 1,
                  {u"Notes: could not move (0)."_s, u"Mail: could not move (0)."_s},
                  [](auto &w, auto number) {
                      w.window(number).spaces = {10, 11, 12};
                      w.window(number).move = SimMove::Never;
                  });
        meanwhile("closed", 0, {u"Mail: desktop changed; skipped."_s}, [](auto &w, auto number) {
            if (number == 101)
                w.desktop.removeWindow(102);
        });
    }

    void commandEndsWithItsStatus()
    {
        QFETCH(Change, change);
        QFETCH(QString, line);
        QFETCH(int, status);
        QFETCH(QStringList, complaints);
        ModelWorld world;
        change(world);
        world.start();
        const Outcome outcome = run(world, line);
        QCOMPARE(outcome.status, status);
        QCOMPARE(outcome.complaints, complaints);
    }

    void statusNamesEachWindowsPlaceOrReason()
    {
        ModelWorld world;
        world.window(101).title = u"bell\x07 and \x1b[2J"_s;
        world.window(102).fullScreen = true;
        world.start();
        const QString text = run(world, u"status"_s).output;
        QVERIFY(text.contains(u"bell  and  [2J"_s));
        QVERIFY(text.contains(ModelTexts::fullScreen()));

        const QJsonObject json = run(world, u"status --json"_s).json();
        QCOMPARE(json[u"schema"_s], 1);
        QCOMPARE(json[u"flockDesktop"_s], 1);
        QCOMPARE(json[u"desktops"_s].toArray().size(), 5);
        const QJsonArray windows = json[u"windows"_s].toArray();
        QCOMPARE(windows.size(), 2);
        QCOMPARE(windows[0][u"desktops"_s].toArray(), QJsonArray{1});
        QVERIFY(windows[0][u"reason"_s].isNull());
        QCOMPARE(windows[1][u"reason"_s], ModelTexts::fullScreen());
    }

    void flockChangesWholeOrNotAtAll()
    {
        ModelWorld world;
        world.desktop.addApplication(
            {.pid = 502, .bundleIdentifier = u"org.one"_s, .name = u"Twin"_s});
        world.desktop.addApplication(
            {.pid = 503, .bundleIdentifier = u"org.two"_s, .name = u"twin"_s});
        world.desktop.addApplication(
            {.pid = 504, .bundleIdentifier = u"org.three"_s, .name = u"TWIN"_s});
        world.start();
        const auto before = world.model->selected();

        const Outcome ambiguous = run(world, u"flock remove notes tWiN"_s);
        QCOMPARE(ambiguous.status, 3);
        QCOMPARE(ambiguous.complaints,
                 QStringList{u"“tWiN” is ambiguous: org.one, org.two, org.three"_s});
        QCOMPARE(world.model->selected(), before);

        QCOMPARE(run(world, u"flock add TWIN"_s).status, 0);
        QVERIFY(world.model->selected().contains(u"org.three"_s));
        QCOMPARE(run(world, u"flock remove Notes org.mail"_s).status, 0);
        QCOMPARE(world.model->selected(), QSet<QString>{u"org.three"_s});
    }

    void moveReportsAndLeavesTheStoredChoice()
    {
        ModelWorld world;
        world.start();
        const Outcome outcome = run(world, u"move 2 --no-follow --json"_s);
        QCOMPARE(outcome.progress,
                 (QStringList{u"Moving 1 of 2…"_s, u"Moving 2 of 2…"_s,
                              u"1 moved · 1 already there"_s}));
        QCOMPARE(outcome.json()[u"summary"_s], u"1 moved · 1 already there"_s);
        QCOMPARE(outcome.json()[u"complete"_s], true);
        QCOMPARE(outcome.json()[u"desktop"_s][u"flockWindows"_s], 2);
        QCOMPARE(world.shownOnA(), 10U);
        QVERIFY(world.model->follow());
        QVERIFY(!world.defaults().object(u"follow"_s));

        const Outcome again = run(world, u"move 2"_s);
        QCOMPARE(again.status, 0);
        QCOMPARE(again.output, u"The flock is already on Desktop 2.\n"_s);
        QCOMPARE(again.progress, QStringList());
    }

    void interruptedMoveFinishesItsWindow()
    {
        ModelWorld world;
        world.start();
        int interrupted = 0;
        world.desktop.onMoveRequested([&](std::uint32_t, std::uint64_t) {
            interrupted = 2;
            world.model->stopMigration();
        });
        const Outcome outcome = run(world, u"move 3"_s, &interrupted);
        QCOMPARE(outcome.status, 130);
        QCOMPARE(outcome.output, u"1 moved · 0 already there · 1 not tried\n"_s);
        QCOMPARE(world.window(101).spaces, QList<std::uint64_t>{12});
        QCOMPARE(world.window(102).spaces, QList<std::uint64_t>{11});
        QCOMPARE(world.shownOnA(), 10U);
    }

    void choiceThatDoesNotLastIsReported()
    {
        ModelWorld world;
        world.start();
        world.defaults().failWrites(u"the disk is full"_s);
        const Outcome outcome = run(world, u"rename 1 Work"_s);
        QCOMPARE(outcome.status, 1);
        QCOMPARE(outcome.complaints,
                 QStringList{u"the choice could not be stored: the disk is full"_s});
        QCOMPARE(world.model->name(world.model->desktops().first()), u"Work"_s);
    }
};

QTEST_GUILESS_MAIN(TestTovelctl)
#include "tst_tovelctl.moc"
