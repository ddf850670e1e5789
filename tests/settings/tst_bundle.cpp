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
    void findsOnlyWhatIsInTheFolder()
    {
        const QTemporaryDir root;
        QVERIFY(QDir(root.path()).mkpath(u"bundle/demo"_s));
        QVERIFY(QDir(root.path()).mkpath(u"bundle/folder.svg"_s));
        for (const QString &file : {u"outside"_s, u"bundle/demo/files"_s, u"bundle/a..b"_s})
            write(root.filePath(file + u".svg"_s), "<svg/>");
        const Bundle bundle(root.filePath(u"bundle"_s));
        for (const QString &name : {u"demo/files"_s, u"a..b"_s})
            QCOMPARE(bundle.pathForResource(name, u"svg"_s),
                     root.filePath(u"bundle/%1.svg"_s.arg(name)));
        for (const QString &name :
             {u"A..b"_s, u"folder"_s, u"../outside"_s, u"demo/../../outside"_s})
            QVERIFY2(!bundle.pathForResource(name, u"svg"_s), qPrintable(name));
    }

    void readsItsDictionary()
    {
        const QTemporaryDir folder;
        const auto version
            = [&] { return Bundle(folder.path()).objectForInfoDictionaryKey(u"Version"_s); };
        QVERIFY(!version().isValid());
        write(folder.filePath(u"Info.json"_s), "{\"Version\": \"1.2\"}");
        QCOMPARE(version(), QVariant(u"1.2"_s));
        for (const char *damaged : {"[\"Version\"]", "{\"Version\": \"1."}) {
            write(folder.filePath(u"Info.json"_s), damaged);
            QVERIFY2(!version().isValid(), damaged);
        }
    }
};

QTEST_GUILESS_MAIN(TestBundle)
#include "tst_bundle.moc"
