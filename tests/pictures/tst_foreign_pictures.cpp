#include "pictures/foreign_pictures.h"
#include "support/test.h"

#include <QStandardPaths>

#include <sys/stat.h>

using namespace std::chrono_literals;

namespace {

constexpr int deadline = 12000; // milliseconds
// Short, but long enough for a good picture on a busy machine.
constexpr PictureTimes times{.patience = 600ms, .idle = 300ms};

const QByteArray svg = "<svg xmlns='http://www.w3.org/2000/svg' "
                       "xmlns:xlink='http://www.w3.org/1999/xlink' width='20' height='10'>";
const QByteArray rectangle = "<rect width='9' height='9'/></svg>";
const QByteArray bitmap = "P1 4 2 1 1 1 1 1 1 1 1";

QByteArray compressed(const QByteArray &bytes)
{
    QProcess gzip;
    gzip.start(u"gzip"_s, {u"-c"_s});
    gzip.write(bytes);
    gzip.closeWriteChannel();
    if (!gzip.waitForFinished() || gzip.exitCode() != 0)
        qFatal("gzip does not work");
    return gzip.readAllStandardOutput();
}

QByteArray utf16(const QString &text)
{
    return QByteArray(reinterpret_cast<const char *>(text.utf16()), 2 * text.size());
}

// The picture that comes, within the deadline; one of a side of -1 when nobody could be asked.
QSize sizeOf(ForeignPictures &pictures, const QString &source, QImage *image = nullptr)
{
    std::optional<QSize> size;
    pictures.request({source, {u"odd"_s}, 54}, [&](const std::optional<QImage> &picture) {
        size = picture ? picture->size() : QSize(-1, -1);
        if (picture && image)
            *image = *picture;
    });
    if (!QTest::qWaitFor([&] { return size.has_value(); }, deadline))
        qFatal("no answer about %s", qPrintable(source));
    return *size;
}

} // namespace

class TestForeignPictures final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(m_folder.isValid());
        qputenv("XDG_DATA_HOME", QFile::encodeName(m_folder.path()));
        QDir().mkpath(path(u"icons/hicolor/48/apps"_s));
        write(u"icons/hicolor/index.theme"_s,
              "[Icon Theme]\nDirectories=48/apps\n[48/apps]\nSize=48\n");
        write(u"icons/hicolor/48/apps/good.png"_s, bitmap);
        QDir().mkpath(path(u"icons/odd"_s));
        for (const QString &pipe :
             {u"pipe"_s, u"icons/odd/index.theme"_s, u"icons/hicolor/48/apps/piped.png"_s})
            QCOMPARE(::mkfifo(QFile::encodeName(path(pipe)).constData(), 0600), 0);
        write(u"other.pbm"_s, bitmap);
        write(u"endless"_s,
              svg + "<g id='a'>" + QByteArray("<circle r='9'/>").repeated(2000) + "</g>"
                  + QByteArray("<use xlink:href='#a'/>").repeated(100000) + "</svg>");
    }

    void picturesAreFittedOrMissing_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QSize>("size");
        const auto row = [](const char *name, const QByteArray &content, const QSize &size) {
            QTest::newRow(name) << content << size;
        };
        const QSize wide(54, 27);
        row("bitmap", bitmap, wide);
        row("drawing", svg + rectangle, wide);
        row("compressed drawing", compressed(svg + rectangle), wide);
        row("with a document type",
            "<?xml version='1.0'?><!DOCTYPE svg [<!ENTITY a 'b'>]>" + svg + rectangle, wide);
        row("thin", "P1 600 1" + QByteArray(" 1").repeated(600), QSize(54, 1));
        row("huge bitmap", "P1 100000 100000 1 1", QSize());
        row("damaged", "\x89PNG\r\n\x1a\n and no more", QSize());
        row("damaged and compressed", compressed(svg + rectangle).first(40), QSize());
        row("compressed bitmap", compressed(bitmap), QSize());
        row("large file", QByteArray(9 << 20, ' '), QSize());
    }

    void picturesAreFittedOrMissing()
    {
        QFETCH(const QByteArray, content);
        QFETCH(const QSize, size);
        QCOMPARE(sizeOf(m_pictures, write(u"picture"_s, content)),
                 size.isValid() ? size : QSize(0, 0));
    }

    void nothingIsPaintedOfOtherFiles_data()
    {
        QTest::addColumn<QByteArray>("content");
        const QByteArray other = QFile::encodeName(path(u"other.pbm"_s));
        const auto rows = [](const char *name, const QByteArray &target) {
            const QByteArray image = "image width='20' height='10' ";
            const QByteArray plain = svg + "<" + image + "xlink:href='" + target + "'/></svg>";
            const auto row = [&](const char *how, const QByteArray &content) {
                QTest::addRow("%s, %s", name, how) << content;
            };
            row("plain", plain);
            row("namespace prefix",
                "<s:svg xmlns:s='http://www.w3.org/2000/svg' width='20' height='10' "
                "xmlns:x='http://www.w3.org/1999/xlink'><s:"
                    + image + "x:href='" + target + "'/></s:svg>");
            row("bracket in an attribute",
                svg + "<" + image + "id='>' xlink:href='" + target + "'/></svg>");
            row("compressed", compressed(plain));
            row("UTF-16",
                utf16(u"\ufeff<?xml version='1.0' encoding='UTF-16'?>"_s
                      + QString::fromUtf8(plain)));
            row("style sheet",
                "<?xml version='1.0'?><?xml-stylesheet type='text/css' href='" + target + "'?>"
                    + svg + "</svg>");
            row("external entity",
                "<!DOCTYPE svg [<!ENTITY e SYSTEM '" + target + "'>]>" + svg
                    + "<text>&e;</text></svg>");
            row("external document type",
                "<!DOCTYPE svg SYSTEM '" + target + "'>" + svg + "</svg>");
        };
        rows("picture", other);
        rows("pipe", QFile::encodeName(path(u"pipe"_s)));
    }

    void nothingIsPaintedOfOtherFiles()
    {
        QFETCH(const QByteArray, content);
        QImage image;
        sizeOf(m_pictures, write(u"picture"_s, content), &image);
        for (int i = 0; i < image.width() * image.height(); ++i)
            QCOMPARE(image.pixel(i % image.width(), i / image.width()), 0U);
        QCOMPARE(sizeOf(m_pictures, u"good"_s), QSize(54, 27));
    }

    void hostilePicturesHoldUpNobody_data()
    {
        QTest::addColumn<QString>("source");
        const auto row = [this](const char *name, const QByteArray &content) {
            QTest::newRow(name) << write(QString::fromLatin1(name), content);
        };
        QTest::newRow("pipe") << path(u"pipe"_s);
        QTest::newRow("pipe in a theme") << u"piped"_s;
        QTest::newRow("device") << u"/dev/zero"_s;
        QTest::newRow("folder") << m_folder.path();
        QTest::newRow("long name") << QString(100000, u'a');
        row("decompression bomb", compressed(svg + QByteArray(64 << 20, ' ') + rectangle));
        row("bomb in a bomb", compressed(compressed(svg + QByteArray(64 << 20, ' ') + rectangle)));
        row("nested deeply", svg + QByteArray("<g>").repeated(300000));
        QByteArray laughs = "<!DOCTYPE svg [<!ENTITY a0 'ha'>";
        QByteArray uses = svg + "<defs><g id='a0'>" + "<rect width='9' height='9'/></g>";
        for (int i = 1; i < 30; ++i) {
            const QByteArray before = QByteArray::number(i - 1);
            const QByteArray name = "a" + QByteArray::number(i);
            laughs += "<!ENTITY " + name + " '" + ("&a" + before + ";").repeated(10) + "'>";
            uses += "<g id='" + name + "'>" + ("<use xlink:href='#a" + before + "'/>").repeated(4)
                + "</g>";
        }
        row("entities", laughs + "]>" + svg + "<text>&a29;</text></svg>");
        row("references", uses + "</defs><use xlink:href='#a29'/></svg>");
        row("large",
            svg + "<path d='M0 5" + QByteArray("C 20 5 0 6 9 9 ").repeated(200000)
                + "' fill='none' stroke='black' stroke-dasharray='0.01'/></svg>");
    }

    void hostilePicturesHoldUpNobody()
    {
        QFETCH(const QString, source);
        QImage image;
        QVERIFY(sizeOf(m_pictures, source, &image) != QSize(-1, -1));
        QCOMPARE(sizeOf(m_pictures, u"good"_s), QSize(54, 27));
    }

    void picturesStandInLineBehindALateOne()
    {
        QStringList order;
        const QString late = path(u"endless"_s);
        for (const QString &source : {late, u"good"_s, u"none"_s}) {
            m_pictures.request({source, {}, 30},
                               [&order, source](const std::optional<QImage> &picture) {
                                   order += QFileInfo(source).fileName()
                                       + (picture->isNull() ? u" none"_s : u""_s);
                               });
        }
        QCOMPARE(order, QStringList());
        QTRY_COMPARE_WITH_TIMEOUT(order.size(), 3, deadline);
        QCOMPARE(order, QStringList({u"good"_s, u"none none"_s, u"endless none"_s}));
    }

    void withoutTheProgramNobodyIsAskedForAWhile()
    {
        // It is missing, ends at once, or says something else.
        for (const QString &program : {path(u"none"_s), u"/bin/true"_s, u"/bin/pwd"_s}) {
            ForeignPictures pictures(program);
            QCOMPARE(sizeOf(pictures, u"good"_s), QSize(-1, -1));
            // Whoever asks again at once is told so, and no program is started for it.
            const auto *process = pictures.findChild<QProcess *>();
            int starts = 0;
            connect(process, &QProcess::stateChanged, process, [&] { ++starts; });
            QCOMPARE(sizeOf(pictures, u"good"_s), QSize(-1, -1));
            QCOMPARE(starts, 0);
        }
    }

    void aProgramThatHangsIsKilled()
    {
        const QString program = write(u"hanging"_s, "#!/bin/sh\nprintf TvP1\nexec sleep 600\n");
        QVERIFY(QFile::setPermissions(program, QFile::ReadOwner | QFile::ExeOwner));
        ForeignPictures pictures(program, nullptr, times);
        QCOMPARE(sizeOf(pictures, u"good"_s), QSize(0, 0));
        QCOMPARE(pictures.findChild<QProcess *>()->exitStatus(), QProcess::CrashExit);
    }

    void theProgramEndsWhenItIsNotNeeded()
    {
        QCOMPARE(sizeOf(m_pictures, u"good"_s), QSize(54, 27));
        const auto *process = m_pictures.findChild<QProcess *>();
        QCOMPARE(process->state(), QProcess::Running);
        QTRY_COMPARE(process->state(), QProcess::NotRunning);
        QCOMPARE(process->exitStatus(), QProcess::NormalExit);
        QCOMPARE(sizeOf(m_pictures, u"good"_s), QSize(54, 27));
    }

private:
    QString path(const QString &name) const { return m_folder.filePath(name); }

    QString write(const QString &name, const QByteArray &content) const
    {
        QFile file(path(name));
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
            qFatal("%s cannot be written", qPrintable(name));
        return file.fileName();
    }

    const QTemporaryDir m_folder;
    ForeignPictures m_pictures{QString::fromUtf8(TOVEL_ICONS), nullptr, times};
};

QTEST_GUILESS_MAIN(TestForeignPictures)
#include "tst_foreign_pictures.moc"
