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

Outcome run(ModelWorld &world, const QStringList &line, int *interrupted = nullptr)
{
    Outcome outcome;
    CommandContext context;
    context.print = [&](const QString &text) { outcome.output += text; };
    context.complain = [&](const QString &text) { outcome.complaints.append(text); };
    context.progress = [&](const QString &text) { outcome.progress.append(text); };
    context.interrupted = interrupted;
    const ParsedArguments parsed = parseArguments(line);
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
    void lineIsUnderstoodOrRefused_data();
    void lineIsUnderstoodOrRefused();
    void commandEndsWithItsStatus_data();
    void commandEndsWithItsStatus();
    void statusNamesEachWindowsPlaceOrReason();
    void flockChangesWholeOrNotAtAll();
    void moveReportsAndLeavesTheStoredChoice();
    void interruptedMoveFinishesItsWindow();
    void choiceThatDoesNotLastIsReported();
};

void TestTovelctl::lineIsUnderstoodOrRefused_data()
{
    using enum Arguments::Command;
    QTest::addColumn<QStringList>("line");
    QTest::addColumn<Arguments>("expected");
    QTest::addColumn<QString>("error");

    const auto good = [](const char *name, const QStringList &line, const Arguments &expected) {
        QTest::newRow(name) << line << expected << QString();
    };
    good("help anywhere", {u"move"_s, u"--help"_s}, {.command = Help});
    good("json", {u"status"_s, u"--json"_s}, {.command = Status, .json = true});
    good("several applications", {u"flock"_s, u"add"_s, u"a"_s, u"b"_s},
         {.command = FlockAdd, .applications = {u"a"_s, u"b"_s}});
    good("empty name", {u"rename"_s, u"2"_s, QString()},
         {.command = Rename, .desktop = u"2"_s, .name = u""_s});
    good("name like an option", {u"rename"_s, u"2"_s, u"--"_s, u"--help"_s},
         {.command = Rename, .desktop = u"2"_s, .name = u"--help"_s});
    good("follow", {u"move"_s, u"--no-follow"_s, u"3"_s},
         {.command = Move, .desktop = u"3"_s, .follow = false});

    const auto bad = [](const char *name, const QStringList &line, const QString &error) {
        QTest::newRow(name) << line << Arguments() << error;
    };
    bad("nothing", {}, u"a command is missing"_s);
    bad("unknown command", {u"fly"_s}, u"there is no command fly"_s);
    bad("unknown option", {u"move"_s, u"3"_s, u"--fast"_s}, u"there is no option --fast"_s);
    bad("flock without action", {u"flock"_s}, u"flock wants add or remove"_s);
    bad("flock without application", {u"flock"_s, u"add"_s},
        u"flock add wants at least one application"_s);
    bad("rename without name", {u"rename"_s, u"2"_s}, u"rename wants a desktop and a name"_s);
    bad("one word too many", {u"move"_s, u"3"_s, u"4"_s}, u"4 is one word too many"_s);
    bad("contradiction", {u"move"_s, u"3"_s, u"--follow"_s, u"--no-follow"_s},
        u"--follow and --no-follow exclude each other"_s);
    bad("follow elsewhere", {u"status"_s, u"--follow"_s},
        u"--follow and --no-follow belong to move"_s);
}

void TestTovelctl::lineIsUnderstoodOrRefused()
{
    QFETCH(QStringList, line);
    QFETCH(Arguments, expected);
    QFETCH(QString, error);
    const ParsedArguments parsed = parseArguments(line);
    QCOMPARE(parsed.error, error);
    if (error.isEmpty())
        QVERIFY(parsed.arguments == expected);
}

void TestTovelctl::commandEndsWithItsStatus_data()
{
    QTest::addColumn<Change>("change");
    QTest::addColumn<QStringList>("line");
    QTest::addColumn<int>("status");
    QTest::addColumn<QStringList>("complaints");

    const auto row = [](const char *name, const Change &change, const QStringList &line, int status,
                        const QStringList &complaints) {
        QTest::newRow(name) << change << line << status << complaints;
    };
    const Change denied = [](ModelWorld &world) { world.facts().trusted = false; };
    const Change refused = [](ModelWorld &world) { world.window(101).move = SimMove::Never; };
    const Change stuck = [](ModelWorld &world) {
        world.facts().stepsEnabled = false;
        world.app(notesPid).activation = SimActivation::Refused;
        world.app(mailPid).activation = SimActivation::Refused;
    };
    const Change empty = [](ModelWorld &world) {
        world.desktop.removeWindow(101);
        world.desktop.removeWindow(102);
    };
    const QString access = ModelTexts::accessNeeded();
    row("moved", nothing, {u"move"_s, u"2"_s}, 0, {});
    row("moved by name", nothing, {u"move"_s, u"desktop 2"_s, u"--no-follow"_s}, 0, {});
    row("a window stays", refused, {u"move"_s, u"3"_s, u"--no-follow"_s}, 1,
        {u"Notes: could not move (0)."_s});
    // What cannot be seen any more has not arrived.
    row("access ends in the middle",
        [](ModelWorld &world) {
            world.desktop.onMoveRequested(
                [&world](std::uint32_t, std::uint64_t) { world.facts().trusted = false; });
        },
        {u"move"_s, u"3"_s, u"--no-follow"_s}, 1, {});
    row("made sticky in the middle",
        [](ModelWorld &world) {
            world.desktop.onMoveRequested([&world](std::uint32_t number, std::uint64_t) {
                world.window(number).spaces = {10, 11, 12};
                world.window(number).move = SimMove::Never;
            });
        },
        {u"move"_s, u"3"_s, u"--no-follow"_s}, 1,
        {u"Notes: could not move (0)."_s, u"Mail: could not move (0)."_s});
    row("closed in the middle",
        [](ModelWorld &world) {
            world.desktop.onMoveRequested([&world](std::uint32_t number, std::uint64_t) {
                if (number == 101)
                    world.desktop.removeWindow(102);
            });
        },
        {u"move"_s, u"3"_s, u"--no-follow"_s}, 0, {u"Mail: desktop changed; skipped."_s});
    row("cannot follow", stuck, {u"move"_s, u"3"_s}, 1, {ModelTexts::couldNotSwitch()});
    row("no such desktop", nothing, {u"move"_s, u"9"_s}, 3, {u"there is no desktop “9”"_s});
    row("nothing to move", empty, {u"move"_s, u"2"_s}, 3, {ModelTexts::nothingToMove()});
    row("move without access", denied, {u"move"_s, u"2"_s}, 3, {access});
    row("status without access", denied, {u"status"_s}, 3, {access});
    row("no such application", nothing, {u"flock"_s, u"add"_s, u"none"_s}, 3,
        {u"there is no application “none”"_s});
}

void TestTovelctl::commandEndsWithItsStatus()
{
    QFETCH(Change, change);
    QFETCH(QStringList, line);
    QFETCH(int, status);
    QFETCH(QStringList, complaints);
    ModelWorld world;
    change(world);
    world.start();
    const Outcome outcome = run(world, line);
    QCOMPARE(outcome.status, status);
    QCOMPARE(outcome.complaints, complaints);
}

void TestTovelctl::statusNamesEachWindowsPlaceOrReason()
{
    ModelWorld world;
    world.window(101).title = u"bell\x07 and \x1b[2J"_s;
    world.window(102).fullScreen = true;
    world.start();
    const QString text = run(world, {u"status"_s}).output;
    QVERIFY(text.contains(u"bell  and  [2J"_s));
    QVERIFY(text.contains(ModelTexts::fullScreen()));

    const QJsonObject json = run(world, {u"status"_s, u"--json"_s}).json();
    QCOMPARE(json[u"schema"_s], 1);
    QCOMPARE(json[u"flockDesktop"_s], 1);
    QCOMPARE(json[u"desktops"_s].toArray().size(), 5);
    const QJsonArray windows = json[u"windows"_s].toArray();
    QCOMPARE(windows.size(), 2);
    QCOMPARE(windows[0][u"desktops"_s].toArray(), QJsonArray{1});
    QVERIFY(windows[0][u"reason"_s].isNull());
    QCOMPARE(windows[1][u"reason"_s], ModelTexts::fullScreen());
}

void TestTovelctl::flockChangesWholeOrNotAtAll()
{
    ModelWorld world;
    world.desktop.addApplication({.pid = 502, .bundleIdentifier = u"org.one"_s, .name = u"Twin"_s});
    world.desktop.addApplication({.pid = 503, .bundleIdentifier = u"org.two"_s, .name = u"twin"_s});
    world.desktop.addApplication(
        {.pid = 504, .bundleIdentifier = u"org.three"_s, .name = u"TWIN"_s});
    world.start();
    const auto before = world.model->selected();

    const Outcome ambiguous = run(world, {u"flock"_s, u"remove"_s, u"notes"_s, u"tWiN"_s});
    QCOMPARE(ambiguous.status, 3);
    QCOMPARE(ambiguous.complaints,
             QStringList{u"“tWiN” is ambiguous: org.one, org.two, org.three"_s});
    QCOMPARE(world.model->selected(), before);

    QCOMPARE(run(world, {u"flock"_s, u"add"_s, u"TWIN"_s}).status, 0);
    QVERIFY(world.model->selected().contains(u"org.three"_s));
    QCOMPARE(run(world, {u"flock"_s, u"remove"_s, u"Notes"_s, u"org.mail"_s}).status, 0);
    QCOMPARE(world.model->selected(), QSet<QString>{u"org.three"_s});
}

void TestTovelctl::moveReportsAndLeavesTheStoredChoice()
{
    ModelWorld world;
    world.start();
    const Outcome outcome = run(world, {u"move"_s, u"2"_s, u"--no-follow"_s, u"--json"_s});
    QCOMPARE(
        outcome.progress,
        (QStringList{u"Moving 1 of 2…"_s, u"Moving 2 of 2…"_s, u"1 moved · 1 already there"_s}));
    QCOMPARE(outcome.json()[u"summary"_s], u"1 moved · 1 already there"_s);
    QCOMPARE(outcome.json()[u"complete"_s], true);
    QCOMPARE(outcome.json()[u"desktop"_s][u"flockWindows"_s], 2);
    QCOMPARE(world.shownOnA(), 10U);
    QVERIFY(world.model->follow());
    QVERIFY(!world.defaults().object(u"follow"_s));

    const Outcome again = run(world, {u"move"_s, u"2"_s});
    QCOMPARE(again.status, 0);
    QCOMPARE(again.output, u"The flock is already on Desktop 2.\n"_s);
    QCOMPARE(again.progress, QStringList());
}

void TestTovelctl::interruptedMoveFinishesItsWindow()
{
    ModelWorld world;
    world.start();
    int interrupted = 0;
    world.desktop.onMoveRequested([&](std::uint32_t, std::uint64_t) {
        interrupted = 2;
        world.model->stopMigration();
    });
    const Outcome outcome = run(world, {u"move"_s, u"3"_s}, &interrupted);
    QCOMPARE(outcome.status, 130);
    QCOMPARE(outcome.output, u"1 moved · 0 already there · 1 not tried\n"_s);
    QCOMPARE(world.window(101).spaces, QList<std::uint64_t>{12});
    QCOMPARE(world.window(102).spaces, QList<std::uint64_t>{11});
    QCOMPARE(world.shownOnA(), 10U);
}

void TestTovelctl::choiceThatDoesNotLastIsReported()
{
    ModelWorld world;
    world.start();
    world.defaults().failWrites(u"the disk is full"_s);
    const Outcome outcome = run(world, {u"rename"_s, u"1"_s, u"Work"_s});
    QCOMPARE(outcome.status, 1);
    QCOMPARE(outcome.complaints,
             QStringList{u"the choice could not be stored: the disk is full"_s});
    QCOMPARE(world.model->name(world.model->desktops().first()), u"Work"_s);
}

QTEST_GUILESS_MAIN(TestTovelctl)
#include "tst_tovelctl.moc"
