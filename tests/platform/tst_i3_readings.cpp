#include "platform/session/i3/assigned_workspaces.h"
#include "platform/session/i3/commands.h"
#include "platform/session/i3/frames.h"
#include "platform/session/i3/picture.h"

#include <QTest>

using namespace tovel;
using namespace tovel::i3;
using namespace Qt::StringLiterals;

namespace {

// A tree with one output, HEADLESS-1, whose shown workspace "1" has the nodes.
QByteArray treeWith(const QByteArray &nodes, const QByteArray &floating = {})
{
    return R"({"type":"root","focus":[3],"nodes":[{"type":"output","name":"__i3","nodes":[)"
           R"({"type":"workspace","name":"__i3_scratch","fullscreen_mode":1,"floating_nodes":[{"id":90,"app_id":"s"}]}]},)"
           R"({"id":3,"type":"output","name":"HEADLESS-1","focus":[5,4],)"
           R"("rect":{"x":0,"y":0,"width":1280,"height":800},"nodes":[)"
           R"({"id":4,"type":"workspace","name":"web","nodes":[{"id":8,"app_id":"w"}]},)"
           R"({"id":5,"type":"workspace","name":"1","fullscreen_mode":1,"focus":[7,6],"nodes":[)"
        + nodes + R"(],"floating_nodes":[)" + floating + "]}]}]}";
}

const QByteArray Window = R"({"id":6,"type":"con","app_id":"a","name":"t","pid":42,"sticky":true,)"
                          R"("rect":{"x":10,"y":20,"width":300,"height":200}})";

QByteArray nested(int depth, const QByteArray &core)
{
    QByteArray json = core;
    for (int i = 0; i < depth; ++i)
        json = R"({"type":"con","nodes":[)" + json + "]}";
    return json;
}

} // namespace

class TestI3Readings : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void framesComeInPiecesAndEndAtNonsense()
    {
        const QByteArray bytes = frameBytes(MessageType::GetTree, "{}")
            + frameBytes(MessageType::BindingEvent, {}) + frameBytes(MessageType::GetVersion, "x");
        FrameReader reader;
        QList<Frame> frames;
        for (const char byte : bytes) {
            reader.append({&byte, 1});
            while (const auto frame = reader.take())
                frames.append(*frame);
        }
        QCOMPARE(frames,
                 (QList<Frame>{{MessageType::GetTree, "{}"},
                               {MessageType::BindingEvent, {}},
                               {MessageType::GetVersion, "x"}}));
        QVERIFY(!reader.isBroken() && isEvent(frames[1].type) && !isEvent(frames[2].type));

        for (const QByteArray &broken : {QByteArray("i3-ipx"), QByteArray("HTTP"),
                                         QByteArray("i3-ipc\xff\xff\xff\xff\0\0\0\0", 14)}) {
            FrameReader other;
            other.append(broken);
            QVERIFY(!other.take() && other.isBroken());
            other.append(bytes);
            QVERIFY(!other.take());
        }
    }

    void treesGiveOutputsAndWindows()
    {
        const auto tree = readTree(treeWith(
            Window
                + R"(,{"id":7,"type":"con","nodes":[{"id":9,"app_id":"b","fullscreen_mode":1}]})",
            R"({"id":10,"app_id":null,"window":77,"sticky":true,)"
            R"("window_properties":{"class":"C","instance":"i","transient_for":5,"window_type":"dialog"}})"));
        QVERIFY(tree);
        QCOMPARE(tree->outputs,
                 (QList<TreeOutput>{
                     {u"HEADLESS-1"_s, QRectF(0, 0, 1280, 800), {u"web"_s, u"1"_s}, u"1"_s}}));
        QCOMPARE(tree->windows.size(), 5);
        // Where the keyboard was last comes first.
        const TreeWindow &full = tree->windows[0];
        QCOMPARE(full.container, 9u);
        QVERIFY(full.facts.fullScreen);
        const TreeWindow &plain = tree->windows[1];
        QCOMPARE(plain.workspace, u"1"_s);
        QCOMPARE(plain.facts.process, 42);
        QCOMPARE(plain.facts.appId, u"a"_s);
        QCOMPARE(plain.facts.title, u"t"_s);
        QCOMPARE(plain.facts.frame, QRectF(10, 20, 300, 200));
        QVERIFY(!plain.isOnAll && !plain.facts.fullScreen && !plain.facts.minimized);
        const TreeWindow &sticky = tree->windows[2];
        QVERIFY(sticky.isOnAll && sticky.x11Window == 77 && sticky.facts.transientFor == 5);
        QVERIFY(sticky.facts.kind == WindowKind::Dialog && sticky.facts.className == u"C");
        QCOMPARE(tree->windows[3].workspace, u"web"_s);
        const TreeWindow &put = tree->windows[4];
        QVERIFY(put.facts.minimized && !put.facts.fullScreen && put.workspace.isEmpty()
                && put.output.isEmpty());
    }

    void treesOfNonsenseAreNeutral_data()
    {
        QTest::addColumn<QByteArray>("nodes");
        QTest::addColumn<int>("windows"); // beside those that are there anyway
        QTest::newRow("wrong kinds") << QByteArray(R"(7,"x",[{}],{"nodes":{},"focus":3})") << 0;
        QTest::newRow("numbers out of range")
            << QByteArray(R"({"id":1e300,"app_id":"x","pid":-4,"window":99999999999,)"
                          R"("rect":{"x":1e300,"width":-5}})")
            << 1;
        QTest::newRow("a hundred levels") << nested(100, Window) << 1;
        QTest::newRow("no UTF-8") << QByteArray("{\"id\":9,\"app_id\":\"caf\xe9\"}") << 1;
        QTest::newRow("too many levels") << nested(300, Window) << 0;
        QTest::newRow("a workspace in one")
            << QByteArray(R"({"type":"workspace","name":"in","nodes":[)" + Window + "]}") << 1;
    }
    void treesOfNonsenseAreNeutral()
    {
        QFETCH(const QByteArray, nodes);
        const auto tree = readTree(treeWith(nodes));
        QVERIFY(tree);
        QTEST(int(tree->windows.size()) - 2, "windows");
        for (const TreeWindow &window : tree->windows) {
            QVERIFY(window.facts.process >= 0 && window.x11Window == 0);
            QVERIFY(window.facts.frame.width() >= 0 && window.facts.frame.x() < 1 << 21);
        }
        for (const QByteArray &other : {QByteArray(), QByteArray("[]"), QByteArray("{}"),
                                        QByteArray(R"({"type":"root")"), nested(2000, "{}")})
            QVERIFY(!readTree(other));
    }

    void answersAreBelievedToTheLetter()
    {
        QVERIFY(readSuccess(R"([{"success":true},{"success":true}])"));
        QVERIFY(readSuccess(R"({"success":true})"));
        for (const char *refused :
             {"[]", "", "{}", R"([{"success":true},{"success":false}])", R"([{"success":1}])"})
            QVERIFY(!readSuccess(refused));
        const QByteArray version = R"({"human_readable":"1.7-rc x","variant":"sway"})";
        QCOMPARE(readVersion(version), (Version{Compositor::Sway, u"1.7-rc"_s}));
        QVERIFY(!readVersion(R"({"human_readable":17})"));
        QVERIFY(readsReload(R"({"change":"reload"})") && !readsReload(R"({"change":"focus"})"));
        QCOMPARE(readPressedCommand(R"({"change":"run","binding":{"command":"nop x"}})"),
                 u"nop x"_s);
        QCOMPARE(readPressedCommand(R"({"change":"run","binding":[]})"), QString());
        QCOMPARE(i3::readConfiguration("{\"config\":\"# caf\xe9\"}"), u"# caf\uFFFD"_s);
    }

    void namesReachTheSessionToTheLetter_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("sway");
        QTest::addColumn<QByteArray>("i3"); // empty: it cannot be said
        const auto row
            = [](const char *test, const QString &name, const char *sway, const char *i3) {
                  QTest::newRow(test) << name << QByteArray(sway) << QByteArray(i3);
              };
        row("plain", u"1: web"_s, "'1: web'", "\"1: web\"");
        row("double quotes", u"a\"b;c"_s, "'a\"b;c'", "\"a\\\"b;c\"");
        row("single quotes", u"a'b"_s, "\"a'b\"", "\"a'b\"");
        row("both", u"'\""_s, "", "\"'\\\"\"");
        row("a word of the command", u"Next"_s, "", "\"Next\"");
        row("replaced by sway", u"a\\$b"_s, "", "\"a\\\\$b\"");
        row("the session's own", u"__i3_scratch"_s, "", "");
        row("a line break", u"a\nb"_s, "", "");
        row("no UTF-8", u"caf\uFFFD"_s, "", "");
        row("nothing", QString(), "", "");
    }
    void namesReachTheSessionToTheLetter()
    {
        QFETCH(const QString, name);
        QTEST(quotedWorkspace(Compositor::Sway, name).value_or(QByteArray()), "sway");
        QTEST(quotedWorkspace(Compositor::I3, name).value_or(QByteArray()), "i3");
    }

    void rulesAreOfPlainTitlesAlone()
    {
        QCOMPARE(floatingRule({.process = 7, .title = u"To 1"_s}),
                 "for_window [pid=7 title=\"^To 1$\"] floating enable; "
                 "for_window [pid=7 title=\"^To 1$\"] sticky enable");
        for (const auto &title : {u"a\"] exec x"_s, u"a.b"_s, u"é"_s})
            QVERIFY(floatingRule({.process = 7, .title = title}).isEmpty());
    }

    void configurationsAssignWorkspaces()
    {
        const auto assigned = assignedWorkspaces(
            u"set $ws1 \"1: web\"\nset $ws10 10\nset $out DP-1\nworkspace $ws10 output $out DP-2\n"
            "  workspace \"$ws1\" output \\\n eDP-1\n# workspace 4 output DP-1\n"
            "workspace 5 gaps inner 3\nbindsym x workspace 6 output DP-1\nworkspace 10 output no\n"
            "set $wsp three\nset $wspx y\nworkspace $wsp3 output $wsp/$\n"
            "workspace big mail output 'the screen'\nworkspace output\nworkspace 7 output\n"_s);
        QCOMPARE(assigned,
                 (QList<AssignedWorkspace>{{u"10"_s, {u"DP-1"_s, u"DP-2"_s}},
                                           {u"1: web"_s, {u"eDP-1"_s}},
                                           {u"three3"_s, {u"three/$"_s}},
                                           {u"big mail"_s, {u"the screen"_s}}}));
    }

    void configurationsStaySmall()
    {
        QString text = u"set $a 0123456789\n"_s;
        for (char name = 'b'; name < 'z'; ++name)
            text += u"set $%1 $%2$%2$%2$%2\n"_s.arg(QLatin1Char(name)).arg(QLatin1Char(name - 1));
        const auto assigned = assignedWorkspaces(text + u"workspace $y output $y"_s);
        QVERIFY(assigned.value(0).name.size() > 100 && assigned[0].name.size() < 10000);
    }

    void workspacesAreWhatTheirNamesSay()
    {
        Sources sources{.compositor = Compositor::Sway,
                        .tree = *readTree(treeWith(Window)),
                        .assigned
                        = {{u"2"_s, {u"DP-9"_s, u"HEADLESS-1"_s}}, {u"3"_s, {u"DP-9"_s}}}};
        Picture picture;
        picture.draw(sources);
        const auto row = [&] { return picture.outputs().value(0).workspaces; };
        QCOMPARE(row().size(), 3);
        QStringList uuids;
        QStringList names;
        for (const SessionWorkspace &workspace : row()) {
            uuids.append(workspace.uuid);
            names.append(workspace.name);
        }
        QCOMPARE(uuids, (QStringList{u"1"_s, u"2"_s, u"web"_s}));
        QCOMPARE(names, (QStringList{{}, {}, u"web"_s}));
        QCOMPARE(picture.windows().first().workspaces, {row()[0].id});
        QCOMPARE(picture.workspace(row()[1].id), u"2"_s);

        // From left to right, and the primary one before the others.
        TreeOutput left{u"LEFT"_s, QRectF(-800, 0, 800, 600), {u"9"_s}, u"9"_s};
        sources.tree.outputs.append(left);
        const auto first = [&] {
            picture.draw(sources);
            return picture.screens().first().name + u' ' + row().first().uuid;
        };
        QCOMPARE(first(), u"LEFT 9"_s);
        sources.primary = u"HEADLESS-1"_s;
        QCOMPARE(first(), u"HEADLESS-1 1"_s);

        const auto before = row();
        sources.tree.outputs[0].workspaces = {u"1"_s, u"new"_s};
        picture.draw(sources);
        QCOMPARE(row().size(), 3);
        QVERIFY(!before.contains(row()[2]));
        QVERIFY(!picture.workspace(before[2].id));
        sources.tree.outputs[0].workspaces = {u"1"_s, u"web"_s};
        picture.draw(sources);
        QCOMPARE(row(), before);
    }
};

QTEST_APPLESS_MAIN(TestI3Readings)
#include "tst_i3_readings.moc"
