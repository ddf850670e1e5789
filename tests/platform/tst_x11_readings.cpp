#include "platform/session/workspace_names.h"
#include "platform/session/x11/properties.h"
#include "platform/session/x11/window_mirror.h"
#include "support/test.h"
#include "texts/one_line.h"

using namespace tovel::x11;

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
        const QByteArray pairs = QByteArray("\xf0\x9f\x90\x91").repeated(tovel::MaximumTitleLength);
        const QString sheep = u"🐑"_s.repeated(tovel::MaximumTitleLength);
        QCOMPARE(read("x" + pairs), (u"x"_s + sheep).first(tovel::MaximumTitleLength - 1));
    }

    void namesOfDesktopsAreThoseThatSomebodyChose()
    {
        const auto read = [](const QByteArray &bytes, Atom type = Utf8) {
            return tovel::chosenNames(readTextList({type, 8, bytes}, Utf8, 4)).join(u'|');
        };
        QCOMPARE(read(QByteArray("Desktop 1\0 web\n\0\0"
                                 "4\0five",
                                 23)),
                 u"|web||"_s);
        QCOMPARE(read(QByteArray("web\0Bureau 2\0Bureau 4", 21)), u"web||Bureau 4"_s);
        QCOMPARE(read(QByteArray("mail 1\0web 2\0", 13)), u"mail 1|web 2"_s);
        QCOMPARE(read("web", StringType), QString());
        QVERIFY(wereDesktopsReordered({u"a"_s, u"b"_s}, {u"b"_s, u"a"_s}));
        QVERIFY(!wereDesktopsReordered({u"a"_s, u"b"_s}, {u"a"_s, u"b"_s}));
        QVERIFY(!wereDesktopsReordered({u"a"_s, u"b"_s}, {u"c"_s, u"a"_s}));
    }

    void desktopsGoAwayWhenTheirCountSaysSo()
    {
        struct Row
        {
            std::uint32_t before;
            std::uint32_t now;
            int changes;
            bool expected;
        };
        const Row rows[] = {{0, 4, 0, false}, {4, 4, 0, false}, {4, 5, 1, false},
                            {4, 6, 2, false}, {4, 4, 1, false}, {4, 3, 0, true},
                            {4, 3, 1, true},  {4, 4, 2, true},  {4, 5, 2, true}};
        for (const auto &[before, now, changes, expected] : rows)
            QCOMPARE(wereDesktopsRemoved(before, now, changes), expected);
    }
};

QTEST_GUILESS_MAIN(TestX11Readings)
#include "tst_x11_readings.moc"
