#include "platform/linux/json_user_defaults.h"
#include "platform/linux/json_value.h"

#include <QDebug>
#include <QLockFile>
#include <QTemporaryDir>
#include <QTest>

#include <limits>

#include <sys/stat.h>

using namespace tovel;
using namespace Qt::StringLiterals;

namespace {

// A value of every kind that can be stored.
QVariantMap everyKind()
{
    QVariantMap kinds{
        {u"true"_s, true},
        {u"lowest"_s, std::numeric_limits<qint64>::min()},
        {u"highest"_s, std::numeric_limits<quint64>::max()},
        {u"fraction"_s, 0.1},
        {u"whole real"_s, 5.0},
        {u"infinite"_s, std::numeric_limits<double>::infinity()},
        {u"text"_s, u"quote \" line\n nul \0 snow ☃ 🐑"_s},
        {u"bytes"_s, QByteArray("\0\xff{}", 4)},
        {u"list"_s, QVariantList{1LL, 1.0, u"1"_s, true, QVariantList()}},
        {u"posing as bytes"_s, QVariantMap{{u"$data"_s, u"AAAA"_s}}},
        {u"posing twice"_s, QVariantMap{{u"$dictionary"_s, QVariantMap{{u"$real"_s, 1LL}}}}}};
    kinds.insert(u"dictionary"_s, QVariantMap(kinds));
    kinds.insert(u"$data"_s, u"a key like any other"_s);
    return kinds;
}

// Kinds and values; QVariant's own comparison takes 1 for true.
QString described(const std::optional<QVariant> &value)
{
    return QDebug::toString(value.value_or(QVariant()));
}

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void putContent(const QString &path, const QByteArray &content)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(content), content.size());
}

} // namespace

class TestJsonUserDefaults final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        m_path = m_folder->filePath(u"new/folders/settings.json"_s);
    }

    void keepsEveryKind()
    {
        const QVariantMap kinds = everyKind();
        JsonUserDefaults defaults(m_path);
        for (auto it = kinds.cbegin(); it != kinds.cend(); ++it) {
            QVERIFY2(defaults.setObject(it.key(), it.value()), qPrintable(defaults.errorString()));
            QCOMPARE(described(JsonUserDefaults(m_path).object(it.key())), described(it.value()));
        }

        struct stat status
        {
        };
        QCOMPARE(::stat(QFile::encodeName(m_path).constData(), &status), 0);
        QCOMPARE(status.st_mode & 0777, 0600U);
        QCOMPARE(::stat(qPrintable(m_folder->filePath(u"new"_s)), &status), 0);
        QCOMPARE(status.st_mode & 0777, 0700U);
    }

    void refusesOtherKinds()
    {
        QVariant deep = 1;
        for (int depth = 0; depth <= maximumDefaultsDepth; ++depth)
            deep = QVariantList{deep};
        JsonUserDefaults defaults(m_path);
        QVERIFY(defaults.setObject(u"key"_s, u"before"_s));
        const QByteArray before = contentOf(m_path);
        for (const QVariant &value : {QVariant(), QVariant(QVariantList{1, QDate(2024, 1, 1)}),
                                      deep, QVariant(QString(maximumDefaultsSize, u'x'))}) {
            QVERIFY(!defaults.setObject(u"key"_s, value));
            QCOMPARE(defaults.object(u"key"_s), QVariant(u"before"_s));
            QCOMPARE(contentOf(m_path), before);
        }
    }

    void writesOnlyChanges()
    {
        const auto inode = [this] {
            struct stat status
            {
            };
            return ::stat(QFile::encodeName(m_path).constData(), &status) == 0 ? status.st_ino : 0;
        };
        JsonUserDefaults defaults(m_path);
        QVERIFY(defaults.setObject(u"key"_s, 1));
        const auto written = inode();
        QVERIFY(defaults.setObject(u"key"_s, 1));
        QVERIFY(defaults.removeObject(u"absent"_s));
        QCOMPARE(inode(), written);
        QVERIFY(defaults.setObject(u"key"_s, true)); // equal to 1 for QVariant
        QVERIFY(inode() != written); // replaced as a whole, never half written
        QCOMPARE(defaults.boolean(u"key"_s), true);
        for (int number = 0; number < 20; ++number) { // what others write is seen
            QVERIFY(JsonUserDefaults(m_path).setObject(u"key"_s, number % 10));
            QCOMPARE(defaults.object(u"key"_s), QVariant(number % 10));
        }
    }

    void setsADamagedFileAside()
    {
        const QByteArray deep
            = QByteArray(maximumDefaultsDepth + 2, '[') + QByteArray(maximumDefaultsDepth + 2, ']');
        const QByteArray contents[] = {
            {},
            "{\"key\": 1, \"ot",
            "{\"key\": {\"$data\": \"?\"}}",
            "{\"key\": {\"$real\": 1}}",
            "{\"key\": " + deep + '}',
            "{\"key\": 1}" + QByteArray(maximumDefaultsSize, ' '),
        };
        for (const QByteArray &content : contents) {
            init();
            const QString path = m_folder->filePath(u"settings.json"_s);
            putContent(path, content);
            putContent(path + u".damaged-1"_s, "kept from before");

            JsonUserDefaults defaults(path);
            QVERIFY2(!defaults.object(u"key"_s), content.left(99));
            QVERIFY(defaults.errorString().contains(path));
            QVERIFY(defaults.removeObject(u"key"_s));
            QCOMPARE(contentOf(path), content);
            QVERIFY(defaults.setObject(u"new"_s, 1));
            QCOMPARE(defaults.errorString(), QString());
            QCOMPARE(contentOf(path + u".damaged-1"_s), "kept from before");
            QCOMPARE(contentOf(path + u".damaged-2"_s), content);
            QCOMPARE(parseDefaults(contentOf(path)), QVariantMap({{u"new"_s, 1}}));
        }
    }

    void keepsValuesInMemoryWhenTheyCannotBeWritten()
    {
        // Permissions would not stop a test that runs as root; a file in the place of a folder
        // does.
        const QString obstacle = m_folder->filePath(u"new"_s);
        putContent(obstacle, "in the way");
        JsonUserDefaults defaults(m_path);
        QVERIFY(!defaults.setObject(u"key"_s, 1));
        QVERIFY(defaults.errorString().contains(obstacle));
        QCOMPARE(defaults.object(u"key"_s), QVariant(1));
        QVERIFY(!JsonUserDefaults(m_path).object(u"key"_s));

        QVERIFY(QFile::remove(obstacle));
        QVERIFY(defaults.setObject(u"other"_s, 2));
        QCOMPARE(parseDefaults(contentOf(m_path)), QVariantMap({{u"key"_s, 1}, {u"other"_s, 2}}));

        // What cannot be read is not replaced either.
        JsonUserDefaults onFolder(m_folder->path());
        QVERIFY(!onFolder.setObject(u"key"_s, 1));
        QVERIFY(!onFolder.errorString().isEmpty());
    }

    void givesUpOnALockThatIsHeld()
    {
        JsonUserDefaults defaults(m_path);
        QVERIFY(defaults.setObject(u"key"_s, 1));
        QLockFile lock(m_path + u".lock"_s);
        QVERIFY(lock.tryLock());
        QVERIFY(!defaults.setObject(u"key"_s, 2));
        QVERIFY(
            defaults.errorString().contains(QString::number(QCoreApplication::applicationPid())));
        QCOMPARE(defaults.object(u"key"_s), QVariant(2));
        QCOMPARE(JsonUserDefaults(m_path).object(u"key"_s), QVariant(1));
        lock.unlock();
        // What a process leaves that was killed while it took the lock.
        putContent(m_path + u".lock"_s, QByteArray());
        QTRY_VERIFY(defaults.setObject(u"other"_s, 3));
        QCOMPARE(JsonUserDefaults(m_path).object(u"key"_s), QVariant(2));
    }

private:
    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_path;
};

QTEST_GUILESS_MAIN(TestJsonUserDefaults)
#include "tst_json_user_defaults.moc"
