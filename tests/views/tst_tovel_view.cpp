#include "model/model_world.h"
#include "views/add_popover_content.h"
#include "views/app_row.h"
#include "views/components/chosen_app_card.h"
#include "views/components/popover.h"
#include "views/desktop_tile.h"
#include "views/display_button.h"
#include "views/model_watch.h"
#include "views/rename_alert.h"
#include "views/theme.h"
#include "views/tovel_status_view.h"
#include "views/tovel_view.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QTest>

using namespace tovel;

namespace {

constexpr QSize size(940, 668);
constexpr int aBit = 3; // of difference between colours, from blending

bool near(const QColor &one, const QColor &other)
{
    return std::abs(one.red() - other.red()) <= aBit
        && std::abs(one.green() - other.green()) <= aBit
        && std::abs(one.blue() - other.blue()) <= aBit;
}

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
            if (widget->accessibleName() == name)
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
    QColor pixel(QPoint at) { return view.grab().toImage().pixelColor(at); }

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

    QString status() const
    {
        const auto *strip = view.findChild<TovelStatusView *>();
        QStringList texts;
        for (const QLabel *label : strip->findChildren<QLabel *>()) {
            if (label->isVisible())
                texts.append(label->text());
        }
        return texts.join(u" | "_s);
    }

    TovelView view;
};

void addBrowser(ModelWorld &world)
{
    world.desktop.addApplication(
        {.pid = 502, .bundleIdentifier = u"org.web"_s, .name = u"Browser"_s});
    world.desktop.addApplication(
        {.pid = 503, .bundleIdentifier = u"org.files"_s, .name = u"Files"_s});
}

QContextMenuEvent menuRequest(const QWidget *widget)
{
    const QPoint middle = widget->rect().center();
    return {QContextMenuEvent::Mouse, middle, widget->mapToGlobal(middle)};
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

    void laysOutTheSections()
    {
        ModelWorld world;
        const Panel panel(world);
        QCOMPARE(panel.view.minimumSize(), QSize(900, 440));

        const QRect add = panel.place(panel.named(u"Add app"_s));
        QCOMPARE(add.size(), QSize(28, 28));
        QCOMPARE(add.right() + 1, size.width() - 24);

        const auto cards = panel.visible<ChosenAppCard>();
        QCOMPARE(cards.size(), 2);
        const int cardWidth = (size.width() - 2 * 26 - 3 * 12) / 4;
        QCOMPARE(panel.place(cards[0]).left(), 26);
        QCOMPARE(panel.place(cards[1]).left(), 26 + cardWidth + 12);
        for (const ChosenAppCard *card : cards) {
            QCOMPARE(card->width(), cardWidth);
            QVERIFY(card->height() >= 96);
        }

        const auto displays = panel.visible<DisplayButton>();
        QCOMPARE(displays.size(), 2);
        QCOMPARE(panel.place(displays[0]).left(), 24);
        QCOMPARE(displays[0]->width(), 144);
        QCOMPARE(displays[0]->height(), 36 + 2 * 10);
        QCOMPARE(panel.place(displays[1]).top() - panel.place(displays[0]).bottom() - 1, 12);

        const auto tiles = panel.visible<DesktopTile>();
        QCOMPARE(tiles.size(), 3);
        QCOMPARE(panel.place(tiles[0]).left(), 24 + 144 + 20 + 1 + 20);
        QCOMPARE(tiles[0]->width(), 150);
        QCOMPARE(panel.place(tiles[1]).left() - panel.place(tiles[0]).right() - 1, 10);

        const auto *strip = panel.view.findChild<TovelStatusView *>();
        QCOMPARE(panel.place(strip), QRect(0, size.height() - 42, size.width(), 42));
    }

    void sixDesktopsStandInTwoRows()
    {
        ModelWorld world;
        for (std::uint64_t id = 30; id < 33; ++id)
            world.spacesOfA().append(SimSpace{.id = id});
        const Panel panel(world);
        const auto tiles = panel.visible<DesktopTile>();
        QCOMPARE(tiles.size(), 6);
        QCOMPARE(panel.place(tiles[5]).left(), panel.place(tiles[0]).left());
        QCOMPARE(panel.place(tiles[5]).top(), panel.place(tiles[0]).bottom() + 1 + 10);
        QVERIFY(tiles[4]->width() >= 100);
        QVERIFY(panel.place(tiles[4]).right() < size.width() - 24);
    }

    void paintsInTheColorsOfTheAppearance_data()
    {
        QTest::addColumn<QColor>("window");
        QTest::newRow("light") << QColor(246, 245, 248);
        QTest::newRow("dark") << QColor(30, 27, 42);
    }

    void paintsInTheColorsOfTheAppearance()
    {
        QFETCH(QColor, window);
        ModelWorld world;
        world.window(101).spaces = {11};
        Panel panel(world);
        // While it is shown, as when the session's appearance changes.
        QApplication::setPalette(QPalette(window));
        Panel::settle();
        const QPalette palette = panel.view.palette();
        const QColor accent = TovelTheme::accent(palette);
        QCOMPARE(panel.pixel({450, 1}), window);
        QVERIFY(panel.pixel({450, 0}) != window); // the separator
        QVERIFY(near(panel.pixel({450, size.height() - 3}), TovelTheme::chrome(palette)));

        // Green when the flock is together; the tile of its desktop is filled and bordered.
        QVERIFY(near(panel.pixel({24 + 7, size.height() - 21}), QColor(102, 163, 120)));
        const auto tiles = panel.visible<DesktopTile>();
        const QRect here = panel.place(tiles[1]);
        const QColor border = panel.pixel({here.center().x(), here.top()});
        const QColor plain = panel.pixel({panel.place(tiles[0]).center().x(), here.top()});
        const auto distance
            = [&](const QColor &color) { return std::abs(color.lightness() - accent.lightness()); };
        QVERIFY(distance(border) < distance(plain));
        QCOMPARE(panel.pixel(panel.place(tiles[0]).center()), controlBackground(palette));
        QVERIFY(panel.pixel(here.center()) != controlBackground(palette));
        QApplication::setPalette(QPalette());
    }

    void addsApplicationsThroughThePopover()
    {
        ModelWorld world;
        Panel panel(world);
        addBrowser(world); // after the panel opened: the button looks afresh
        panel.click(u"Add app"_s);
        QVERIFY(panel.view.state().adding);
        QCOMPARE(panel.offered(), (QStringList{u"Browser"_s, u"Files"_s}));

        auto *search = panel.openPopover()->findChild<QLineEdit *>();
        QTest::keyClicks(search, u"BROW"_s);
        QCOMPARE(panel.view.state().search, u"BROW"_s);
        QCOMPARE(panel.offered(), QStringList(u"Browser"_s));
        world.takeChanges();
        QTest::keyClick(search, Qt::Key_Return);
        Panel::settle();
        QVERIFY(world.model->selected().contains(u"org.web"_s));
        QVERIFY(panel.offered().isEmpty());
        QVERIFY(panel.view.state().adding);
        QCOMPARE(panel.visible<ChosenAppCard>().size(), 3);

        QTest::keyClicks(search, u"x"_s);
        QTest::keyClick(search, Qt::Key_Return); // nothing to choose
        QCOMPARE(world.model->selected().size(), 3);
        QTest::keyClick(search, Qt::Key_Escape);
        QVERIFY(!panel.view.state().adding);
        QVERIFY(!panel.openPopover());

        panel.click(u"Add app"_s);
        QCOMPARE(panel.view.state().search, QString());
        QCOMPARE(panel.offered(), QStringList(u"Files"_s));
    }

    void keysGoThroughTheRows()
    {
        ModelWorld world;
        addBrowser(world);
        Panel panel(world);
        panel.click(u"Add app"_s);
        auto *search = panel.openPopover()->findChild<QLineEdit *>();
        const auto rows = panel.visible<AppRow>();
        QTest::keyClick(search, Qt::Key_Down);
        QVERIFY(rows[0]->hasFocus());
        QTest::keyClick(rows[0], Qt::Key_Down);
        QTest::keyClick(rows[1], Qt::Key_Down); // the last one
        QVERIFY(rows[1]->hasFocus());
        QTest::keyClick(rows[1], Qt::Key_Return);
        Panel::settle();
        QVERIFY(world.model->selected().contains(u"org.files"_s));
        QVERIFY(rows[0]->hasFocus());
        QTest::keyClick(rows[0], Qt::Key_Up);
        QVERIFY(search->hasFocus());
        QTest::keyClick(search, Qt::Key_Down);
        QTest::keyClick(rows[0], Qt::Key_Z, Qt::NoModifier);
        QVERIFY(search->hasFocus());
        QCOMPARE(search->text(), u"z"_s);
        QVERIFY(panel.offered().isEmpty());
    }

    void removesAnApplication()
    {
        ModelWorld world;
        const Panel panel(world);
        panel.click(u"Remove Mail"_s);
        QCOMPARE(world.model->selected(), QSet<QString>{u"org.notes"_s});
        QCOMPARE(panel.visible<ChosenAppCard>().size(), 1);
    }

    void showsTheDesktopsOfAnotherDisplay()
    {
        ModelWorld world;
        Panel panel(world);
        world.takeChanges();
        panel.click(u"Show desktops on Right"_s);
        QCOMPARE(panel.view.state().selectedDisplay, std::optional(u"B"_s));
        QCOMPARE(panel.visible<DesktopTile>().size(), 2);
        QVERIFY(world.takeChanges().isEmpty());

        // The choice waits for its display.
        world.desktop.alterReply("SLSCopyManagedDisplaySpaces", [](auto displays) {
            displays->removeLast();
            return displays;
        });
        world.model->refresh();
        Panel::settle();
        QCOMPARE(panel.visible<DesktopTile>().size(), 3);
        world.desktop.restoreReply("SLSCopyManagedDisplaySpaces");
        world.model->refresh();
        Panel::settle();
        QCOMPARE(panel.visible<DesktopTile>().size(), 2);
    }

    void movesTheFlockAndStaysLive()
    {
        ModelWorld world;
        world.window(101).moveDelay = 0.3;
        const Panel panel(world);
        auto *tile = panel.visible<DesktopTile>()[2];
        tile->setFocus();
        QTest::keyClick(tile, Qt::Key_Return);
        Panel::settle();
        QVERIFY(world.model->busy());
        QVERIFY(panel.status().startsWith(world.model->message()));
        QVERIFY(!panel.named(u"Add app"_s)->isEnabled());
        QVERIFY(!panel.visible<ChosenAppCard>()[0]->isEnabled());
        QVERIFY(!panel.visible<DisplayButton>()[0]->isEnabled());
        QVERIFY(tile->hasFocus());
        world.desktop.takeJournal();
        QTest::keyClick(tile, Qt::Key_Space);
        panel.click(u"Move apps to Desktop 1"_s);
        QVERIFY(world.desktop.takeJournal().isEmpty());

        QVERIFY(world.desktop.clock().runUntil([&] { return !world.model->busy(); }, 60));
        Panel::settle();
        QCOMPARE(panel.status(), u"Your flock is on Desktop 3. | All together now."_s);
        QCOMPARE(tile->accessibleValue(), u"Apps are already here. 2 selected windows"_s);
        QVERIFY(!tile->isActionable());
        QVERIFY(panel.named(u"Add app"_s)->isEnabled());
        QTest::keyClick(tile, Qt::Key_Return); // the flock is here
        QVERIFY(!world.model->busy());
    }

    void renamesADesktop_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<QString>("name");
        QTest::newRow("saved") << u"Save"_s << u"Work"_s;
        QTest::newRow("cancelled") << u"Cancel"_s << u"Desktop 2"_s;
        QTest::newRow("dismissed") << QString() << u"Desktop 2"_s;
    }

    void renamesADesktop()
    {
        QFETCH(QString, button);
        ModelWorld world;
        world.window(101).spaces = {11}; // the flock's own desktop can be renamed, too
        const Panel panel(world);
        QContextMenuEvent event = menuRequest(panel.visible<DesktopTile>()[1]);
        QApplication::sendEvent(panel.visible<DesktopTile>()[1], &event);
        auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
        QVERIFY(menu);
        QCOMPARE(menu->actions().size(), 1);
        QCOMPARE(menu->actions().first()->text(), u"Rename…"_s);
        menu->actions().first()->trigger();
        menu->close();
        QVERIFY(panel.view.state().renaming);
        QCOMPARE(panel.view.state().newName, u"Desktop 2"_s);

        auto *alert = panel.view.findChild<RenameAlert *>();
        auto *field = alert->findChild<QLineEdit *>();
        QCOMPARE(field->placeholderText(), u"Name"_s);
        field->setText(u" Work"_s);
        for (QAbstractButton *candidate : alert->findChildren<QAbstractButton *>()) {
            if (candidate->text() == button)
                candidate->click();
        }
        if (button.isEmpty())
            alert->close();
        Panel::settle();
        QVERIFY(!panel.view.state().renaming);
        QTEST(world.model->name(world.target(11)), "name");
    }

    void tellsOfSkippedWindows()
    {
        ModelWorld world;
        world.window(101).fullScreen = true;
        world.window(101).spaces = {50};
        const Panel panel(world);
        QWidget *button = nullptr;
        for (QAbstractButton *candidate : panel.visible<QAbstractButton>()) {
            if (candidate->text() == u"Notes: Full screen"_s)
                button = candidate;
        }
        QVERIFY(button);
        QCOMPARE(button->toolTip(), u"Show which windows won’t move and why"_s);
        QTest::mouseClick(button, Qt::LeftButton);
        Popover *popover = panel.openPopover();
        QVERIFY(popover);
        QStringList texts;
        for (const QLabel *label : popover->findChildren<QLabel *>())
            texts.append(label->text());
        QCOMPARE(texts,
                 (QStringList{u"Windows not moving"_s, u"Notes"_s,
                              u"Full screen — leave full screen to move"_s}));
        world.window(101).fullScreen = false;
        world.window(101).spaces = {10};
        world.model->refresh();
        Panel::settle();
        QVERIFY(!button->isVisible());
        QVERIFY(!panel.openPopover());
    }

    void theStripGrowsWithItsText()
    {
        ModelWorld world;
        Panel panel(world);
        const auto *strip = panel.view.findChild<TovelStatusView *>();
        world.model->setIssues({u"One."_s, u"Two."_s, u"Three."_s, u"Four."_s});
        Panel::settle();
        const int four = strip->height();
        QVERIFY(four > 42);
        QStringList many;
        for (int i = 0; i < 200; ++i)
            many.append(QString::number(i));
        world.model->setIssues(many);
        Panel::settle();
        QVERIFY(strip->height() > four && strip->height() < 200);
        world.model->setIssues({});
        Panel::settle();
        QCOMPARE(strip->height(), 42);
    }

    void saysThatThereAreNoDesktops()
    {
        ModelWorld world;
        world.desktop.replaceReply("SLSCopyManagedDisplaySpaces", QVariantList());
        const Panel panel(world);
        QVERIFY(panel.visible<DesktopTile>().isEmpty());
        QVERIFY(panel.visible<DisplayButton>().isEmpty());
        int told = 0;
        for (const QLabel *label : panel.visible<QLabel>())
            told += label->text() == u"No desktops found"_s;
        QCOMPARE(told, 1);
    }
};

QTEST_MAIN(TestTovelView)
#include "tst_tovel_view.moc"
