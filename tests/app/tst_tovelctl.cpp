#include "app/commands/answer_json.h"
#include "app/commands/carry_out.h"
#include "app/tovelctl/arguments.h"
#include "app/tovelctl/text.h"
#include "model/model_world.h"
#include "model/texts.h"
#include "support/test.h"

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

Outcome run(ModelWorld &world, const QString &line, const Surroundings &surroundings = {})
{
    const Arguments arguments = parseArguments(words(line)).arguments;
    Outcome outcome;
    const QObject scope;
    QObject::connect(world.model.get(), &TovelModel::didChange, &scope, [&](auto property) {
        if (property == TovelModel::Property::message && world.model->busy())
            outcome.progress.append(world.model->message());
    });
    std::optional<Answer> answer;
    carryOut(*world.model, arguments.request, surroundings).then([&](const Answer &it) {
        answer = it;
    });
    world.desktop.clock().runUntil([&] { return answer.has_value(); }, 600);
    if (!answer)
        return outcome;
    if (answerFromJson(arguments.request, compactJson(*answer).toUtf8()) != answer)
        return outcome; // another program would not understand it
    outcome.status = static_cast<int>(answer->status);
    outcome.output
        = arguments.json ? indentedJson(*answer) : answerText(arguments.request, *answer);
    outcome.complaints = answer->problems;
    return outcome;
}

} // namespace

class TestTovelctl : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void lineIsUnderstoodOrRefused()
    {
        const auto understood = [](const QString &line, const Arguments &expected) {
            const ParsedArguments parsed = parseArguments(words(line));
            return parsed.error.isEmpty() && parsed.arguments == expected;
        };
        QVERIFY(understood(u"move --help"_s, {.purpose = Arguments::Purpose::Help}));
        QVERIFY(understood(u"access"_s, {.purpose = Arguments::Purpose::Access}));
        QVERIFY(understood(u"flock add a b"_s, {.request = FlockRequest{true, {u"a"_s, u"b"_s}}}));
        QVERIFY(understood(u"rename 2 "_s, {.request = RenameRequest{u"2"_s, u""_s}}));
        QVERIFY(
            understood(u"rename 2 -- --help"_s, {.request = RenameRequest{u"2"_s, u"--help"_s}}));
        QVERIFY(understood(u"move --no-follow 3"_s, {.request = MoveRequest{u"3"_s, false}}));
        QVERIFY(understood(u"move --new"_s, {.request = MoveRequest{{}, {}, true}}));
        QVERIFY(understood(u"move a --new"_s, {.request = MoveRequest{u"a"_s, {}, true}}));

        const auto error = [](const QString &line) { return parseArguments(words(line)).error; };
        QCOMPARE(error({}), u"no command was given"_s);
        QCOMPARE(error(u"fly"_s), u"there is no command “fly”"_s);
        QCOMPARE(error(u"move 3 --fast"_s), u"there is no option --fast"_s);
        QCOMPARE(error(u"flock add"_s), u"“flock add” needs an application"_s);
        QCOMPARE(error(u"move 3 4"_s), u"“4” was not expected"_s);
        QCOMPARE(error(u"move --new "_s), u"no desktop has an empty name"_s);
        QCOMPARE(error(u"access --json"_s), u"--json does not go with “access”"_s);
        QCOMPARE(error(u"access now"_s), u"“now” was not expected"_s);
        QCOMPARE(error(u"apps --new"_s), u"--new goes with “move”"_s);
        QCOMPARE(error(u"move 3 --follow --no-follow"_s),
                 u"--follow and --no-follow exclude each other"_s);
        QCOMPARE(error(u"status --follow"_s), u"--follow and --no-follow go with “move”"_s);
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
        QCOMPARE(outcome(u"move --new Sea"_s, [](auto &) {}),
                 u"3 this session makes no desktops on request"_s);
        QCOMPARE(outcome(u"status"_s, [](auto &w) { w.facts().trusted = false; }),
                 u"3 "_s + ModelTexts::accessNeeded());

        const Change unreadable = [](auto &w) { w.defaults().failReads(u"locked"_s); };
        const QString unknown = ModelTexts::choicesUnreadable(u"locked"_s);
        QCOMPARE(outcome(u"status"_s, unreadable), u"1 "_s + unknown);
        QCOMPARE(outcome(u"apps"_s, unreadable), u"1 "_s + unknown);
        QCOMPARE(outcome(u"move 3"_s, unreadable), u"3 "_s + unknown);
        QCOMPARE(outcome(u"move Sea"_s, unreadable), u"3 "_s + unknown);
        QCOMPARE(outcome(u"flock remove Sharks"_s, unreadable), u"3 "_s + unknown);
        QCOMPARE(outcome(u"flock add Notes"_s, unreadable),
                 u"1 the flock could not be stored: locked"_s);

        // The reason is told where a manager puts a window back, or windows cannot be seen any
        // more.
        const auto meanwhile = [&](const Change &change) {
            return outcome(line, [&](ModelWorld &world) {
                world.desktop.onMoveRequested([&](std::uint32_t number, std::uint64_t) {
                    if (number == 101)
                        change(world);
                });
            });
        };
        QCOMPARE(meanwhile([](auto &w) { w.facts().trusted = false; }),
                 u"1 The windows could not be looked at afterwards."_s);
        QCOMPARE(meanwhile([](auto &w) {
                     w.desktop.after(0.1, [&w] { w.window(101).spaces = {10}; });
                     w.window(102).moveDelay = 0.3;
                 }),
                 u"1 Notes: arrived, but did not stay."_s);
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
        world.defaults().failWrites(u"full"_s, 1);
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
        QVERIFY(!world.stored().object(u"follow"_s));

        const Outcome again = run(world, u"move 2"_s);
        QCOMPARE(again.status, 0);
        QCOMPARE(again.output, u"The flock is already on Desktop 2.\n"_s);
        QCOMPARE(again.progress, QStringList());

        world.window(101).move = SimMove::Never;
        const QJsonObject shown = run(world, u"move 3 --follow --json"_s).json();
        QCOMPARE(shown[u"desktop"_s][u"shown"_s], true);
        QCOMPARE(shown[u"windows"_s][0][u"outcome"_s], u"failed"_s);
        QCOMPARE(shown[u"windows"_s][0][u"reason"_s], u"could not move (0)"_s);
        QCOMPARE(shown[u"windows"_s][1][u"outcome"_s], u"moved"_s);
        QVERIFY(shown[u"windows"_s][1][u"reason"_s].isNull());
        QCOMPARE(run(world, u"move 7 --json"_s).json()[u"cause"_s], u"notFound"_s);

        world.window(101).move = SimMove::Arrives;
        world.desktop.onMoveRequested([&](auto...) { world.window(101).spaces = {11}; });
        const QJsonObject putBack = run(world, u"move 1 --json"_s).json();
        QCOMPARE(putBack[u"windows"_s][0][u"outcome"_s], u"putBack"_s);
    }

    void answerOfAnotherProgramIsReadStrictly()
    {
        // As the first version wrote it.
        const QByteArray move
            = R"({"complete":true,"desktop":{"display":"A","flockWindows":1,"name":"Desktop 3",)"
              R"("number":3,"shown":true},"issues":["i"],"problems":["p"],"schema":1,"status":1,)"
              R"("summary":"s","untried":2})";
        const MoveContent content{{3, u"Desktop 3"_s, u"A"_s, true, 1}, u"s"_s, {u"i"_s}, true, 2};
        const Request request = MoveRequest();
        QVERIFY(answerFromJson(request, move)
                == (Answer{AnswerStatus::Incomplete, {u"p"_s}, content}));
        const QByteArray error = R"({"error":"e","problems":["e"],"schema":1,"status":3})";
        QVERIFY(answerFromJson(request, error) == refusal(RefusalCause::Other, u"e"_s));
        QVERIFY(!answerFromJson(AppsRequest(), move));
        QVERIFY(!answerFromJson(request, move.chopped(1)));
        for (const auto &[text, before, after] :
             {std::tuple(move, "true", "1"),
              {move, "\"s\"", "null"},
              {move, ":2", ":2.5"},
              {move, ":2", ":-2"},
              {move, ":2", ":4294967296"},
              {move, "[\"i\"]", "[0]"},
              {move, "\"schema\":1", "\"schema\":2"},
              {move, "\"status\":1", "\"status\":2"},
              {move, "\"untried\"", "\"windows\":0,\"untried\""},
              {error, ":3", ":0"},
              {error, "\"schema\"", "\"cause\":\"mood\",\"schema\""}}) {
            const QByteArray changed = QByteArray(text).replace(before, after);
            QVERIFY2(changed != text && !answerFromJson(request, changed), after);
        }
    }

    void choiceThatDoesNotLastIsReported()
    {
        ModelWorld world;
        world.start();
        world.defaults().failWrites(u"the disk is full"_s);
        const QStringList complaints{u"the name could not be stored: the disk is full"_s};
        for (const bool goesOn : {true, false}) {
            const Outcome outcome = run(world, u"rename 1 Work"_s, {.goesOn = goesOn});
            QCOMPARE(outcome.status, 1);
            QCOMPARE(outcome.complaints, complaints);
            QCOMPARE(outcome.output, goesOn ? u"Desktop 1 is now “Work”.\n"_s : QString());
        }
        QCOMPARE(world.model->name(world.model->desktops().first()), u"Work"_s);
        for (const QString &name : {QString(1001, u'x'), u"a\x1b[2J"_s, u"a\nb"_s})
            QCOMPARE(run(world, u"rename 1 "_s + name).status, 3);
        QCOMPARE(world.model->name(world.model->desktops().first()), u"Work"_s);

        world.defaults().failReads(u"locked"_s);
        world.model->refresh();
        const Outcome moved = run(world, u"move 3 --no-follow"_s);
        QCOMPARE(moved.status, 0);
        QCOMPARE(moved.complaints, QStringList{ModelTexts::choicesUnreadable(u"locked"_s)});
        world.defaults().failReads({});

        world.defaults().failWrites({});
        for (const QString &notice : {u"set aside"_s, QString()}) {
            world.defaults().giveNotice(notice);
            const Outcome stored = run(world, u"rename 1 Work"_s);
            QCOMPARE(stored.status, 0);
            QCOMPARE(stored.complaints.join(u'|'), notice);
            QCOMPARE(world.model->choicesProblem(), notice);
        }
    }
};

QTEST_GUILESS_MAIN(TestTovelctl)
#include "tst_tovelctl.moc"
