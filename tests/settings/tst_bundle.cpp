#include "settings/bundle.h"

#include <QTemporaryDir>
#include <QTest>

using namespace tovel;
using namespace Qt::StringLiterals;

namespace {

void write(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(bytes), bytes.size());
}

} // namespace

class TestBundle : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void findsOnlyWhatIsInTheFolder_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("found"); // below the root; empty for none

        QTest::newRow("a file") << u"Mark"_s << u"bundle/Mark.svg"_s;
        QTest::newRow("in a folder") << u"demo/files"_s << u"bundle/demo/files.svg"_s;
        QTest::newRow("missing") << u"Other"_s << QString();
        QTest::newRow("another case") << u"mark"_s << QString();
        QTest::newRow("a folder of that name") << u"folder"_s << QString();
        QTest::newRow("out of the bundle") << u"../outside"_s << QString();
        QTest::newRow("out by a detour") << u"demo/../../outside"_s << QString();
        QTest::newRow("dots within a name") << u"a..b"_s << u"bundle/a..b.svg"_s;
    }

    void findsOnlyWhatIsInTheFolder()
    {
        QFETCH(const QString, name);
        QFETCH(const QString, found);
        const QTemporaryDir root;
        QVERIFY(QDir(root.path()).mkpath(u"bundle/demo"_s));
        QVERIFY(QDir(root.path()).mkpath(u"bundle/folder.svg"_s));
        for (const QString &file :
             {u"outside"_s, u"bundle/Mark"_s, u"bundle/demo/files"_s, u"bundle/a..b"_s})
            write(root.filePath(file + u".svg"_s), "<svg/>");

        const auto path = Bundle(root.filePath(u"bundle"_s)).pathForResource(name, u"svg"_s);
        QCOMPARE(path.value_or(QString()), found.isEmpty() ? QString() : root.filePath(found));
    }

    void readsItsDictionary_data()
    {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<QVariant>("version");

        QTest::newRow("a text") << QByteArray("{\"Version\": \"1.2\"}") << QVariant(u"1.2"_s);
        QTest::newRow("a number") << QByteArray("{\"Version\": 7}") << QVariant(7.0);
        QTest::newRow("without the key") << QByteArray("{\"version\": \"1\"}") << QVariant();
        QTest::newRow("no object") << QByteArray("[\"Version\"]") << QVariant();
        QTest::newRow("cut off") << QByteArray("{\"Version\": \"1.") << QVariant();
        QTest::newRow("empty") << QByteArray("") << QVariant();
        QTest::newRow("missing") << QByteArray() << QVariant();
    }

    void readsItsDictionary()
    {
        QFETCH(const QByteArray, file);
        QFETCH(const QVariant, version);
        const QTemporaryDir folder;
        if (!file.isNull())
            write(folder.filePath(u"Info.json"_s), file);

        const QVariant value = Bundle(folder.path()).objectForInfoDictionaryKey(u"Version"_s);
        QCOMPARE(value.isValid(), version.isValid());
        QCOMPARE(value, version);
    }

    void theProgramHasOneWithItsVersion()
    {
        const auto value
            = [](const QString &key) { return mainBundle().objectForInfoDictionaryKey(key); };
        QCOMPARE(value(u"CFBundleIdentifier"_s), QVariant(u"org.tovel.Tovel"_s));
        QCOMPARE(value(u"CFBundleShortVersionString"_s), QVariant(QStringLiteral(TOVEL_VERSION)));
        QCOMPARE(value(u"CFBundleVersion"_s).typeId(), QMetaType::QString);
        QCOMPARE(value(u"SUEnableAutomaticChecks"_s), QVariant(false));
    }
};

QTEST_GUILESS_MAIN(TestBundle)
#include "tst_bundle.moc"
