#include "app/panel/tovel_window.h"
#include "app/service/activation_token.h"
#include "app/shell/about_panel.h"
#include "app/shell/app_delegate.h"
#include "app/shell/note.h"
#include "app/shell/shortcut_editor.h"
#include "app/shell/shortcut_record_button.h"
#include "app/shell/status_menu.h"
#include "app/tovel/command_line.h"
#include "app/tray/bus_menu_item.h"
#include "model/model_world.h"
#include "model/texts.h"
#include "platform/application.h"
#include "settings/fake_updater.h"
#include "support/test.h"
#include "views/status_values.h"
#include "views/tovel_settings_view.h"

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QTimer>

#include <linux/input-event-codes.h>

namespace {

const QString accessRequested = QStringLiteral("requestedPersistentSigningAccess");

const TovelShortcut shiftSpace{
    .keyCode = 49, .modifiers = controlKey | shiftKey, .key = u"Space"_s};

QPushButton *button(const QWidget &dialog, const QString &text)
{
    for (QPushButton *candidate : dialog.findChildren<QPushButton *>()) {
        if (candidate->text() == text)
            return candidate;
    }
    return nullptr;
}

QString informativeText(const QWidget &dialog)
{
    return dialog.findChildren<QLabel *>().at(1)->text();
}

QStringList lines(const QMenu &menu)
{
    QStringList result;
    for (const QAction *action : menu.actions()) {
        result.append((action->isSeparator() ? u"-"_s : action->text())
                      + (action->isChecked() ? u" on"_s : QString())
                      + (action->isEnabled() ? QString() : u" disabled"_s));
    }
    return result;
}

template <typename Dialog>
QList<Dialog *> visible()
{
    QList<Dialog *> found;
    for (QWidget *window : QApplication::topLevelWidgets()) {
        auto *dialog = qobject_cast<Dialog *>(window);
        if (dialog && dialog->isVisible())
            found.append(dialog);
    }
    return found;
}

// Whether the action ends the program, which it can in the event loop alone.
bool quits(const std::function<void()> &action)
{
    QObject scope;
    QTimer::singleShot(0, &scope, [&] {
        action();
        QTimer::singleShot(0, &scope, [] { QCoreApplication::exit(1); });
    });
    return QCoreApplication::exec() == 0;
}

// As Qt's own, while an assistive program listens: takes every key of a window, and passes a copy
// on that has no time.
class AssistiveFilter final : public QObject
{
public:
    AssistiveFilter() { qApp->installEventFilter(this); }

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        const bool isKey = event->type() == QEvent::KeyPress || event->type() == QEvent::KeyRelease;
        if (!isKey || !watched->isWindowType() || m_isPassingOn)
            return false;
        const auto &key = *static_cast<QKeyEvent *>(event);
        QKeyEvent copy(key.type(), key.key(), key.modifiers(), key.nativeScanCode(), 0, 0);
        m_isPassingOn = true;
        QCoreApplication::sendEvent(watched, &copy);
        m_isPassingOn = false;
        return true;
    }

private:
    bool m_isPassingOn = false;
};

// The running program, without an updater and a tray.
class Program
{
public:
    explicit Program(const Change &prepare = [](ModelWorld &) {})
        : delegate((prepare(world), world.desktop.platform()),
                   [this](bool, SPUUpdaterDelegate *, SPUStandardUserDriverDelegate *) {
                       return std::make_unique<FakeUpdater>(updater);
                   })
    { }

    ModelWorld world;
    FakeUpdaterState updater;
    AppDelegate delegate;

    // Until the panel has the keyboard.
    bool launch()
    {
        delegate.applicationDidFinishLaunching();
        return QTest::qWaitForWindowActive(&delegate.panel());
    }
    QMenu *openMenu()
    {
        QTest::keyClick(&delegate.panel(), Qt::Key_F10);
        return qobject_cast<QMenu *>(QApplication::activePopupWidget());
    }
    // As it was kept, by this program or one before it.
    bool told() { return world.stored().boolean(u"toldWhereThePanelWent"_s).value_or(false); }
};

} // namespace

class TestShell : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void tokensAreTakenAsTheyAreOrNotAtAll()
    {
        const auto taken = [](const QVariantMap &data) {
            qputenv("XDG_ACTIVATION_TOKEN", "older");
            takeUpPlatformData(data);
            return qgetenv("XDG_ACTIVATION_TOKEN");
        };
        const QString token = u"activation-token"_s;
        const QString startup = u"desktop-startup-id"_s;
        QCOMPARE(taken({{token, u"0af3"_s}, {startup, u"x"_s}}), "0af3");
        QCOMPARE(taken({{startup, u"shell/Tovel/5-0-host_TIME12"_s}}),
                 "shell/Tovel/5-0-host_TIME12");
        QCOMPARE(taken({{token, QString(512, u'a')}}).size(), 512);
        for (const QVariant &odd :
             {QVariant(), QVariant(7), QVariant(QString(513, u'a')), QVariant(u""_s),
              QVariant(u"a b"_s), QVariant(u"a\n"_s), QVariant(u"é"_s)})
            QCOMPARE(taken({{token, odd}}), QByteArray());
        qputenv("XDG_ACTIVATION_TOKEN", "0af3");
        QCOMPARE(ownPlatformData(), (QVariantMap{{token, u"0af3"_s}}));
        qunsetenv("XDG_ACTIVATION_TOKEN");
    }

    void theMenuShowsTheMomentItIsMadeIn()
    {
        ModelWorld world;
        world.window(101).spaces = {11};
        TovelModel &model = world.start();
        TovelUpdates updates({}, [] {});
        ShortcutPreferences shortcuts(world.defaults());
        std::uint64_t moved = 0;
        const auto menu = makeStatusMenu(model, updates, shortcuts,
                                         {.move = [&](std::uint64_t id) { moved = id; }});
        QCOMPARE(
            lines(*menu).mid(0, 11),
            (QStringList{u"Fly to this pond disabled"_s, u"Left disabled"_s, u"    Desktop 1"_s,
                         u"    Desktop 2 on disabled"_s, u"    Desktop 3"_s, u"Right disabled"_s,
                         u"    Desktop 4"_s, u"    Desktop 5"_s, u"-"_s, u"Pin window"_s,
                         u"Follow windows on"_s}));
        const QStringList rest = lines(*menu).mid(9);
        QCOMPARE(rest.mid(2),
                 (QStringList{u"Refresh"_s, u"Accessibility Settings…"_s, u"App icon"_s,
                              u"Check for Updates… disabled"_s, u"-"_s,
                              TovelUpdates::versionDescription() + u" disabled"_s,
                              u"Keyboard Shortcut… (⌃⌥⌘T)"_s, u"Quit Tovel"_s}));
        const TovelSettingsView gear(model, updates, shortcuts, [] {}); // offers the same
        for (QWidget *window : QApplication::topLevelWidgets()) {
            if (window->objectName() == u"settings"_s)
                QCOMPARE(lines(*static_cast<QMenu *>(window)), rest);
        }
        menu->actions().at(4)->trigger();
        QCOMPARE(moved, 12U);
        const BusMenuItem onBus = busMenu(*menu, [](QAction *) { return 1; });
        const QStringList quit{u"Control"_s, u"Q"_s};
        QCOMPARE(onBus.children.back().properties[u"shortcut"_s],
                 QVariant::fromValue(QList<QStringList>{quit}));

        const auto canMove = [&] {
            const QStringList offered = lines(*makeStatusMenu(model, updates, shortcuts, {}));
            return offered.contains(u"    Desktop 3"_s);
        };
        QVERIFY(canMove());
        world.window(101).moveDelay = 0.3;
        model.migrate(world.target(12));
        QVERIFY(model.busy() && !canMove());
        QVERIFY(world.desktop.clock().runUntil([&] { return !model.busy(); }, 60));
        model.migrate(world.target(10));
        QVERIFY(world.desktop.clock().runUntil([&] { return !model.busy(); }, 60));
        QVERIFY(canMove());
        world.facts().trusted = false;
        model.refresh();
        QVERIFY(!canMove());
        world.desktop.replaceReply("SLSCopyManagedDisplaySpaces", QVariantList());
        model.refresh();
        QCOMPARE(
            lines(*makeStatusMenu(model, updates, shortcuts, {})).mid(0, 3),
            (QStringList{u"Fly to this pond disabled"_s, u"No desktops found disabled"_s, u"-"_s}));
    }

    void theProgramHasAMenuOfItsOwn()
    {
        Program program;
        AppDelegate &delegate = program.delegate;
        QVERIFY(program.launch());
        QMenu *menu = program.openMenu();
        QVERIFY(menu);
        QCOMPARE(lines(*menu),
                 (QStringList{u"About Tovel"_s, u"Check for Updates… disabled"_s, u"-"_s,
                              u"Hide Tovel"_s, u"Quit Tovel"_s}));
        program.updater.setCanCheck(true);
        QTRY_VERIFY(menu->actions().at(1)->isEnabled());
        menu->actions().at(1)->trigger();
        QCOMPARE(program.updater.checks, 1);

        menu->actions().at(0)->trigger();
        menu->actions().at(0)->trigger();
        QCOMPARE(visible<AboutPanel>().size(), 1);
        AboutPanel &about = *visible<AboutPanel>().first();

        // What has to be answered first cannot be hidden; all else goes and comes together.
        QDialog question(&delegate.panel());
        question.open();
        delegate.hide();
        QVERIFY(delegate.isPanelVisible() && about.isVisible() && question.isVisible());
        question.reject();
        QTest::keyClick(program.openMenu(), Qt::Key_H, Qt::ControlModifier);
        QVERIFY(!delegate.isPanelVisible() && !about.isVisible() && !menu->isVisible());
        const Application &application = program.world.desktop.platform().application();
        QVERIFY(!application.hasVisibleWindow());
        program.world.desktop.clock().advance(1);
        delegate.show();
        QVERIFY(delegate.isPanelVisible() && about.isVisible());
        QVERIFY(application.hasVisibleWindow());
        QTest::keyClick(&about, Qt::Key_Escape);
        QVERIFY(!about.isVisible());
    }

    void tellsOnceHowAHiddenPanelComesBack()
    {
        const struct
        {
            bool hasKey;
            bool reachableByStarting;
            QString text;
        } rows[] = {{true, false, u"Press ⌃⌥⌘T to show the panel."_s},
                    {false, true, u"Start Tovel again to show the panel."_s},
                    {true, true, u"Press ⌃⌥⌘T or start Tovel again to show the panel."_s},
                    {false, false, {}}};
        for (const auto &[hasKey, reachableByStarting, text] : rows) {
            Program program;
            AppDelegate &delegate = program.delegate;
            if (!hasKey)
                program.world.desktop.takeHotKey(17, 6400);
            delegate.setReachableByStarting(reachableByStarting);
            QVERIFY(program.launch());
            QCOMPARE(quits([&] { delegate.panel().close(); }), text.isEmpty());
            QCOMPARE(program.told(), !text.isEmpty());
            QCOMPARE(visible<Note>().size(), text.isEmpty() ? 0 : 1);
            if (text.isEmpty())
                continue;
            Note &note = *visible<Note>().first();
            QCOMPARE(informativeText(note), text);
            QVERIFY(quits([&] { button(note, u"Quit Tovel"_s)->click(); }));
            program.world.desktop.clock().advance(1);
            delegate.show();
            QVERIFY(visible<Note>().isEmpty() && delegate.isPanelVisible());
        }
    }

    void tellsNothingAgainNorOnTheWayOut()
    {
        Program program;
        QVERIFY(program.launch());
        QVERIFY(
            quits([&] { QTest::keyClick(program.openMenu(), Qt::Key_Q, Qt::ControlModifier); }));
        QVERIFY(!program.told() && visible<Note>().isEmpty());

        Program second;
        second.world.defaults().put(u"toldWhereThePanelWent"_s, true);
        second.delegate.applicationDidFinishLaunching();
        QVERIFY(!quits([&] { second.delegate.panel().close(); }));
        QVERIFY(!second.delegate.isPanelVisible() && visible<Note>().isEmpty());
    }

    void startsHiddenWhereThePanelCanBeReached()
    {
        Program hidden;
        hidden.delegate.applicationDidFinishLaunching(AppDelegate::Launch::Hidden);
        QVERIFY(!hidden.delegate.isPanelVisible() && !hidden.told());
        hidden.delegate.toggle();
        QVERIFY(hidden.delegate.isPanelVisible());

        Program unreachable;
        unreachable.world.desktop.takeHotKey(17, 6400);
        unreachable.delegate.applicationDidFinishLaunching(AppDelegate::Launch::Hidden);
        QVERIFY(unreachable.delegate.isPanelVisible());
    }

    void asksForAccessOnceForAll()
    {
        const auto prompts = [](bool trusted, bool askedBefore, bool isReadable = true) {
            Program program;
            program.world.defaults().failReads(isReadable ? QString() : u"locked"_s);
            program.world.facts().trusted = trusted;
            if (askedBefore)
                program.world.defaults().put(accessRequested, true);
            program.delegate.applicationDidFinishLaunching();
            const bool asked = program.world.stored().boolean(accessRequested).value_or(false);
            return std::pair(program.world.desktop.takeJournal().count(u"prompt"_s), asked);
        };
        QCOMPARE(prompts(false, false), std::pair(qsizetype(1), true));
        QCOMPARE(prompts(false, true), std::pair(qsizetype(0), true));
        QCOMPARE(prompts(true, false), std::pair(qsizetype(0), false));
        QCOMPARE(prompts(false, false, false), std::pair(qsizetype(0), false));
    }

    void tellsOfAShortcutThatIsNotTheStoredOne()
    {
        Program program([](ModelWorld &world) {
            world.defaults().put(u"globalShortcut"_s, encodeShortcut(shiftSpace));
            world.defaults().failReads(u"locked"_s);
        });
        SimulatedDesktop &desktop = program.world.desktop;
        const auto key = [&] { return desktop.registeredHotKeys().value(0).keyCode; };
        program.delegate.applicationDidFinishLaunching();
        TovelModel &model = program.delegate.model();
        QCOMPARE(key(), TovelShortcut::standard().keyCode);
        QCOMPARE(statusWarning(model), ModelTexts::choicesUnreadable(u"locked"_s));
        program.world.defaults().failReads({});
        model.refresh();
        QCOMPARE(key(), shiftSpace.keyCode);
        QVERIFY(!statusWarning(model));

        const auto reset = [&] {
            QTimer::singleShot(0, qApp, [&] { program.delegate.editShortcut(); });
            QTimer::singleShot(0, qApp, [] {
                const QList<ShortcutEditor *> editors = visible<ShortcutEditor>();
                QCOMPARE(editors.size(), 1);
                button(*editors.first(), u"Reset to Default"_s)->click();
            });
            program.delegate.editShortcut();
        };
        program.world.defaults().failWrites(u"the disk is full"_s);
        reset();
        QVERIFY(statusWarning(model)->endsWith(u"the disk is full"_s));
        QCOMPARE(key(), TovelShortcut::standard().keyCode);
        model.refresh();
        QCOMPARE(key(), TovelShortcut::standard().keyCode);
        program.world.defaults().failWrites({});
        reset();
        QVERIFY(!statusWarning(model));
        QCOMPARE(program.world.stored().object(u"globalShortcut"_s),
                 encodeShortcut(TovelShortcut::standard()));
    }

    void aMenuIsCutAtAnyDepth()
    {
        const BusMenuItem menu{0, {}, {{1, {}, {{2, {}, {}}}}}};
        const auto depth = [&](int asked) {
            const BusMenuItem left = cut(menu, asked);
            return left.children.empty() ? 0 : left.children[0].children.empty() ? 1 : 2;
        };
        for (const auto &[asked, left] :
             {std::pair(0, 0), {1, 1}, {2, 2}, {-1, 2}, {std::numeric_limits<int>::min(), 2}})
            QCOMPARE(depth(asked), left);
    }

    void commandLines()
    {
        const auto asked
            = [](const QStringList &options) { return task(QStringList{u"tovel"_s} + options); };
        QVERIFY(asked({}) == Task::ShowPanel);
        QVERIFY(asked({u"--unknown"_s, u"file"_s, u"--Hidden"_s}) == Task::ShowPanel);
        QVERIFY(asked({u"--unknown"_s, u"--hidden"_s}) == Task::StartHidden);
        QVERIFY(asked({u"--hidden"_s, u"--version"_s}) == Task::PrintVersion);
        QVERIFY(asked({u"--version"_s, u"-h"_s}) == Task::PrintHelp);
        QVERIFY(asked({u"--help"_s}) == Task::PrintHelp);
    }

    void saysThatTheKeyCannotBeHad()
    {
        Program taken;
        taken.world.desktop.takeHotKey(17, 6400);
        taken.delegate.applicationDidFinishLaunching();
        QCOMPARE(taken.delegate.model().message(),
                 u"⌃⌥⌘T is unavailable. Choose another shortcut in Settings."_s);
        QCOMPARE(taken.delegate.model().issues(), QStringList{taken.delegate.model().message()});

        Program refused;
        refused.world.facts().installHandlerStatus = -1;
        refused.delegate.applicationDidFinishLaunching();
        QCOMPARE(refused.delegate.model().message(),
                 u"Could not register the shortcut. Use the menu bar icon."_s);
        QVERIFY(refused.world.desktop.registeredHotKeys().isEmpty());
    }

    void asksForTheKeyAgainWithAccess()
    {
        Program program;
        SimWorld &facts = program.world.facts();
        TovelModel *model = nullptr;
        const auto change = [&](bool trusted, std::int32_t status) {
            facts.trusted = trusted;
            facts.registerStatus = status;
            if (model)
                model->refresh();
        };
        change(false, eventHotKeyInvalidErr);
        program.delegate.setReachableByStarting(true);
        QVERIFY(program.launch());
        model = &program.delegate.model();
        QVERIFY(model->issues().isEmpty());
        QVERIFY(!quits([&] { program.delegate.panel().close(); }));
        QCOMPARE(informativeText(*visible<Note>().first()),
                 u"Start Tovel again to show the panel."_s);
        const auto hasKey = [&] { return program.world.desktop.registeredHotKeys().size() == 1; };
        change(true, noErr);
        QVERIFY(hasKey() && model->issues().isEmpty());
        change(false, eventHotKeyInvalidErr);
        QVERIFY(!hasKey() && model->issues().isEmpty());
        change(true, eventHotKeyExistsErr); // another program was faster
        QVERIFY(!hasKey() && model->issues().value(0).startsWith(u"⌃⌥⌘T is unavailable."_s));
        change(false, noErr);
        change(true, noErr);
        QVERIFY(hasKey() && model->issues().isEmpty());
    }

    void aHeldKeyActsOnce()
    {
        Program program;
        QVERIFY(program.launch());
        const auto send = [](QWidget *to, Qt::Key key, bool repeated, quint64 time = 0,
                             QEvent::Type type = QEvent::KeyPress) {
            QKeyEvent event(type, key, Qt::NoModifier, 36, 0, 0, u" "_s, repeated);
            event.setTimestamp(time);
            QApplication::sendEvent(to->windowHandle(), &event);
        };
        for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Space, Qt::Key_Escape}) {
            QMenu *menu = program.openMenu();
            send(menu, key, true);
            QVERIFY(menu->isVisible());
            send(menu, key, false, 5000, QEvent::KeyRelease); // as an X server repeats
            send(menu, key, false, 5000);
            QVERIFY(menu->isVisible());
            send(menu, Qt::Key_Escape, false, 5001);
            QVERIFY(!menu->isVisible());
        }
        QLineEdit field;
        field.show();
        QVERIFY(QTest::qWaitForWindowActive(&field));
        send(&field, Qt::Key_Space, true);
        QCOMPARE(field.text(), u" "_s);
        const AssistiveFilter filter; // comes later, and has the keys first
        QMenu *menu = program.openMenu();
        send(menu, Qt::Key_Shift, false, 6000);
        QCoreApplication::processEvents();
        send(menu, Qt::Key_Return, false, 6001, QEvent::KeyRelease);
        send(menu, Qt::Key_Return, false, 6001);
        QVERIFY(menu->isVisible());
    }

    void namesTheKeysOfAKeyboard()
    {
        const struct
        {
            Qt::Key key;
            quint32 position;
            QString label; // none: it is said to be of no use; "-": as if it had not been pressed
        } rows[] = {{Qt::Key_Insert, KEY_INSERT, u"⌃Insert"_s},
                    {Qt::Key_Menu, KEY_COMPOSE, u"⌃Menu"_s},
                    {Qt::Key_Tools, KEY_F13, u"⌃F13"_s},
                    {Qt::Key_Home, KEY_KP7, u"⌃7"_s},
                    {Qt::Key_Print, KEY_SYSRQ, {}},
                    {Qt::Key_VolumeUp, KEY_VOLUMEUP, {}},
                    {Qt::Key_NumLock, KEY_NUMLOCK, u"-"_s}};
        for (const auto &[key, position, label] : rows) {
            ShortcutEditor editor(TovelShortcut::standard(), [](auto &) { return true; });
            editor.show();
            QVERIFY(QTest::qWaitForWindowActive(&editor));
            auto *field = editor.findChild<ShortcutRecordButton *>();
            field->click();
            const QString before = informativeText(editor);
            QKeyEvent event(QEvent::KeyPress, key, Qt::ControlModifier, position + 8, 0, 0);
            QApplication::sendEvent(field, &event);
            QCOMPARE(field->isRecording(), label.size() < 2);
            if (label.isEmpty())
                QCOMPARE(informativeText(editor),
                         u"That key cannot be used in a shortcut. Try another combination."_s);
            else
                QCOMPARE(label == u"-" ? informativeText(editor) : field->text(),
                         label == u"-" ? before : label);
            field->click();
            QCOMPARE(informativeText(editor), before);
        }
    }
};

QTEST_MAIN(TestShell)
#include "tst_shell.moc"
