#include "updater/update_choice.h"
#include "updater/version_order.h"

#include <QTest>

using namespace tovel;
using namespace Qt::StringLiterals;

class TestVersionOrder : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // Every pair of the list, which also shows that the order is total and consistent.
    void ordersVersions()
    {
        const QList<QStringList> ascending{
            {u"alpha"_s, u"ALPHA"_s},
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
            {u"18446744073709551617"_s},
        };
        for (qsizetype i = 0; i < ascending.size(); ++i) {
            for (qsizetype j = 0; j < ascending.size(); ++j) {
                for (const QString &left : ascending[i]) {
                    for (const QString &right : ascending[j]) {
                        QVERIFY2(compareVersions(left, right) == (i <=> j),
                                 qPrintable(left + u" against "_s + right));
                    }
                }
            }
        }
    }

    void choosesTheNewest()
    {
        // The number of the release, or -1; a release is its version and what the user reads.
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
        QCOMPARE(chosen({u"11/1.1"_s, u"12/1.2"_s, u"9/0.9"_s}, u"10/1.0"_s), 1);
        QCOMPARE(chosen({u"12/1.2"_s, u"12.0/1.2"_s}, u"10/1.0"_s), 0); // the first of equals
        QCOMPARE(chosen({u"10/9.9"_s, u"9/8"_s}, u"10/1.0"_s), -1);
        QCOMPARE(chosen({u"/1.1"_s, u"/0.9"_s}, u"10/1.0"_s), 0);
        QCOMPARE(chosen({u"9/1.1"_s}, u"/1.0"_s), 0);
        QCOMPARE(chosen({u"9/"_s}, u"/10"_s), -1);
        // Newer than another is not enough.
        QCOMPARE(chosen({u"11/1.0"_s, u"/1.2"_s, u"8/9.9"_s}, u"10/1.0"_s), 1);
        QCOMPARE(chosen({}, u"10/1.0"_s), -1);
    }
};

QTEST_APPLESS_MAIN(TestVersionOrder)
#include "tst_version_order.moc"
