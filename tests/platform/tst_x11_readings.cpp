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
};

QTEST_GUILESS_MAIN(TestX11Readings)
#include "tst_x11_readings.moc"
