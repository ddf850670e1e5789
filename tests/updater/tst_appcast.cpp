#include "updater/appcast.h"
#include "updater/plain_text.h"

#include <QElapsedTimer>
#include <QTest>

using namespace tovel;
using namespace Qt::StringLiterals;

namespace {

QByteArray feed(const QByteArray &content)
{
    return "<?xml version='1.0' encoding='utf-8'?>\n"
           "<rss version='2.0' xmlns:s='http://www.andymatuschak.org/xml-namespaces/sparkle'>"
           "<channel><title>Releases</title>"
        + content + "</channel></rss>";
}

QByteArray item(const QByteArray &content) { return "<item>" + content + "</item>"; }

const QByteArray version = "<s:version>2</s:version>";

} // namespace

class TestAppcast : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsItems()
    {
        const AppcastReading reading = parseAppcast(
            feed(item("<title>Tovel\n 1.2</title><link> https://tovel.test/1.2 </link>"
                      "<description><![CDATA[<p>New &amp; old</p>]]></description>"
                      "<pubDate>Fri, 03 May 2024 10:00:00 +0000</pubDate>"
                      "<enclosure url='x' s:version='12' s:shortVersionString='1.2' version='99'/>"
                      "<s:deltas><enclosure s:version='98'/></s:deltas>")
                 + item("<s:version>11</s:version><s:shortVersionString>1.1</s:shortVersionString>"
                        "<link>http://tovel.test/</link><pubDate>soon</pubDate>"
                        "<version>97</version><enclosure s:version='96' s:os='Linux'/>")));
        QCOMPARE(reading.error, QString());
        const QList<SUAppcastItem> expected{
            {.title = u"Tovel 1.2"_s,
             .versionString = u"12"_s,
             .displayVersionString = u"1.2"_s,
             .itemDescription = u"New & old"_s,
             .infoURL = QUrl(u"https://tovel.test/1.2"_s),
             .date = QDateTime({2024, 5, 3}, {10, 0}, Qt::UTC)},
            {.versionString = u"11"_s, .displayVersionString = u"1.1"_s}};
        QCOMPARE(reading.items, expected);
    }

    void leavesOutWhatIsNotForThisProgram_data()
    {
        QTest::addColumn<QByteArray>("content");

        QTest::newRow("no version") << QByteArray("<title>2</title><enclosure url='x'/>");
        QTest::newRow("blank version") << QByteArray("<s:version> </s:version>");
        QTest::newRow("another channel") << version + "<s:channel>beta</s:channel>";
        QTest::newRow("another system") << version + "<enclosure s:os='windows'/>";
        QTest::newRow("endless version")
            << "<s:version>" + QByteArray(appcastVersionLimit + 1, '2') + "</s:version>";
    }

    void leavesOutWhatIsNotForThisProgram()
    {
        QFETCH(const QByteArray, content);
        const AppcastReading reading = parseAppcast(feed(item(content) + item(version)));
        QCOMPARE(reading.error, QString());
        QCOMPARE(reading.items.size(), 1);
    }

    void refusesWhatIsNoFeed_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        const QByteArray good = feed(item(version));

        QTest::newRow("nothing") << QByteArray();
        QTest::newRow("no XML") << QByteArray("404 page not found");
        QTest::newRow("another document") << QByteArray("<html/>");
        QTest::newRow("truncated") << good.chopped(3);
        QTest::newRow("truncated in an item") << good.first(good.indexOf("</item"));
        QTest::newRow("more behind the end") << good + "<rss/>";
        QTest::newRow("type declaration")
            << "<!DOCTYPE rss SYSTEM 'file:///etc/hostname'>" + feed(item(version)).mid(39);
        QTest::newRow("multiplying entities") << QByteArray(
            "<!DOCTYPE rss [<!ENTITY a 'aaaaaaaaaa'><!ENTITY b '&a;&a;&a;&a;&a;&a;&a;&a;'>"
            "<!ENTITY c '&b;&b;&b;&b;&b;&b;&b;&b;'><!ENTITY d '&c;&c;&c;&c;&c;&c;&c;&c;'>]>"
            "<rss><channel><item><title>&d;</title></item></channel></rss>");
        QTest::newRow("unknown entity") << feed(item("<title>&nbsp;</title>" + version));
        QTest::newRow("not UTF-8") << feed(item("<title>\xff</title>" + version));
        QTest::newRow("too large") << feed(item(version) + QByteArray(appcastSizeLimit, ' '));
        QTest::newRow("too many items") << feed(item(version).repeated(appcastItemLimit + 1));
        QTest::newRow("too deep") << feed(QByteArray("<a>").repeated(100)
                                          + QByteArray("</a>").repeated(100));
    }

    void refusesWhatIsNoFeed()
    {
        QFETCH(const QByteArray, bytes);
        const AppcastReading reading = parseAppcast(bytes);
        QVERIFY(!reading.error.isEmpty());
        QVERIFY(reading.items.isEmpty());
    }

    // Each of these takes a careless reader minutes.
    void isQuickWithWhateverComes_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QByteArray attributes = "<enclosure x='>'";
        for (int i = 0; i < 80000; ++i)
            attributes += " a" + QByteArray::number(i) + "=''";
        const auto described = [](const QByteArray &text) {
            return feed(item("<description><![CDATA[<p>" + text + "]]></description>" + version));
        };

        QTest::newRow("attributes") << feed(item(attributes + "/>" + version));
        QTest::newRow("open tags in the notes")
            << described(QByteArray("<a").repeated(appcastSizeLimit / 3));
        QTest::newRow("open comments in the notes")
            << described(QByteArray("<!--").repeated(appcastSizeLimit / 5));
        QTest::newRow("references in the notes")
            << described(QByteArray("&").repeated(appcastSizeLimit - 1000));
    }

    void isQuickWithWhateverComes()
    {
        QFETCH(const QByteArray, bytes);
        QVERIFY(bytes.size() <= appcastSizeLimit);
        QElapsedTimer timer;
        timer.start();
        parseAppcast(bytes);
        QVERIFY(timer.elapsed() < 5000);
    }

    void makesPlainText_data()
    {
        QTest::addColumn<QString>("description");
        QTest::addColumn<QString>("text");

        QTest::newRow("plain text keeps its lines")
            << u" one\n  two < 3 &amp; 4 > 2\n"_s << u"one\n  two < 3 & 4 > 2"_s;
        QTest::newRow("paragraphs and lists")
            << u"<h2>New</h2>\n<p>It  is\nfast<br/>and <b>small</b></p>"
               "<ul>\n <li>a</li><li>b</li></ul>"_s
            << u"New\n\nIt is fast\nand small\n\n• a\n• b"_s;
        QTest::newRow("what is not for reading")
            << u"<style>p{}</style>a<!-- <p> --><SCRIPT>1<2</Script>b<img src='file:///x'>c"_s
            << u"abc"_s;
        QTest::newRow("preformatted") << u"<pre>a\n  b</pre>c  d"_s << u"a\n  b\n\nc d"_s;
        QTest::newRow("references")
            << u"&#72;&#x49;&hellip; &lt;b&gt; &unknown; &; &#xD800; a&#0;&#27;b &"_s
            << u"HI… <b> &unknown; &; &#xD800; ab &"_s;
        QTest::newRow("tag without an end") << u"<p>a <b"_s << u"a <b"_s;
        QTest::newRow("long") << u"abcdefghijklmnopqrstuvwxyz"_s.repeated(3)
                              << u"abcdefghijklmnopqrstuvwxyzabcdefghijklmnopqrstuvwxyzabcdefg…"_s;
        QTest::newRow("never cut inside a character")
            << u"a"_s.repeated(58) + u"🐑🐑"_s << u"a"_s.repeated(58) + u"…"_s;
    }

    void makesPlainText()
    {
        QFETCH(const QString, description);
        QFETCH(const QString, text);
        QCOMPARE(plainText(description, 60), text);
    }
};

QTEST_APPLESS_MAIN(TestAppcast)
#include "tst_appcast.moc"
