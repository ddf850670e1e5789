#include "model/model_world.h"
#include "settings/shortcut_preferences.h"
#include "settings/updates.h"
#include "views/tovel_settings_view.h"
#include "views/tovel_title_view.h"

#include <QAbstractButton>
#include <QMenu>
#include <QTest>
#include <QTimer>

using namespace tovel;

namespace {

// An updater that can check when it is told so.
class FakeUpdater final : public SPUStandardUpdaterController, private SPUUpdater
{
public:
    SPUUpdater &updater() override { return *this; }
    void startUpdater() override { }
    void checkForUpdates() override { ++checks; }

    void setCanCheck(bool can)
    {
        m_canCheck = can;
        m_handler();
    }

    int checks = 0;

private:
    bool canCheckForUpdates() const override { return m_canCheck; }
    std::unique_ptr<KeyValueObservation> observeCanCheckForUpdates(
        std::function<void()> handler) override
    {
        m_handler = std::move(handler);
        m_handler();
        return std::make_unique<KeyValueObservation>();
    }

    bool m_canCheck = false;
    std::function<void()> m_handler;
};

class Settings
{
public:
    Settings()
        : updates(
            [this](bool, SPUUpdaterDelegate *, SPUStandardUserDriverDelegate *) {
                auto made = std::make_unique<FakeUpdater>();
                updater = made.get();
                return made;
            },
            [] {})
        , shortcuts(world.defaults())
        , view(world.start(), updates, shortcuts, [this] { ++shortcutChanges; })
    {
        updates.start();
        view.show();
        QCoreApplication::processEvents();
    }

    QAction *item(const QString &text)
    {
        for (QAction *action : view.menu().actions()) {
            if (action->text() == text)
                return action;
        }
        return nullptr;
    }

    ModelWorld world;
    FakeUpdater *updater = nullptr;
    TovelUpdates updates;
    ShortcutPreferences shortcuts;
    int shortcutChanges = 0;
    TovelSettingsView view;
};

} // namespace

class TestSettingsView : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void offersTheOptionsInOrder()
    {
        Settings settings;
        QStringList texts;
        for (const QAction *action : settings.view.menu().actions())
            texts.append(action->isSeparator() ? u"-"_s : action->text());
        QCOMPARE(texts,
                 (QStringList{u"Pin window"_s, u"Follow windows"_s, u"Refresh"_s,
                              u"Accessibility Settings…"_s, u"App icon"_s, u"Check for Updates…"_s,
                              u"-"_s, TovelUpdates::versionDescription(),
                              u"Keyboard Shortcut… (⌃⌥⌘T)"_s, u"Quit Tovel"_s}));
        const auto *button = settings.view.findChild<QAbstractButton *>();
        QCOMPARE(button->accessibleName(), u"Tovel settings"_s);
        QCOMPARE(button->toolTip(), u"Settings"_s);
        QCOMPARE(button->size(), QSize(28, 28));
        QCOMPARE(settings.view.size(), QSize(36, 32));
    }

    void switchesFollowTheModelBothWays()
    {
        Settings settings;
        TovelModel &model = *settings.world.model;
        QVERIFY(!settings.item(u"Pin window"_s)->isChecked());
        QVERIFY(settings.item(u"Follow windows"_s)->isChecked());
        settings.item(u"Pin window"_s)->trigger();
        settings.item(u"Follow windows"_s)->trigger();
        QVERIFY(model.pinned());
        QVERIFY(!model.follow());
        model.setPinned(false);
        QCoreApplication::processEvents();
        QVERIFY(!settings.item(u"Pin window"_s)->isChecked());
        QVERIFY(!settings.item(u"Follow windows"_s)->isChecked());
    }

    void choosesTheIconStyle()
    {
        Settings settings;
        TovelModel &model = *settings.world.model;
        const QList<QAction *> styles = settings.item(u"App icon"_s)->menu()->actions();
        QCOMPARE(styles.size(), 2);
        QCOMPARE(styles[0]->text(), u"Dark"_s);
        QVERIFY(styles[0]->isChecked() && !styles[1]->isChecked());
        QVERIFY(!styles[0]->icon().isNull());

        TovelTitleView title(model);
        QCOMPARE(title.size(), QSize(132, 32));
        const QImage before = title.grab().toImage();
        styles[1]->trigger();
        QCoreApplication::processEvents();
        QCOMPARE(model.iconStyle(), TovelIconStyle::light);
        QVERIFY(!styles[0]->isChecked() && styles[1]->isChecked());
        const QImage after = title.grab().toImage();
        QVERIFY(after != before);
        styles[1]->trigger();
        QCoreApplication::processEvents();
        QVERIFY(styles[1]->isChecked());
        QCOMPARE(title.grab().toImage(), after);
    }

    void commandsReachTheirOwners()
    {
        Settings settings;
        QAction *check = settings.item(u"Check for Updates…"_s);
        QVERIFY(!check->isEnabled());
        settings.updater->setCanCheck(true);
        QTRY_VERIFY(check->isEnabled());
        check->trigger();
        QCOMPARE(settings.updater->checks, 1);
        settings.updater->setCanCheck(false);
        QTRY_VERIFY(!check->isEnabled());

        settings.world.desktop.takeJournal();
        settings.item(u"Accessibility Settings…"_s)->trigger();
        QVERIFY(settings.world.desktop.takeJournal().contains(u"settings"_s));
        settings.world.window(101).spaces = {12};
        settings.item(u"Refresh"_s)->trigger();
        QVERIFY(settings.world.model->distribution().contains(12));
        QVERIFY(!settings.item(TovelUpdates::versionDescription())->isEnabled());
    }

    void namesTheCurrentShortcut()
    {
        Settings settings;
        settings.item(u"Keyboard Shortcut… (⌃⌥⌘T)"_s)->trigger();
        QCOMPARE(settings.shortcutChanges, 1);
        TovelShortcut shortcut = settings.shortcuts.shortcut();
        shortcut.key = u"X"_s;
        settings.shortcuts.save(shortcut);
        QCoreApplication::processEvents();
        QVERIFY(settings.item(u"Keyboard Shortcut… (⌃⌥⌘X)"_s));
    }

    void theKeysOfQuitWorkWhileTheMenuIsOpen()
    {
        Settings settings;
        QTest::mouseClick(settings.view.findChild<QAbstractButton *>(), Qt::LeftButton);
        QVERIFY(settings.view.menu().isVisible());
        QTimer::singleShot(0, qApp, [&] {
            QTest::keyClick(&settings.view.menu(), Qt::Key_Q, Qt::ControlModifier);
        });
        QTimer::singleShot(5000, qApp, [] { QCoreApplication::exit(1); });
        QCOMPARE(QCoreApplication::exec(), 0);
        QVERIFY(!settings.view.menu().isVisible());
    }
};

QTEST_MAIN(TestSettingsView)
#include "tst_settings_view.moc"
