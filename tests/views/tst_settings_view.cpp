#include "model/model_world.h"
#include "settings/fake_updater.h"
#include "settings/shortcut_preferences.h"
#include "views/tovel_settings_view.h"
#include "views/tovel_title_view.h"

#include <QMenu>
#include <QTest>

using namespace tovel;

namespace {

class Settings
{
public:
    Settings()
        : updates(
            [this](bool, SPUUpdaterDelegate *, SPUStandardUserDriverDelegate *) {
                return std::make_unique<FakeUpdater>(updater);
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
    FakeUpdaterState updater;
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
    void choosesTheIconStyle()
    {
        Settings settings;
        TovelModel &model = *settings.world.model;
        const QList<QAction *> styles = settings.item(u"App icon"_s)->menu()->actions();
        QCOMPARE(styles.size(), 2);

        TovelTitleView title(model);
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
        settings.updater.setCanCheck(true);
        QTRY_VERIFY(check->isEnabled());
        check->trigger();
        QCOMPARE(settings.updater.checks, 1);
        settings.updater.setCanCheck(false);
        QTRY_VERIFY(!check->isEnabled());

        settings.world.desktop.takeJournal();
        settings.item(u"Accessibility Settings…"_s)->trigger();
        QVERIFY(settings.world.desktop.takeJournal().contains(u"settings"_s));
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
};

QTEST_MAIN(TestSettingsView)
#include "tst_settings_view.moc"
