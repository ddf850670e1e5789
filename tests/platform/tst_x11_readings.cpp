#include "platform/linux/x11/key_grabs.h"
#include "platform/linux/x11/manager_traits.h"
#include "platform/linux/x11/properties.h"

#include <QTest>

#include <bit>

using namespace tovel::x11;
using namespace Qt::StringLiterals;

namespace {

constexpr Atom Utf8 = 300;

} // namespace

class TestX11Readings : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void textIsReadOrRefused_data()
    {
        QTest::addColumn<Property>("property");
        QTest::addColumn<QString>("expected");
        const auto row = [](const char *name, const QByteArray &bytes, const QString &expected,
                            Atom type = Utf8, std::uint8_t format = 8) {
            QTest::newRow(name) << Property{type, format, bytes} << expected;
        };
        row("UTF-8", "t\xc3\xa9", u"té"_s);
        row("Latin-1", "t\xe9", u"té"_s, StringType);
        row("broken UTF-8", "a\xff", u"a\ufffd"_s);
        row("controls", "a\x1b[2J\nb", u"a [2J b"_s);
        row("cut at NUL", QByteArray("a\0b", 3), u"a"_s);
        row("empty", {}, {});
        row("other type", "abc", {}, CardinalType);
        row("other format", "abcd", {}, Utf8, 32);
        const QByteArray pairs = QByteArray("\xf0\x9f\x90\x91").repeated(MaximumTitleLength);
        const QString sheep = u"🐑"_s.repeated(MaximumTitleLength);
        row("cut between pairs", "x" + pairs, (u"x"_s + sheep).first(MaximumTitleLength - 1));
    }

    void textIsReadOrRefused()
    {
        QFETCH(Property, property);
        QFETCH(QString, expected);
        const auto text = readText(property, Utf8);
        QCOMPARE(text.has_value(), !expected.isEmpty());
        QCOMPARE(text.value_or(QString()), expected);
    }

    void listsTakeOnlyTheirOwnShape()
    {
        const QByteArray bytes("\1\0\0\0\2\0\0\0\3\0", 10);
        QCOMPARE(readList({AtomType, 32, bytes}, AtomType), (std::vector<std::uint32_t>{1, 2}));
        QVERIFY(readList({AtomType, 16, bytes}, AtomType).empty());
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
        QCOMPARE(read(QByteArray("\0\0\0", 3)), Names());
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
        QVERIFY(shows(u"KWin"_s));
        QVERIFY(shows(u"IceWM 3.3.1 (Linux)"_s));
        QVERIFY(!shows(u"IceWM 3.3.1 (Linux)"_s, u"bring"_s));
        QVERIFY(shows(u"GNOME Shell"_s));
        QVERIFY(shows(u"Xfwm4"_s, u"switch"_s));
        QVERIFY(!shows(u"Xfwm4"_s, u"bring"_s));
        QVERIFY(!shows(u"Xfwm4"_s));
        QVERIFY(!shows(u"Openbox"_s, u"switch"_s));
        QVERIFY(!shows(u"Mutter (Other)"_s)); // a fork that only begins alike
        QVERIFY(!shows({}));
    }

    void icewmPreferenceIsReadByItsLastWord()
    {
        QCOMPARE(icewmBringsWindows("a=1\nFocusCurrentWorkspace = 1 # comment\n"), true);
        QCOMPARE(icewmBringsWindows("FocusCurrentWorkspace=1\nFocusCurrentWorkspace=0"), false);
        QVERIFY(!icewmBringsWindows("# FocusCurrentWorkspace=1\n=\n"));
    }

    void xfwmActionIsFoundInItsPlaceOnly()
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
        QCOMPARE(xfwmActivateAction("</property>"), QString());
    }

    void modifiersAreFoundWhereTheKeyboardHasThem_data()
    {
        using Keysyms = std::vector<std::uint32_t>;
        QTest::addColumn<Keysyms>("modifiers"); // Mod1 to Mod5, a key each
        QTest::addColumn<int>("alt");
        QTest::addColumn<int>("super");
        QTest::addColumn<int>("locks");
        constexpr std::uint32_t Scroll = 0xFF14, Num = 0xFF7F, Meta = 0xFFE7, Alt = 0xFFE9,
                                Super = 0xFFEC;
        QTest::newRow("usual") << Keysyms{Alt, Num, 0, Super, 0} << 0x08 << 0x40 << 0x12;
        QTest::newRow("elsewhere") << Keysyms{Num, Super, Alt, 0, Scroll} << 0x20 << 0x10 << 0x8A;
        QTest::newRow("Super before Meta") << Keysyms{Alt, Meta, Super} << 0x08 << 0x20 << 0x02;
        QTest::newRow("Meta for Super") << Keysyms{Alt, Meta} << 0x08 << 0x10 << 0x02;
        QTest::newRow("none") << Keysyms{} << 0 << 0 << 0x02;
    }

    void modifiersAreFoundWhereTheKeyboardHasThem()
    {
        QFETCH(std::vector<std::uint32_t>, modifiers);
        QFETCH(int, alt);
        QFETCH(int, super);
        QFETCH(int, locks);
        // The key of each modifier has its keysym in the second place.
        Keyboard keyboard{8, 12, std::vector<std::uint32_t>(10), std::vector<std::uint8_t>(8)};
        for (std::size_t i = 0; i < modifiers.size(); ++i) {
            keyboard.keysyms[i * 2 + 1] = modifiers[i];
            keyboard.modifierKeys[i + 3] = static_cast<std::uint8_t>(i + 8);
        }
        const ModifierBits bits = modifierBits(keyboard);
        QCOMPARE(int(bits.alt), alt);
        QCOMPARE(int(bits.super), super);
        QCOMPARE(int(bits.locks), locks);
        const bool isWhole = alt != 0 && super != 0;
        QCOMPARE(statesOf({.alt = true, .super = true}, bits).size(),
                 isWhole ? std::size_t(1) << std::popcount(bits.locks) : 0);
        QCOMPARE(modifierBits({}), (ModifierBits{.locks = 2}));
    }
};

QTEST_GUILESS_MAIN(TestX11Readings)
#include "tst_x11_readings.moc"
