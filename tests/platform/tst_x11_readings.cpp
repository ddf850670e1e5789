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
    void textIsReadOrRefused_data();
    void textIsReadOrRefused();
    void listsTakeOnlyTheirOwnShape();
    void classSplitsAtItsZeros();
    void managersAreKnownBySwitching_data();
    void managersAreKnownBySwitching();
    void xfwmActionIsFoundInItsPlaceOnly();
};

void TestX11Readings::textIsReadOrRefused_data()
{
    QTest::addColumn<Atom>("type");
    QTest::addColumn<int>("format");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("expected");

    QTest::newRow("UTF-8") << Utf8 << 8 << QByteArray("t\xc3\xa9") << u"té"_s;
    QTest::newRow("Latin-1") << StringType << 8 << QByteArray("t\xe9") << u"té"_s;
    QTest::newRow("broken UTF-8") << Utf8 << 8 << QByteArray("a\xff") << u"a\ufffd"_s;
    QTest::newRow("controls") << Utf8 << 8 << QByteArray("a\x1b[2J\nb") << u"a [2J b"_s;
    QTest::newRow("cut at NUL") << Utf8 << 8 << QByteArray("a\0b", 3) << u"a"_s;
    QTest::newRow("empty") << Utf8 << 8 << QByteArray() << QString();
    QTest::newRow("other type") << CardinalType << 8 << QByteArray("abc") << QString();
    QTest::newRow("other format") << Utf8 << 32 << QByteArray("abcd") << QString();
    QTest::newRow("megabyte") << Utf8 << 8 << QByteArray(1 << 20, 'x')
                              << QString(MaximumTitleLength, u'x');
    const QByteArray pairs = QByteArray("\xf0\x9f\x90\x91").repeated(MaximumTitleLength);
    const QString sheep = u"x🐑"_s.mid(1).repeated(MaximumTitleLength);
    QTest::newRow("cut between pairs")
        << Utf8 << 8 << "x" + pairs << (u"x"_s + sheep).first(MaximumTitleLength - 1);
}

void TestX11Readings::textIsReadOrRefused()
{
    QFETCH(Atom, type);
    QFETCH(int, format);
    QFETCH(QByteArray, bytes);
    QFETCH(QString, expected);
    const auto text = readText({type, static_cast<std::uint8_t>(format), bytes}, Utf8);
    QCOMPARE(text.has_value(), !expected.isEmpty());
    QCOMPARE(text.value_or(QString()), expected);
}

void TestX11Readings::listsTakeOnlyTheirOwnShape()
{
    const QByteArray bytes("\1\0\0\0\2\0\0\0\3\0", 10);
    QCOMPARE(readList({AtomType, 32, bytes}, AtomType), (std::vector<std::uint32_t>{1, 2}));
    QVERIFY(readList({AtomType, 16, bytes}, AtomType).empty());
    QVERIFY(readList({CardinalType, 32, bytes}, AtomType).empty());
    QCOMPARE(readValue({CardinalType, 32, bytes}, CardinalType), 1U);
    QVERIFY(!readValue({CardinalType, 32, bytes.first(3)}, CardinalType));
    QVERIFY(!readValue({}, CardinalType));
}

void TestX11Readings::classSplitsAtItsZeros()
{
    const auto read = [](const QByteArray &bytes) { return readClass({StringType, 8, bytes}); };
    using Names = std::pair<QString, QString>;
    QCOMPARE(read(QByteArray("xterm\0XTerm\0", 12)), Names(u"xterm"_s, u"XTerm"_s));
    QCOMPARE(read(QByteArray("\0XTerm", 6)), Names(u""_s, u"XTerm"_s));
    QCOMPARE(read("xterm"), Names(u"xterm"_s, u""_s));
    QCOMPARE(read(QByteArray("\0\0\0", 3)), Names());
    QCOMPARE(readClass({Utf8, 8, "xterm"}), Names());
}

void TestX11Readings::managersAreKnownBySwitching_data()
{
    QTest::addColumn<QString>("manager");
    QTest::addColumn<QString>("action");
    QTest::addColumn<bool>("shows");

    QTest::newRow("kwin") << u"KWin"_s << QString() << true;
    QTest::newRow("icewm") << u"IceWM 3.3.1 (Linux)"_s << QString() << true;
    QTest::newRow("mutter") << u"GNOME Shell"_s << QString() << true;
    QTest::newRow("openbox") << u"Openbox"_s << u"switch"_s << false;
    QTest::newRow("xfwm4 switches") << u"Xfwm4"_s << u"switch"_s << true;
    QTest::newRow("xfwm4 brings") << u"Xfwm4"_s << u"bring"_s << false;
    QTest::newRow("xfwm4 by default") << u"Xfwm4"_s << QString() << false;
    QTest::newRow("a fork that only begins alike") << u"Mutter (Other)"_s << QString() << false;
    QTest::newRow("nameless") << QString() << QString() << false;
}

void TestX11Readings::managersAreKnownBySwitching()
{
    QFETCH(QString, manager);
    QFETCH(QString, action);
    QFETCH(bool, shows);
    QCOMPARE(activationShowsDesktop(manager, [&action] { return action; }), shows);
}

void TestX11Readings::xfwmActionIsFoundInItsPlaceOnly()
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

QTEST_GUILESS_MAIN(TestX11Readings)
#include "tst_x11_readings.moc"
