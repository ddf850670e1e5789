#include "platform/linux/x11/key_grabs.h"
#include "platform/linux/x11/manager_traits.h"
#include "platform/linux/x11/properties.h"

#include <QTest>

using namespace tovel::x11;
using namespace Qt::StringLiterals;

namespace {

constexpr Atom Utf8 = 300;

} // namespace

class TestX11Readings : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void textIsReadOrRefused()
    {
        const auto read = [](const QByteArray &bytes, Atom type = Utf8, std::uint8_t format = 8) {
            return readText({type, format, bytes}, Utf8);
        };
        QCOMPARE(read("t\xc3\xa9"), u"té"_s);
        QCOMPARE(read("t\xe9", StringType), u"té"_s);
        QCOMPARE(read("a\xff"), u"a\ufffd"_s);
        QCOMPARE(read("a\x1b[2J\nb"), u"a [2J b"_s);
        QCOMPARE(read(QByteArray("a\0b", 3)), u"a"_s);
        QVERIFY(!read("abc", CardinalType));
        QVERIFY(!read("abcd", Utf8, 32));
        const QByteArray pairs = QByteArray("\xf0\x9f\x90\x91").repeated(MaximumTitleLength);
        const QString sheep = u"🐑"_s.repeated(MaximumTitleLength);
        QCOMPARE(read("x" + pairs), (u"x"_s + sheep).first(MaximumTitleLength - 1));
    }

    void listsTakeOnlyTheirOwnShape()
    {
        const QByteArray bytes("\1\0\0\0\2\0\0\0\3\0", 10);
        QCOMPARE(readList({AtomType, 32, bytes}, AtomType), (std::vector<std::uint32_t>{1, 2}));
        QVERIFY(readList({CardinalType, 32, bytes}, AtomType).empty());
        QCOMPARE(readValue({CardinalType, 32, bytes}, CardinalType), 1U);
        QVERIFY(!readValue({CardinalType, 32, bytes.first(3)}, CardinalType));
        QVERIFY(!readValue({}, CardinalType));
    }

    void classSplitsAtItsZeros()
    {
        const auto read = [](const QByteArray &bytes) { return readClass({StringType, 8, bytes}); };
        using Names = std::pair<QString, QString>;
        QCOMPARE(read(QByteArray("xterm\0XTerm\0", 12)), Names(u"xterm"_s, u"XTerm"_s));
        QCOMPARE(read(QByteArray("\0XTerm", 6)), Names(u""_s, u"XTerm"_s));
        QCOMPARE(read("xterm"), Names(u"xterm"_s, u""_s));
        QCOMPARE(readClass({Utf8, 8, "xterm"}), Names());
    }

    void managersAreKnownBySwitching()
    {
        const auto shows = [](const QString &manager, const QString &action = {}) {
            return activationShowsDesktop(
                manager,
                {.xfwmAction = [&action] { return action; },
                 .icewmBrings = [&action] { return action == u"bring"; }});
        };
        QVERIFY(!shows(u"IceWM 3.3.1 (Linux)"_s, u"bring"_s));
        QVERIFY(shows(u"GNOME Shell"_s));
        QVERIFY(shows(u"Xfwm4"_s, u"switch"_s));
        QVERIFY(!shows(u"Xfwm4"_s, u"bring"_s));
        QVERIFY(!shows(u"Openbox"_s, u"switch"_s));
        QVERIFY(!shows(u"Mutter (Other)"_s)); // a fork that only begins alike
    }

    void managerPreferencesAreFoundInTheirPlaceOnly()
    {
        const QByteArray found
            = R"(<?xml version="1.0"?><channel name="xfwm4"><property name="general" type="empty">
                 <property name="theme" type="string" value="Default"/>
                 <property name="activate_action" type="string" value="switch"/></property></channel>)";
        QCOMPARE(xfwmActivateAction(found), u"switch"_s);
        QByteArray elsewhere = found;
        elsewhere.replace("general", "other");
        QCOMPARE(xfwmActivateAction(elsewhere), QString());
        QCOMPARE(xfwmActivateAction(found.first(found.size() / 3)), QString());
        QCOMPARE(icewmBringsWindows("FocusCurrentWorkspace=1\nFocusCurrentWorkspace = 0 # a"),
                 false);
        QVERIFY(!icewmBringsWindows("# FocusCurrentWorkspace=1\n=\n"));
    }

    void modifiersAreFoundWhereTheKeyboardHasThem()
    {
        // Of the keys of Mod1 to Mod5, each with its keysym in the second place.
        const auto bits = [](const std::vector<std::uint32_t> &modifiers) {
            Keyboard keyboard{8, 12, std::vector<std::uint32_t>(10), std::vector<std::uint8_t>(8)};
            for (std::size_t i = 0; i < modifiers.size(); ++i) {
                keyboard.keysyms[i * 2 + 1] = modifiers[i];
                keyboard.modifierKeys[i + 3] = static_cast<std::uint8_t>(i + 8);
            }
            return modifierBits(keyboard);
        };
        constexpr std::uint32_t Scroll = 0xFF14, Num = 0xFF7F, Meta = 0xFFE7, Alt = 0xFFE9,
                                Super = 0xFFEC;
        const ModifierBits usual = bits({Alt, Num, 0, Super, 0});
        QCOMPARE(usual, (ModifierBits{.alt = 0x08, .super = 0x40, .locks = 0x12}));
        QCOMPARE(bits({Num, Super, Alt, 0, Scroll}),
                 (ModifierBits{.alt = 0x20, .super = 0x10, .locks = 0x8A}));
        QCOMPARE(bits({Alt, Meta, Super}), (ModifierBits{.alt = 8, .super = 0x20, .locks = 2}));
        QCOMPARE(bits({Alt, Meta}), (ModifierBits{.alt = 8, .super = 0x10, .locks = 2}));
        QCOMPARE(modifierBits({}), (ModifierBits{.locks = 2}));
        QCOMPARE(statesOf({.alt = true, .super = true}, usual).size(), 4U);
        QVERIFY(statesOf({.alt = true, .super = true}, {}).empty());
    }
};

QTEST_GUILESS_MAIN(TestX11Readings)
#include "tst_x11_readings.moc"
