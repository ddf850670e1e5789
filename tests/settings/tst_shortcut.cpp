#include "platform/simulated/memory_user_defaults.h"
#include "settings/shortcut_preferences.h"

#include <QSignalSpy>
#include <QTest>

using namespace tovel;
using namespace Qt::StringLiterals;

Q_DECLARE_METATYPE(tovel::KeyDownEvent)

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
    void eventsBecomeShortcuts_data()
    {
        QTest::addColumn<KeyDownEvent>("event");
        QTest::addColumn<quint32>("modifiers");
        QTest::addColumn<QString>("label"); // empty: no shortcut

        const auto row
            = [](const char *name, const KeyDownEvent &event, quint32 modifiers,
                 const QString &label) { QTest::newRow(name) << event << modifiers << label; };
        row("named key", {Command | Shift, 49, u" "_s}, 768, u"⇧⌘Space"_s);
        row("letter", {Control, 0, u"a"_s}, 4096, u"⌃A"_s);
        row("all modifiers and locks", {Shift | Control | Option | Command | CapsLock, 17, u"t"_s},
            6912, u"⌃⌥⇧⌘T"_s);
        row("name over characters", {Control, 53, u"\x1b"_s}, 4096, u"⌃⎋"_s);
        row("name without characters", {Option | Function, 111, {}}, 2048, u"⌥F12"_s);
        row("characters grow in upper case", {Option, 27, u"ß"_s}, 2048, u"⌥SS"_s);
        row("shift alone", {Shift, 96, {}}, 0, {});
        row("no modifier", {CapsLock, 17, u"t"_s}, 0, {});
        row("nothing to show", {Command, 80, {}}, 0, {});
    }

    void eventsBecomeShortcuts()
    {
        QFETCH(KeyDownEvent, event);
        QFETCH(quint32, modifiers);
        QFETCH(QString, label);
        const auto shortcut = shortcutFromEvent(event);
        QCOMPARE(shortcut.has_value(), !label.isEmpty());
        if (shortcut) {
            QCOMPARE(shortcut->keyCode, event.keyCode);
            QCOMPARE(shortcut->modifiers, modifiers);
            QCOMPARE(shortcut->label(), label);
        }
    }

    void theStoredFormIsReadStrictly_data()
    {
        QTest::addColumn<QByteArray>("json");
        QTest::addColumn<bool>("isRead");

        const auto row = [](const char *name, const QByteArray &json, bool isRead) {
            QTest::newRow(name) << json << isRead;
        };
        row("any order, more members", R"({"key":"T","x":[],"modifiers":6400,"keyCode":17})", true);
        row("a member is missing", R"({"keyCode":17,"modifiers":6400})", false);
        row("number as text", R"({"keyCode":"17","modifiers":6400,"key":"T"})", false);
        row("number as boolean", R"({"keyCode":true,"modifiers":6400,"key":"T"})", false);
        row("text as number", R"({"keyCode":17,"modifiers":6400,"key":7})", false);
        row("negative", R"({"keyCode":-1,"modifiers":6400,"key":"T"})", false);
        row("a fraction", R"({"keyCode":17.5,"modifiers":6400,"key":"T"})", false);
        row("beyond 32 bits", R"({"keyCode":17,"modifiers":4294967296,"key":"T"})", false);
        row("no object", R"([17,6400,"T"])", false);
        row("no JSON", R"({"keyCode":17,"modifiers":6400,"key":"T")", false);
        row("empty", {}, false);
    }

    void theStoredFormIsReadStrictly()
    {
        QFETCH(QByteArray, json);
        QFETCH(bool, isRead);
        const auto expected
            = isRead ? std::optional(TovelShortcut::standard()) : std::optional<TovelShortcut>();
        QVERIFY(decodeShortcut(json) == expected);

        MemoryUserDefaults defaults;
        defaults.setObject(u"globalShortcut"_s, json);
        defaults.takeWrites();
        QVERIFY(ShortcutPreferences(defaults).shortcut() == TovelShortcut::standard());
        QCOMPARE(defaults.takeWrites(), QStringList());
    }

    void theWrittenFormComesBack()
    {
        QCOMPARE(encodeShortcut(TovelShortcut::standard()),
                 QByteArray(R"({"keyCode":17,"modifiers":6400,"key":"T"})"));
        const TovelShortcut odd{0xFFFFFFFF, 0, u"\"]ü⌦"_s};
        QVERIFY(decodeShortcut(encodeShortcut(odd)) == odd);
    }

    void preferencesTellChanges()
    {
        MemoryUserDefaults defaults;
        ShortcutPreferences preferences(defaults);
        QCOMPARE(preferences.shortcut().label(), u"⌃⌥⌘T"_s);
        QCOMPARE(defaults.takeWrites(), QStringList());
        QSignalSpy changes(&preferences, &ShortcutPreferences::shortcutChanged);

        QVERIFY(preferences.save(TovelShortcut::standard()));
        QCOMPARE(changes.count(), 0);
        QCOMPARE(defaults.takeWrites(), QStringList{u"globalShortcut"_s});

        const TovelShortcut chosen{49, optionKey | shiftKey, u"Space"_s};
        QVERIFY(preferences.save(chosen));
        QCOMPARE(changes.count(), 1);
        QVERIFY(ShortcutPreferences(defaults).shortcut() == chosen);

        TovelShortcut renamed = chosen;
        renamed.key = u"Bar"_s;
        defaults.failWrites(u"disk full"_s);
        QVERIFY(!preferences.save(renamed));
        QCOMPARE(changes.count(), 2);
        QCOMPARE(preferences.shortcut().key, u"Bar"_s);
    }

    void aStoredTextIsNotData()
    {
        MemoryUserDefaults defaults;
        defaults.setObject(u"globalShortcut"_s,
                           uR"({"keyCode":49,"modifiers":2048,"key":"Space"})"_s);
        QVERIFY(ShortcutPreferences(defaults).shortcut() == TovelShortcut::standard());
    }
};

QTEST_GUILESS_MAIN(TestShortcut)
#include "tst_shortcut.moc"
