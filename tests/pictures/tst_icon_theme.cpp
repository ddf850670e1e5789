#include "pictures/icon_theme.h"
#include "support/test.h"

class TestIconTheme final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsAnIndex()
    {
        const IconTheme theme = parseIconTheme("[Icon Theme]\n"
                                               "Name=Example\n"
                                               "Inherits=parent,other\n"
                                               "Directories=fixed, any/apps,near,double,none,bad\n"
                                               "ScaledDirectories=scaled\n"
                                               "[fixed]\nSize=16\nType=Fixed\n"
                                               "#[fixed]\n#Size=17\n"
                                               "[any/apps]\nSize=48\nType=Scalable\nMinSize=8\n"
                                               "MaxSize=256\n"
                                               "[near]\nSize = 32\nThreshold=4\n"
                                               "[double]\nSize=24\nScale=2\n"
                                               "[bad]\nSize=-1\n"
                                               "[unlisted]\nSize=64\n"
                                               "[scaled]\nSize=16\nScale=3\nType=Fixed\n");
        QCOMPARE(theme.parents, QStringList({u"parent"_s, u"other"_s}));
        const QList<IconFolder> folders{{u"fixed"_s, 16, 16},
                                        {u"any/apps"_s, 8, 256},
                                        {u"near"_s, 28, 36},
                                        {u"double"_s, 44, 52},
                                        {u"scaled"_s, 48, 48}};
        QVERIFY(theme.folders == folders);
        QVERIFY(parseIconTheme("") == IconTheme());
    }

    void findsTheBestPicture()
    {
        const QTemporaryDir root;
        const QStringList files{
            u"a/16/app.png"_s,          u"a/48/app.png"_s,      u"a/48/app.svg"_s,
            u"a/256/app.png"_s,         u"a/16/small.png"_s,    u"b/48/parent.xpm"_s,
            u"hicolor/48/parent.png"_s, u"hicolor/48/hi.png"_s, u"loose.png"_s,
            u"b/48/app.png"_s,          u"c/48/hi.png"_s};
        for (const QString &name : files) {
            QVERIFY(QDir(root.path()).mkpath(QFileInfo(name).path()));
            QVERIFY(QFile(root.filePath(name)).open(QIODevice::WriteOnly));
        }
        for (const auto &[theme, inherits] :
             {std::pair("a", "hicolor,b"), {"b", "a"}, {"hicolor", ""}, {"c", ""}}) {
            QFile index(root.filePath(QLatin1StringView(theme) + u"/index.theme"_s));
            QVERIFY(index.open(QIODevice::WriteOnly));
            index.write(QByteArray("[Icon Theme]\nInherits=") + inherits
                        + "\nDirectories=256,48,16\n");
            for (const char *size : {"16", "48", "256"})
                index.write(QByteArray("[") + size + "]\nType=Fixed\nSize=" + size + '\n');
        }
        const auto found = [&](const QString &name, int pixels, const QString &theme) {
            const QString path
                = findIcon(name, {theme}, pixels, {u"/no/such/folder"_s, root.path()});
            return path.isEmpty() ? path : QDir(root.path()).relativeFilePath(path);
        };
        QCOMPARE(found(u"app"_s, 16, u"a"_s), u"a/16/app.png"_s);
        QCOMPARE(found(u"app"_s, 36, u"a"_s), u"a/48/app.png"_s);
        QCOMPARE(found(u"app"_s, 500, u"a"_s), u"a/256/app.png"_s);
        QCOMPARE(found(u"small"_s, 36, u"a"_s), u"a/16/small.png"_s);
        QCOMPARE(found(u"parent"_s, 36, u"a"_s), u"b/48/parent.xpm"_s);
        QCOMPARE(found(u"hi"_s, 36, u"b"_s), u"hicolor/48/hi.png"_s);
        QCOMPARE(found(u"app-of-another-kind"_s, 36, u"b"_s), u"b/48/app.png"_s);
        QCOMPARE(found(u"loose"_s, 36, u"none"_s), u"loose.png"_s);
        for (const QString &none :
             {u""_s, u"none"_s, u"../a/16/app"_s, u"app-"_s.repeated(2).prepend(u'-')})
            QCOMPARE(found(none, 36, u"a"_s), QString());
    }
};

QTEST_APPLESS_MAIN(TestIconTheme)
#include "tst_icon_theme.moc"
