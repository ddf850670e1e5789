#include "support/test.h"
#include "updater/appcast.h"
#include "updater/plain_text.h"
#include "updater/update_choice.h"
#include "updater/version_order.h"

#include <QTimeZone>

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
             .date = QDateTime({2024, 5, 3}, {10, 0}, QTimeZone::utc())},
            {.versionString = u"11"_s, .displayVersionString = u"1.1"_s}};
        QCOMPARE(reading.items, expected);
    }

    void leavesOutWhatIsNotForThisProgram()
    {
        const QByteArray others[] = {
            "<title>2</title><enclosure url='x'/>",
            version + "<s:channel>beta</s:channel>",
            version + "<enclosure s:os='windows'/>",
            "<s:version>" + QByteArray(appcastVersionLimit + 1, '2') + "</s:version>",
        };
        for (const QByteArray &other : others) {
            QCOMPARE(parseAppcast(feed(item(other) + item(version))).items.size(), 1);
        }
    }

    void refusesWhatIsNoFeed()
    {
        const QByteArray good = feed(item(version));
        QByteArray namespaces;
        for (qsizetype i = 0; i <= appcastNamespaceLimit; ++i)
            namespaces += " xmlns:a" + QByteArray::number(i) + "='u'";
        const QByteArray refused[] = {
            {},
            "<html/>",
            good.first(good.indexOf("</item")),
            good + "<rss/>",
            "<!DOCTYPE rss [<!ENTITY a 'aaaaaaaaaa'><!ENTITY b '&a;&a;&a;&a;&a;&a;&a;&a;'>"
            "<!ENTITY c '&b;&b;&b;&b;&b;&b;&b;&b;'><!ENTITY d '&c;&c;&c;&c;&c;&c;&c;&c;'>]>"
            "<rss><channel><item><title>&d;</title></item></channel></rss>",
            feed(item("<title>&nbsp;</title>" + version)),
            feed(item("<title>\xff</title>" + version)),
            feed(item(version) + QByteArray(appcastSizeLimit, ' ')),
            feed(item(version).repeated(appcastItemLimit + 1)),
            feed(QByteArray("<a>").repeated(100) + QByteArray("</a>").repeated(100)),
            feed(item(version) + "<a b='" + QByteArray(appcastTagLimit, ' ') + "'/>"),
            feed(item(version) + "<a" + namespaces + "/>"),
            feed(item(version + "<a" + namespaces + "/>")),
        };
        for (const QByteArray &bytes : refused) {
            const AppcastReading reading = parseAppcast(bytes);
            QVERIFY2(!reading.error.isEmpty() && reading.items.isEmpty(), bytes.left(200));
        }
    }

    void makesPlainText()
    {
        const auto made = [](const QString &description) { return plainText(description, 60); };
        QCOMPARE(made(u" one\n  two < 3 &amp; 4 > 2\n"_s), u"one\n  two < 3 & 4 > 2"_s);
        QCOMPARE(made(u"<h2>New</h2>\n<p>It  is\nfast<br/>and <b>small</b></p>"
                      "<ul>\n <li>a</li><li>b</li></ul>"_s),
                 u"New\n\nIt is fast\nand small\n\n• a\n• b"_s);
        QCOMPARE(made(u"<style>p{}</style>a<!-- <p> --><SCRIPT>1<2</Script>b<img src='/x'>c"_s),
                 u"abc"_s);
        QCOMPARE(made(u"<pre>a\n  b</pre>c  d"_s), u"a\n  b\n\nc d"_s);
        QCOMPARE(made(u"&#72;&#x49;&hellip; &lt;b&gt; &unknown; &; &#xD800; a&#0;&#27;b &"_s),
                 u"HI… <b> &unknown; &; &#xD800; ab &"_s);
        QCOMPARE(made(u"<p>a <b"_s), u"a <b"_s);
        // Never cut inside a character.
        QCOMPARE(made(u"a"_s.repeated(58) + u"🐑🐑"_s), u"a"_s.repeated(58) + u"…"_s);
    }

    // Every pair of the list, which also shows that the order is total and consistent.
    void ordersVersions()
    {
        const QList<QStringList> ascending{{u"alpha"_s, u"ALPHA"_s},
                                           {u""_s, u"0"_s, u"-.-"_s, u"0.0.0"_s},
                                           {u"0.9"_s},
                                           {u"1-alpha"_s, u"1.0alpha"_s, u"1.0.0-Alpha"_s},
                                           {u"1.0-beta.2"_s, u"1.0beta2"_s},
                                           {u"1.0-beta.11"_s},
                                           {u"1.0-rc.1"_s},
                                           {u"1"_s, u"1.0"_s, u"v1.0"_s, u" 1.0.0 "_s, u"01.00"_s},
                                           {u"1.9"_s, u"1.09"_s},
                                           {u"1.10"_s},
                                           {u"2"_s},
                                           {u"18446744073709551616"_s},
                                           {u"18446744073709551617"_s}};
        QList<std::pair<int, QString>> all;
        for (const QStringList &equal : ascending) {
            for (const QString &version : equal)
                all.emplaceBack(ascending.indexOf(equal), version);
        }
        for (const auto &[i, left] : all) {
            for (const auto &[j, right] : all)
                QVERIFY2(compareVersions(left, right) == (i <=> j),
                         qPrintable(left + u" against "_s + right));
        }
    }

    void choosesTheNewest()
    {
        // The place of the release, or -1; a release is its version and what the user reads.
        const auto chosen = [](const QStringList &releases, const QString &current) {
            QList<SUAppcastItem> items;
            for (const QString &release : releases) {
                items.append({.title = QString::number(items.size()),
                              .versionString = release.section(u'/', 0, 0),
                              .displayVersionString = release.section(u'/', 1)});
            }
            const auto update
                = newestUpdate(items, {current.section(u'/', 0, 0), current.section(u'/', 1)});
            return update ? update->title.toInt() : -1;
        };
        QCOMPARE(chosen({u"11/1.1"_s, u"12/1.2"_s, u"12.0/1.2"_s, u"9/0.9"_s}, u"10/1.0"_s), 1);
        QCOMPARE(chosen({u"10/9.9"_s, u"9/8"_s}, u"10/1.0"_s), -1);
        QCOMPARE(chosen({u"/1.1"_s, u"/0.9"_s}, u"10/1.0"_s), 0);
        // Newer than another is not enough.
        QCOMPARE(chosen({u"11/1.0"_s, u"/1.2"_s, u"8/9.9"_s}, u"10/1.0"_s), 1);
    }
};

QTEST_APPLESS_MAIN(TestAppcast)
#include "tst_appcast.moc"
