#include "platform/simulated/memory_user_defaults.h"
#include "settings/shortcut_preferences.h"
#include "support/test.h"

#include <QSignalSpy>

namespace {

constexpr auto Shift = NSEventModifierFlagShift;
constexpr auto Control = NSEventModifierFlagControl;
constexpr auto Option = NSEventModifierFlagOption;
constexpr auto Command = NSEventModifierFlagCommand;
constexpr std::uint64_t CapsLock = 0x10000;
constexpr std::uint64_t Function = 0x800000;

} // namespace

class TestShortcut final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void eventsBecomeShortcuts()
    {
        const auto read = [](const KeyDownEvent &event) {
            const auto shortcut = shortcutFromEvent(event);
            return shortcut ? u"%1 %2"_s.arg(shortcut->modifiers).arg(shortcut->label())
                            : QString();
        };
        QCOMPARE(read({Command | Shift, 49, u" "_s}), u"768 ⇧⌘Space"_s);
        QCOMPARE(read({Shift | Control | Option | Command | CapsLock, 17, u"t"_s}),
                 u"6912 ⌃⌥⇧⌘T"_s);
        QCOMPARE(read({Option | Function, 111, {}}), u"2048 ⌥F12"_s);
        QCOMPARE(read({Option, 27, u"ß"_s}), u"2048 ⌥SS"_s);
        QCOMPARE(read({Control, 53, u"\x1b"_s}), u"4096 ⌃⎋"_s);
        QCOMPARE(read({Shift, 96, {}}), QString());
        QCOMPARE(read({CapsLock, 17, u"t"_s}), QString());
        QCOMPARE(read({Command, 80, {}}), QString()); // nothing to show
    }

    void theStoredFormIsReadStrictly()
    {
        QVERIFY(decodeShortcut(R"({"key":"T","x":[],"modifiers":6400,"keyCode":17})")
                == TovelShortcut::standard());
        QCOMPARE(encodeShortcut(TovelShortcut::standard()),
                 QByteArray(R"({"keyCode":17,"modifiers":6400,"key":"T"})"));
        const TovelShortcut odd{0xFFFFFFFF, 0, u"\"]ü⌦"_s};
        QVERIFY(decodeShortcut(encodeShortcut(odd)) == odd);
        const QByteArray refused[] = {
            R"({"keyCode":17,"modifiers":6400})",
            R"({"keyCode":"17","modifiers":6400,"key":"Y"})",
            R"({"keyCode":-1,"modifiers":6400,"key":"Y"})",
            R"({"keyCode":17.5,"modifiers":6400,"key":"Y"})",
            R"({"keyCode":17,"modifiers":4294967296,"key":"Y"})",
            R"({"keyCode":17,"modifiers":6400,"key":"Y")",
        };
        for (const QByteArray &json : refused)
            QVERIFY2(!decodeShortcut(json), json);
    }

    void preferencesTellChanges()
    {
        MemoryUserDefaults defaults;
        ShortcutPreferences preferences(defaults);
        QCOMPARE(preferences.shortcut().label(), u"⌃⌥⌘T"_s);
        defaults.put(u"globalShortcut"_s, QByteArray("{"));
        QVERIFY(ShortcutPreferences(defaults).shortcut() == TovelShortcut::standard());
        defaults.takeWrites();
        QSignalSpy changes(&preferences, &ShortcutPreferences::shortcutChanged);

        QVERIFY(preferences.save(TovelShortcut::standard()).isStored());
        QCOMPARE(changes.count(), 0);
        QCOMPARE(defaults.takeWrites(), QStringList{u"globalShortcut"_s});

        const TovelShortcut chosen{49, optionKey | shiftKey, u"Space"_s};
        QVERIFY(preferences.save(chosen).isStored());
        QCOMPARE(changes.count(), 1);
        QVERIFY(ShortcutPreferences(defaults).shortcut() == chosen);

        TovelShortcut renamed = chosen;
        renamed.key = u"Bar"_s;
        defaults.failWrites(u"disk full"_s);
        QCOMPARE(preferences.save(renamed).failure, u"disk full"_s);
        QCOMPARE(changes.count(), 2);
        QCOMPARE(preferences.shortcut().key, u"Bar"_s);
        preferences.readAgain(); // which would bring back the one before
        QCOMPARE(preferences.shortcut().key, u"Bar"_s);

        defaults.failReads(u"locked"_s);
        ShortcutPreferences late(defaults);
        QCOMPARE(late.shortcut(), TovelShortcut::standard());
        defaults.failReads({});
        late.readAgain();
        QVERIFY(late.shortcut() == chosen);
    }
};

QTEST_GUILESS_MAIN(TestShortcut)
#include "tst_shortcut.moc"
