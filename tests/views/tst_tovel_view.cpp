#include "model/model_world.h"
#include "support/test.h"
#include "views/app_row.h"
#include "views/components/chosen_app_card.h"
#include "views/components/popover.h"
#include "views/desktop_tile.h"
#include "views/display_button.h"
#include "views/model_watch.h"
#include "views/skipped_list.h"
#include "views/theme.h"
#include "views/tovel_status_view.h"
#include "views/tovel_view.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>

namespace {

constexpr QSize size(940, 668);

// The world's panel on the screen.
class Panel
{
public:
    explicit Panel(ModelWorld &world)
        : view(world.start())
    {
        view.resize(size);
        view.show();
        view.activateWindow();
        [[maybe_unused]] const bool active = QTest::qWaitForWindowActive(&view);
        settle();
    }

    static void settle() { QCoreApplication::processEvents(); }

    template <typename Kind>
    QList<Kind *> visible() const
    {
        QList<Kind *> result = view.findChildren<Kind *>();
        result.removeIf([](Kind *item) { return !item->isVisible(); });
        return result;
    }

    QWidget *named(const QString &name) const
    {
        for (QWidget *widget : visible<QWidget>()) {
            const auto *button = qobject_cast<QAbstractButton *>(widget);
            if (widget->accessibleName() == name || (button && button->text() == name))
                return widget;
        }
        return nullptr;
    }

    void click(const QString &name) const
    {
        QTest::mouseClick(named(name), Qt::LeftButton);
        settle();
    }

    // In the view's coordinates.
    QRect place(const QWidget *widget) const
    {
        return QRect(widget->mapTo(&view, QPoint()), widget->size());
    }

    Popover *openPopover() const
    {
        for (Popover *popover : view.findChildren<Popover *>()) {
            if (popover->isOpen())
                return popover;
        }
        return nullptr;
    }

    QStringList offered() const
    {
        QStringList result;
        for (const AppRow *row : visible<AppRow>())
            result.append(row->app().name);
        return result;
    }

    TovelView view;
};

void addApplications(ModelWorld &world, const QStringList &names)
{
    for (int i = 0; i < names.size(); ++i)
        world.desktop.addApplication(
            {.pid = 600 + i, .bundleIdentifier = names[i], .name = names[i]});
}

} // namespace

class TestTovelView : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aBurstOfChangesIsOneRedraw()
    {
        ModelWorld world;
        TovelModel &model = world.start();
        int redraws = 0;
        const ModelWatch watch(
            model, [&] { ++redraws; }, nullptr);
        model.setMessage(u"one"_s);
        model.setMessage(u"two"_s);
        model.setIssues({u"three"_s});
        QCOMPARE(redraws, 0);
        Panel::settle();
        QCOMPARE(redraws, 1);
        model.setMessage(u"two"_s);
        Panel::settle();
        QCOMPARE(redraws, 1);
    }

    void anApplicationIsReopenedOnceAtATime()
    {
        ModelWorld world;
        world.defaults().put(u"selected"_s, QStringList{u"org.agenda"_s});
        world.defaults().put(u"appNames"_s, QVariantMap{{u"org.agenda"_s, u"Agenda"_s}});
        world.facts().installed.append({.bundleIdentifier = u"org.agenda"_s,
                                        .location = QUrl(u"file:///apps/agenda"_s),
                                        .launchDelay = 5});
        const Panel panel(world);
        panel.click(u"Reopen Agenda"_s);
        auto *button = qobject_cast<QAbstractButton *>(panel.named(u"Opening…"_s));
        QVERIFY(button);
        QTest::mouseClick(button, Qt::LeftButton);
        QCOMPARE(world.desktop.takeJournal(), QStringList{u"open file:///apps/agenda"_s});
        world.desktop.clock().advance(30);
        QCOMPARE(button->text(), u"Reopen"_s);
        // The card may go meanwhile, by its own mark.
        QTest::mouseClick(button, Qt::LeftButton);
        QTest::keyClick(panel.named(u"Remove Agenda"_s), Qt::Key_Return);
        Panel::settle();
        QVERIFY(panel.visible<ChosenAppCard>().isEmpty());
        world.desktop.clock().advance(30);
        QVERIFY(world.model->selected().isEmpty());
    }

    void keysGoThroughTheRows()
    {
        ModelWorld world;
        Panel panel(world);
        addApplications(
            world, {u"Browser"_s, u"Files"_s}); // after the panel opened: the button looks afresh
        panel.click(u"Add app"_s);
        auto *search = panel.openPopover()->findChild<QLineEdit *>();
        const auto rows = panel.visible<AppRow>();
        QTest::keyClick(search, Qt::Key_Return); // nothing was searched for
        QCOMPARE(world.model->selected().size(), 2);
        QTest::keyClick(search, Qt::Key_Down);
        QVERIFY(rows[0]->hasFocus());
        QTest::keyClick(rows[0], Qt::Key_Down);
        QTest::keyClick(rows[1], Qt::Key_Down); // the last one
        QTest::keyClick(rows[1], Qt::Key_Return);
        Panel::settle();
        QVERIFY(world.model->selected().contains(u"Files"_s));
        QVERIFY(rows[0]->hasFocus());
        QTest::keyClick(rows[0], Qt::Key_Up);
        QVERIFY(search->hasFocus());
        QTest::keyClick(search, Qt::Key_Down);
        QTest::keyClick(rows[0], Qt::Key_Z, Qt::NoModifier);
        QVERIFY(search->hasFocus());
        QCOMPARE(search->text(), u"z"_s);
        QVERIFY(panel.offered().isEmpty());
        QTest::keyClick(search, Qt::Key_Return); // nothing to choose
        QCOMPARE(world.model->selected().size(), 3);
        QTest::keyClick(search, Qt::Key_Escape);
        QVERIFY(!panel.openPopover());
        panel.click(u"Add app"_s);
        QCOMPARE(panel.offered(), QStringList(u"Browser"_s));
        QTest::keyClick(search, Qt::Key_B);
        QCOMPARE(search->accessibleDescription(), u"Return adds Browser"_s);
        QTest::keyClick(search, Qt::Key_Return);
        QVERIFY(world.model->selected().contains(u"Browser"_s));
    }

    void theListBeginsAtItsTop()
    {
        ModelWorld world;
        QStringList names;
        for (int i = 600; i < 620; ++i)
            names.append(u"Tool "_s + QString::number(i));
        addApplications(world, names);
        const Panel panel(world);
        panel.click(u"Add app"_s);
        QScrollBar *bar = panel.openPopover()->findChild<QScrollArea *>()->verticalScrollBar();
        auto *search = panel.openPopover()->findChild<QLineEdit *>();
        const auto scroll = [&] {
            bar->setValue(bar->maximum());
            return bar->value() > 0;
        };
        QVERIFY(scroll());
        QTest::keyClick(search, Qt::Key_6);
        Panel::settle();
        QCOMPARE(bar->value(), 0);
        QVERIFY(scroll());
        QTest::keyClick(search, Qt::Key_Escape);
        panel.click(u"Add app"_s);
        QCOMPARE(bar->value(), 0);
    }

    void nothingElseStartsDuringAMoveAndTheFocusStays()
    {
        ModelWorld world;
        world.window(101).moveDelay = 0.3;
        Panel panel(world);
        addApplications(world, {u"Files"_s});
        panel.click(u"Add app"_s);
        const QList<QWidget *> controls{
            panel.named(u"Add Files"_s), panel.named(u"Add app"_s), panel.named(u"Remove Notes"_s),
            panel.named(u"Show desktops on Right"_s), panel.named(u"Move apps to Desktop 2"_s)};
        std::uint64_t target = 12;
        for (QWidget *control : controls) {
            control->setFocus(Qt::TabFocusReason);
            const QImage idle = control->grab().toImage();
            world.model->migrate(world.target(std::exchange(target, target == 12 ? 10 : 12)));
            Panel::settle();
            QVERIFY(world.model->busy());
            QVERIFY(control->hasFocus());
            QVERIFY(control->grab().toImage() != idle);
            world.desktop.takeJournal();
            QTest::keyClick(control, Qt::Key_Space);
            QTest::mouseClick(control, Qt::LeftButton);
            QVERIFY(world.desktop.takeJournal().isEmpty());
            QCOMPARE(world.model->selected().size(), 2);
            QVERIFY(world.desktop.clock().runUntil([&] { return !world.model->busy(); }, 60));
            Panel::settle();
            QVERIFY(control->hasFocus());
            QVERIFY(static_cast<PaintedButton *>(control)->isActionable());
            if (Popover *popover = panel.openPopover())
                popover->close();
        }
        QCOMPARE(panel.visible<DesktopTile>().size(), 3); // of the first display still
    }

    void eachStateHasItsLook()
    {
        const QList<TileValues> tiles{{.name = u"Desk"_s},
                                      {.name = u"Desk"_s, .flockWindows = 1},
                                      {.name = u"Desk"_s, .flockHere = true},
                                      {.name = u"Desk"_s, .disabled = true, .dimmed = true},
                                      {.name = u"A desk of many words"_s}};
        const QList<DisplayValues> displays{{.name = u"Left"_s},
                                            {.name = u"Left"_s, .builtIn = true},
                                            {.name = u"Left"_s, .current = true}};
        QList<QImage> looks;
        const auto isNew = [&](QWidget &widget) {
            widget.resize(150, 78);
            looks.append(widget.grab().toImage());
            return looks.count(looks.last()) == 1;
        };
        DesktopTile tile;
        for (const TileValues &values : tiles) {
            tile.setValues(values);
            QVERIFY(isNew(tile));
            QCOMPARE(tile.toolTip().contains(values.name), &values == &tiles.last()); // is cut
        }
        DisplayButton button;
        for (const DisplayValues &values : displays) {
            button.setValues(values);
            QVERIFY(isNew(button));
        }
        button.setAttribute(Qt::WA_UnderMouse);
        QVERIFY(isNew(button));
        button.setDown(true);
        QVERIFY(isNew(button));
        ModelWorld world;
        const RunningApp app = world.start().apps().first();
        ChosenAppCard card({.id = app.id, .name = app.name});
        QVERIFY(isNew(card)); // closed
        card.setApp(app);
        QVERIFY(isNew(card));
        card.setActionable(false);
        QVERIFY(isNew(card));
        AppRow row;
        row.setApp(app);
        QVERIFY(isNew(row));
        row.setMarked(true);
        QVERIFY(isNew(row));

        TovelStatusView strip(*world.model);
        strip.resize(400, 42);
        const std::function<void()> changes[] = {
            [&] { world.window(101).spaces = {11}; }, // together with the other one
            [&] { world.window(101).spaces = {10}; },
            [&] { world.facts().trusted = false; },
        };
        for (const auto &change : changes) {
            change();
            world.model->refresh();
            Panel::settle();
            looks.append(strip.grab(QRect(20, 0, 20, 42)).toImage()); // the indicator
            QCOMPARE(looks.count(looks.last()), 1);
        }
    }

    void aDesktopIsRenamedUnlessThatIsCancelled()
    {
        ModelWorld world;
        const Panel panel(world);
        for (const QString &answer : {u"Cancel"_s, u"Save"_s}) {
            QWidget *tile = panel.named(u"Move apps to Desktop 2"_s);
            const QPoint middle = tile->rect().center();
            QContextMenuEvent asks(QContextMenuEvent::Mouse, middle, tile->mapToGlobal(middle));
            QApplication::sendEvent(tile, &asks);
            auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
            QVERIFY(menu);
            menu->actions().first()->trigger();
            menu->close();
            auto *alert = panel.view.findChild<QDialog *>();
            alert->findChild<QLineEdit *>()->setText(u"Work"_s);
            for (auto *button : alert->findChildren<QPushButton *>()) {
                if (button->text() == answer)
                    button->click();
            }
            Panel::settle();
            QCOMPARE(panel.named(u"Move apps to Work"_s) != nullptr, answer == u"Save"_s);
        }
    }

    void theSkippedWindowsGoWithTheirReason()
    {
        ModelWorld world;
        world.window(101).fullScreen = true;
        const Panel panel(world);
        for (const bool open : {true, false, true}) {
            panel.click(u"Notes: Full screen"_s);
            QCOMPARE(panel.openPopover() != nullptr, open);
        }
        QStringList texts;
        for (const QLabel *label : panel.openPopover()->findChildren<QLabel *>())
            texts.append(label->text());
        QCOMPARE(texts,
                 (QStringList{u"Windows not moving"_s, u"Notes"_s,
                              u"Full screen — leave full screen to move"_s}));
        SkippedList list;
        for (const auto &[count, highest] : {std::pair(1, 78), {2, 156}, {20, 280}}) {
            list.setWindows(QList<TravelWindow>(count, world.model->windows().first()));
            QVERIFY(list.findChild<QScrollArea *>()->height() <= highest);
        }
        world.window(101).fullScreen = false;
        world.model->refresh();
        Panel::settle();
        QVERIFY(!panel.named(u"Notes: Full screen"_s));
        QVERIFY(!panel.openPopover());
    }
};

QTEST_MAIN(TestTovelView)
#include "tst_tovel_view.moc"
