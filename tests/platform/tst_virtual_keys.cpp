#include "platform/linux/virtual_keys.h"
#include "settings/shortcut.h"

#include <QSet>
#include <QTest>

#include <linux/input-event-codes.h>

using namespace tovel;
using namespace Qt::StringLiterals;

class TestVirtualKeys final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void eachKeyHasOneCode()
    {
        QSet<std::uint32_t> seen;
        int positions = 0;
        for (std::uint32_t position = 0; position <= KEY_MAX; ++position) {
            const auto virtualKey = virtualKeyAt(position);
            if (!virtualKey)
                continue;
            ++positions;
            seen.insert(*virtualKey);
            QVERIFY(*virtualKey < 128);
            QCOMPARE(positionOfVirtualKey(*virtualKey), position);
        }
        QCOMPARE(seen.size(), positions);
        QVERIFY(!positionOfVirtualKey(0xFFFFFFFF));
    }

    void namedKeysAreWhereTheirNamesSay()
    {
        const std::pair<quint32, QString> rows[] = {
            {KEY_ENTER, u"↩"_s},     {KEY_TAB, u"⇥"_s},          {KEY_SPACE, u"Space"_s},
            {KEY_BACKSPACE, u"⌫"_s}, {KEY_ESC, u"⎋"_s},          {KEY_KPENTER, u"⌤"_s},
            {KEY_DELETE, u"⌦"_s},    {KEY_LEFT, u"←"_s},         {KEY_RIGHT, u"→"_s},
            {KEY_DOWN, u"↓"_s},      {KEY_UP, u"↑"_s},           {KEY_HOME, u"Home"_s},
            {KEY_END, u"End"_s},     {KEY_PAGEUP, u"Page Up"_s}, {KEY_PAGEDOWN, u"Page Down"_s},
            {KEY_F1, u"F1"_s},       {KEY_F2, u"F2"_s},          {KEY_F3, u"F3"_s},
            {KEY_F4, u"F4"_s},       {KEY_F5, u"F5"_s},          {KEY_F6, u"F6"_s},
            {KEY_F7, u"F7"_s},       {KEY_F8, u"F8"_s},          {KEY_F9, u"F9"_s},
            {KEY_F10, u"F10"_s},     {KEY_F11, u"F11"_s},        {KEY_F12, u"F12"_s},
            {KEY_T, u"X"_s}, // without a name: the characters of the event
        };
        for (const auto &[position, label] : rows) {
            const KeyDownEvent event{NSEventModifierFlagCommand,
                                     virtualKeyAt(position).value_or(200), u"x"_s};
            QCOMPARE(shortcutFromEvent(event)->key, label);
        }
        QCOMPARE(positionOfVirtualKey(TovelShortcut::standard().keyCode), KEY_T);
    }
};

QTEST_GUILESS_MAIN(TestVirtualKeys)
#include "tst_virtual_keys.moc"
