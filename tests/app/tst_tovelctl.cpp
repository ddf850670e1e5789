#include "app/commands/carry_out.h"
#include "app/tovelctl/arguments.h"
#include "app/tovelctl/text.h"
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

QStringList words(const QString &line) { return line.isEmpty() ? QStringList() : line.split(u' '); }

Outcome run(ModelWorld &world, const QString &line)
{
    const Arguments arguments = parseArguments(words(line)).arguments;
    Outcome outcome;
    const QObject scope;
    QObject::connect(world.model.get(), &TovelModel::didChange, &scope, [&](auto property) {
        if (property == TovelModel::Property::message && world.model->busy())
            outcome.progress.append(world.model->message());
    });
    std::optional<QJsonObject> answer;
    carryOut(*world.model, arguments.request, {}).then([&](const QJsonObject &it) { answer = it; });
    world.desktop.clock().runUntil([&] { return answer.has_value(); }, 600);
    if (!answer)
        return outcome;
    outcome.status = (*answer)[u"status"_s].toInt(-1);
    outcome.output
        = arguments.json ? answerJson(*answer) : answerText(arguments.request.command, *answer);
    for (const QJsonValue problem : (*answer)[u"problems"_s].toArray())
        outcome.complaints.append(problem.toString());
    return outcome;
}

} // namespace

class TestTovelctl : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void lineIsUnderstoodOrRefused()
    {
        using enum Request::Command;
        const auto understood = [](const QString &line, const Arguments &expected) {
            const ParsedArguments parsed = parseArguments(words(line));
            return parsed.error.isEmpty() && parsed.arguments == expected;
        };
        QVERIFY(understood(u"move --help"_s, {.purpose = Arguments::Purpose::Help}));
        QVERIFY(understood(u"flock add a b"_s,
                           {.request = {.command = FlockAdd, .applications = {u"a"_s, u"b"_s}}}));
        QVERIFY(understood(u"rename 2 "_s,
                           {.request = {.command = Rename, .desktop = u"2"_s, .name = u""_s}}));
        QVERIFY(
            understood(u"rename 2 -- --help"_s,
                       {.request = {.command = Rename, .desktop = u"2"_s, .name = u"--help"_s}}));
        QVERIFY(understood(u"move --no-follow 3"_s,
                           {.request = {.command = Move, .desktop = u"3"_s, .follow = false}}));

        const auto error = [](const QString &line) { return parseArguments(words(line)).error; };
        QCOMPARE(error({}), u"a command is missing"_s);
        QCOMPARE(error(u"fly"_s), u"there is no command fly"_s);
        QCOMPARE(error(u"move 3 --fast"_s), u"there is no option --fast"_s);
        QCOMPARE(error(u"flock add"_s), u"flock add wants at least one application"_s);
        QCOMPARE(error(u"move 3 4"_s), u"4 is one word too many"_s);
        QCOMPARE(error(u"move 3 --follow --no-follow"_s),
                 u"--follow and --no-follow exclude each other"_s);
        QCOMPARE(error(u"status --follow"_s), u"--follow and --no-follow belong to move"_s);
    }

    void moveEndsWithItsStatus()
    {
        const auto outcome = [](const QString &line, const Change &change) {
            ModelWorld world;
            change(world);
            world.start();
            const Outcome result = run(world, line);
            return QString::number(result.status) + u' ' + result.complaints.join(u'|');
        };
        const QString line = u"move 3 --no-follow"_s;
        QCOMPARE(outcome(line, [](auto &w) { w.window(101).move = SimMove::Never; }),
                 u"1 Notes: could not move (0)."_s);
        const Change cannotFollow = [](auto &w) {
            w.facts().stepsEnabled = false;
            w.app(notesPid).activation = w.app(mailPid).activation = SimActivation::Refused;
        };
        QCOMPARE(outcome(u"move 3"_s, cannotFollow), u"1 "_s + ModelTexts::couldNotSwitch());
        QCOMPARE(outcome(u"status"_s, [](auto &w) { w.facts().trusted = false; }),
                 u"3 "_s + ModelTexts::accessNeeded());

        const auto meanwhile = [&](const Change &change) {
            return outcome(line, [&](ModelWorld &world) {
                world.desktop.onMoveRequested([&](std::uint32_t number, std::uint64_t) {
                    if (number == 101)
                        change(world);
                });
            });
        };
        // What cannot be seen any more has not arrived.
        QCOMPARE(meanwhile([](auto &w) { w.facts().trusted = false; }), u"1 "_s);
        QCOMPARE(meanwhile([](auto &w) { w.desktop.removeWindow(102); }),
                 u"0 Mail: desktop changed; skipped."_s);
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
        std::int32_t pid = 502;
        for (const auto &[identifier, name] :
             {std::pair(u"org.one"_s, u"twin"_s), std::pair(u"org.two"_s, u"TWIN"_s)}) {
            world.desktop.addApplication(
                {.pid = pid++, .bundleIdentifier = identifier, .name = name});
        }
        world.start();
        const auto before = world.model->selected();

        const Outcome ambiguous = run(world, u"flock remove notes tWiN"_s);
        QCOMPARE(ambiguous.status, 3);
        QCOMPARE(ambiguous.complaints, QStringList{u"“tWiN” is ambiguous: org.one, org.two"_s});
        QCOMPARE(world.model->selected(), before);

        QCOMPARE(run(world, u"flock add TWIN"_s).status, 0);
        QVERIFY(world.model->selected().contains(u"org.two"_s));
        QCOMPARE(run(world, u"flock remove Notes org.mail"_s).status, 0);
        QCOMPARE(world.model->selected(), QSet<QString>{u"org.two"_s});
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
        QCOMPARE(run(world, u"rename 1 "_s + QString(1001, u'x')).status, 3);
        QCOMPARE(world.model->name(world.model->desktops().first()), u"Work"_s);
    }
};

QTEST_GUILESS_MAIN(TestTovelctl)
#include "tst_tovelctl.moc"
