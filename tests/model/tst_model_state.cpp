#include "model_world.h"

#include <QTest>

using namespace tovel;

namespace {

QString describe(const TovelModel &model)
{
    QStringList flock(model.selected().cbegin(), model.selected().cend());
    flock.sort();
    return u"follow=%1 pinned=%2 icon=%3 flock=%4 aliases=%5"_s.arg(model.follow())
        .arg(model.pinned())
        .arg(rawValue(model.iconStyle()), flock.join(u','),
             QStringList(model.aliases().values()).join(u','));
}

} // namespace

class TestModelState : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void storedChoices_data();
    void storedChoices();
    void assignments();
    void announcesBeforeAndTellsAfter();
    void refreshesOnlyWhileLookedAt();
    void countsDesktopChanges();
    void iconStyles();
};

void TestModelState::storedChoices_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QString>("expected");

    const auto row = [](const char *name, const QString &key, const QVariant &value,
                        const QString &difference = {}) {
        QStringList parts{u"follow=1"_s, u"pinned=0"_s, u"icon=dark"_s, u"flock="_s, u"aliases="_s};
        for (QString &part : parts) {
            if (part.section(u'=', 0, 0) == difference.section(u'=', 0, 0))
                part = difference;
        }
        QTest::newRow(name) << key << value << parts.join(u' ');
    };
    const QVariantMap names{{u"A/ten"_s, u"Work"_s}};
    const QVariantMap notNames{{u"A/ten"_s, u"Work"_s}, {u"A/12"_s, 12}};
    row("nothing", u"unrelated"_s, 1);
    row("follow off", u"follow"_s, false, u"follow=0"_s);
    row("follow as text", u"follow"_s, u"false"_s);
    row("follow as number", u"follow"_s, 0);
    row("pinned", u"pinned"_s, true, u"pinned=1"_s);
    row("pinned as text", u"pinned"_s, u"true"_s);
    row("light icon", u"iconStyle"_s, u"light"_s, u"icon=light"_s);
    row("icon in other case", u"iconStyle"_s, u"Light"_s);
    row("flock", u"selected"_s, QStringList{u"b"_s, u"a"_s}, u"flock=a,b"_s);
    row("flock with a number", u"selected"_s, QVariantList{u"a"_s, 1});
    row("aliases", u"aliases"_s, names, u"aliases=Work"_s);
    row("aliases with a number", u"aliases"_s, notNames);
}

void TestModelState::storedChoices()
{
    QFETCH(QString, key);
    QFETCH(QVariant, value);
    QFETCH(QString, expected);

    ModelWorld world;
    world.defaults().setObject(u"selected"_s, QStringList());
    world.defaults().setObject(key, value);
    world.defaults().takeWrites();
    const TovelModel model(world.desktop.platform());
    QCOMPARE(describe(model), expected);
    QCOMPARE(world.defaults().takeWrites(), QStringList());
}

void TestModelState::assignments()
{
    ModelWorld world;
    TovelModel &model = world.start();
    QStringList calls;
    model.onPinChanged([&](bool pinned) {
        calls.append(u"pin %1 %2"_s.arg(pinned).arg(
            world.defaults().boolean(u"pinned"_s).value_or(!pinned)));
    });
    model.onIconChanged([&](TovelIconStyle style) {
        calls.append(u"icon %1 %2"_s.arg(
            rawValue(style), world.defaults().text(u"iconStyle"_s).value_or(QString())));
    });

    for (const QStringList &changes :
         {QStringList{u"follow"_s, u"pinned"_s, u"iconStyle"_s}, QStringList()}) {
        model.setFollow(false);
        model.setPinned(true);
        model.setIconStyle(TovelIconStyle::light);
        QCOMPARE(world.takeChanges(), changes);
        QCOMPARE(world.defaults().takeWrites(),
                 (QStringList{u"follow"_s, u"pinned"_s, u"iconStyle"_s}));
        QCOMPARE(std::exchange(calls, {}), (QStringList{u"pin 1 1"_s, u"icon light light"_s}));
    }
    QVERIFY(world.defaults().boolean(u"follow"_s) == false);
    QCOMPARE(describe(TovelModel(world.desktop.platform())),
             u"follow=0 pinned=1 icon=light flock=org.mail,org.notes aliases="_s);
}

void TestModelState::announcesBeforeAndTellsAfter()
{
    ModelWorld world;
    TovelModel &model = world.start();
    QStringList seen;
    const auto note = [&] { seen.append(model.message()); };
    connect(&model, &TovelModel::willChange, this, note);
    connect(&model, &TovelModel::didChange, this, note);
    model.setMessage(u"one"_s);
    model.setMessage(u"one"_s);
    QCOMPARE(seen, (QStringList{QString(), u"one"_s}));
}

void TestModelState::refreshesOnlyWhileLookedAt()
{
    ModelWorld world;
    TovelModel &model = world.start();
    world.desktop.removeWindow(102);
    world.desktop.clock().advance(30);
    QCOMPARE(world.takeChanges(), QStringList());

    world.desktop.world().visibleWindow = true;
    world.desktop.clock().advance(2.99);
    QCOMPARE(world.takeChanges(), QStringList());
    world.desktop.clock().advance(0.01);
    QCOMPARE(world.takeChanges(), QStringList{u"windows"_s});
    world.desktop.clock().advance(30);
    QCOMPARE(world.takeChanges(), QStringList());

    world.desktop.window(101).move = SimMove::Never;
    world.desktop.addWindow({.number = 103, .pid = notesPid, .spaces = {12}, .moveDelay = 0.7});
    const auto task = model.migrate(world.target(11));
    world.takeChanges();
    world.desktop.addDisplay({.identifier = u"C"_s, .spaces = {{.id = 30}}});
    model.refresh();
    model.refreshDesktopList();
    QCOMPARE(world.takeChanges(), QStringList());
    QVERIFY(world.finish(task));

    world.model.reset();
    QCOMPARE(world.desktop.clock().timerCount(), 0);
}

void TestModelState::countsDesktopChanges()
{
    ModelWorld world;
    const TovelModel &model = world.start();
    world.desktop.showSpace(11);
    QCOMPARE(model.spaceChangeSerial(), 1);
    world.desktop.postActiveSpaceDidChange();
    QCOMPARE(model.spaceChangeSerial(), 2);
    QCOMPARE(world.takeChanges(), QStringList());
    world.model.reset();
    world.desktop.showSpace(10); // nobody is left to be told
}

void TestModelState::iconStyles()
{
    QStringList table;
    for (const TovelIconStyle style : allIconStyles()) {
        table.append(rawValue(style) + u' ' + title(style) + u' ' + resourceName(style));
        QVERIFY(iconStyleFromRawValue(rawValue(style)) == style);
        QVERIFY(!iconStyleFromRawValue(title(style)));
    }
    QCOMPARE(table, (QStringList{u"dark Dark Tovel"_s, u"light Light TovelLight"_s}));
}

QTEST_GUILESS_MAIN(TestModelState)
#include "tst_model_state.moc"
