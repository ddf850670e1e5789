#include "app/panel/tovel_window.h"
#include "app/shell/app_delegate.h"
#include "app/shell/shortcut_editor.h"
#include "app/shell/shortcut_record_button.h"
#include "app/shell/status_menu.h"
#include "model/model_world.h"
#include "settings/fake_updater.h"

#include <QApplication>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QTest>
#include <QTimer>

using namespace tovel;

namespace {

const TovelShortcut shiftSpace{
    .keyCode = 49, .modifiers = controlKey | shiftKey, .key = u"Space"_s};

// A press of the key at the position of the kernel's code.
QKeyEvent press(Qt::Key key, Qt::KeyboardModifiers modifiers, quint32 position)
{
    return {QEvent::KeyPress, key, modifiers, position + 8, 0, 0};
}

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

// The running program, without an updater and a tray.
class Program
{
public:
    Program()
        : delegate(world.desktop.platform(),
                   [this](bool, SPUUpdaterDelegate *, SPUStandardUserDriverDelegate *) {
                       return std::make_unique<FakeUpdater>(updater);
                   })
    { }

    ModelWorld world;
    FakeUpdaterState updater;
    AppDelegate delegate;
};

} // namespace

class TestShell : public QObject
{
    Q_OBJECT

private Q_SLOTS:
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
        QVERIFY(lines(*menu).contains(u"Check for Updates… disabled"_s));
        QVERIFY(lines(*menu).contains(u"Keyboard Shortcut… (⌃⌥⌘T)"_s));
        menu->actions().at(4)->trigger();
        QCOMPARE(moved, 12U);

        world.facts().trusted = false;
        world.desktop.replaceReply("SLSCopyManagedDisplaySpaces", QVariantList());
        model.refresh();
        QCOMPARE(
            lines(*makeStatusMenu(model, updates, shortcuts, {})).mid(0, 3),
            (QStringList{u"Fly to this pond disabled"_s, u"No desktops found disabled"_s, u"-"_s}));
    }

    void theKeyTogglesThePanel()
    {
        Program program;
        program.delegate.applicationDidFinishLaunching();
        QVERIFY(program.delegate.isPanelVisible());
        SimulatedDesktop &desktop = program.world.desktop;
        QCOMPARE(desktop.registeredHotKeys(),
                 (QList<SimulatedDesktop::HotKey>{{17, 6400, 0x544F564C, 1}}));
        QVERIFY(QTest::qWaitForWindowActive(&program.delegate.panel()));
        QVERIFY(desktop.pressHotKey(17, 6400));
        QVERIFY(!program.delegate.isPanelVisible());
        QVERIFY(desktop.pressHotKey(17, 6400));
        QVERIFY(desktop.clock().runUntil([&] { return program.delegate.isPanelVisible(); }, 5));
    }

    void saysThatTheKeyCannotBeHad()
    {
        Program taken;
        taken.world.desktop.takeHotKey(17, 6400);
        taken.delegate.applicationDidFinishLaunching();
        QCOMPARE(taken.delegate.model().message(),
                 u"⌃⌥⌘T is unavailable. Choose another shortcut in Settings."_s);

        Program refused;
        refused.world.facts().installHandlerStatus = -1;
        refused.delegate.applicationDidFinishLaunching();
        QCOMPARE(refused.delegate.model().message(),
                 u"Could not register the shortcut. Use the menu bar icon."_s);
        QVERIFY(refused.world.desktop.registeredHotKeys().isEmpty());
    }

    void cancellingTheEditorGivesTheKeyBack()
    {
        Program program;
        program.delegate.applicationDidFinishLaunching();
        SimulatedDesktop &desktop = program.world.desktop;
        QTimer::singleShot(0, qApp, [&] {
            auto *editor = qobject_cast<QDialog *>(QApplication::activeModalWidget());
            QVERIFY(editor);
            QVERIFY(desktop.registeredHotKeys().isEmpty());
            program.delegate.editShortcut(); // one editor at a time
            editor->reject();
        });
        program.delegate.editShortcut();
        QCOMPARE(desktop.registeredHotKeys().size(), 1);
        QVERIFY(!program.world.defaults().object(u"globalShortcut"_s));
    }

    void recordsAShortcut()
    {
        bool available = false;
        QList<TovelShortcut> tried;
        ShortcutEditor editor(TovelShortcut::standard(), [&](const TovelShortcut &shortcut) {
            tried.append(shortcut);
            return available;
        });
        editor.show();
        QVERIFY(QTest::qWaitForWindowActive(&editor));
        auto *field = editor.findChild<ShortcutRecordButton *>();
        QPushButton *save = button(editor, u"Save"_s);
        const auto send = [&](QKeyEvent event) { QApplication::sendEvent(field, &event); };
        QCOMPARE(field->text(), u"⌃⌥⌘T"_s);

        field->click();
        QVERIFY(field->isRecording() && !save->isEnabled());
        QCOMPARE(field->text(), u"Press shortcut…"_s);
        send(press(Qt::Key_Shift, Qt::ShiftModifier, 42)); // not a key of its own
        send(press(Qt::Key_A, Qt::ShiftModifier, 30));
        QCOMPARE(informativeText(editor),
                 u"Include Command, Control, or Option in your shortcut."_s);
        QVERIFY(field->isRecording() && !save->isEnabled());
        send(press(Qt::Key_Escape, Qt::NoModifier, 1));
        QVERIFY(!field->isRecording() && save->isEnabled() && editor.isVisible());
        QCOMPARE(editor.candidate(), TovelShortcut::standard());

        field->click();
        send(press(Qt::Key_Space, Qt::ControlModifier | Qt::ShiftModifier, 57));
        QCOMPARE(field->text(), u"⌃⇧Space"_s);
        QCOMPARE(informativeText(editor), u"Click Save to use this shortcut."_s);
        save->click();
        QCOMPARE(tried, QList<TovelShortcut>{shiftSpace});
        QVERIFY(editor.isVisible());
        QCOMPARE(informativeText(editor),
                 u"That shortcut is unavailable. Click the field and try another combination."_s);

        available = true;
        button(editor, u"Reset to Default"_s)->click();
        QCOMPARE(editor.result(), int(QDialog::Accepted));
        QCOMPARE(editor.candidate(), TovelShortcut::standard());
    }
};

QTEST_MAIN(TestShell)
#include "tst_shell.moc"
