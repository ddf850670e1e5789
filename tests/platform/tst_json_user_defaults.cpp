#include "platform/linux/json_user_defaults.h"
#include "platform/linux/json_value.h"

#include <QDebug>
#include <QDir>
#include <QLockFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <cmath>
#include <cstdio>
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
        {u"one"_s, 1LL},
        {u"lowest"_s, std::numeric_limits<qint64>::min()},
        {u"highest"_s, std::numeric_limits<quint64>::max()},
        {u"fraction"_s, 0.1},
        {u"whole real"_s, 5.0},
        {u"minus zero"_s, -0.0},
        {u"infinite"_s, std::numeric_limits<double>::infinity()},
        {u"text"_s, u"quote \" line\n nul \0 snow ☃ 🐑"_s},
        {u"empty text"_s, QString()},
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

// What the executable does when it is started as another process.
int childRole(const QStringList &arguments)
{
    JsonUserDefaults defaults(arguments[2]);
    if (arguments[1] == u"--check") {
        const QVariantMap expected = everyKind();
        for (auto it = expected.cbegin(); it != expected.cend(); ++it) {
            if (described(defaults.object(it.key())) != described(it.value()))
                qFatal("%s differs", qPrintable(it.key()));
        }
        return 0;
    }
    for (int number = 0; number < arguments[4].toInt(); ++number) {
        if (!defaults.setObject(arguments[3] + QString::number(number), number))
            qFatal("%s", qPrintable(defaults.errorString()));
        std::printf("%d\n", number);
        std::fflush(stdout);
    }
    return 0;
}

void startChild(QProcess &process, const QStringList &arguments)
{
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start(QCoreApplication::applicationFilePath(), arguments);
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

    void keepsEveryKindAcrossProcesses()
    {
        const QVariantMap kinds = everyKind();
        JsonUserDefaults defaults(m_path);
        for (auto it = kinds.cbegin(); it != kinds.cend(); ++it) {
            QVERIFY2(defaults.setObject(it.key(), it.value()), qPrintable(defaults.errorString()));
            QCOMPARE(described(defaults.object(it.key())), described(it.value()));
        }
        QVERIFY(defaults.setObject(u"texts"_s, QStringList{u"a"_s}));
        QCOMPARE(defaults.texts(u"texts"_s), QStringList{u"a"_s});
        QVERIFY(std::signbit(defaults.object(u"minus zero"_s)->toDouble()));

        QProcess other;
        startChild(other, {u"--check"_s, m_path});
        QVERIFY(other.waitForFinished());
        QCOMPARE(other.exitCode(), 0);

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
            QVERIFY(defaults.errorString().contains(u"key"));
            QCOMPARE(defaults.object(u"key"_s), QVariant(u"before"_s));
            QCOMPARE(contentOf(m_path), before);
        }
        QVERIFY(defaults.setObject(u"key"_s, u"after"_s));
        QCOMPARE(defaults.errorString(), QString());
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
        QVERIFY(defaults.removeObject(u"absent"_s));
        QVERIFY(!QFile::exists(m_path));
        QVERIFY(defaults.setObject(u"key"_s, 1));
        const auto written = inode();
        QVERIFY(defaults.setObject(u"key"_s, 1));
        QVERIFY(defaults.removeObject(u"absent"_s));
        QCOMPARE(inode(), written);
        QVERIFY(defaults.setObject(u"key"_s, true)); // equal to 1 for QVariant
        QVERIFY(inode() != written);
        QCOMPARE(defaults.boolean(u"key"_s), true);
        QVERIFY(defaults.removeObject(u"key"_s));
        QVERIFY(!defaults.object(u"key"_s));
        QCOMPARE(parseDefaults(contentOf(m_path)), QVariantMap());
    }

    void seesTheWritesOfOthers()
    {
        JsonUserDefaults mine(m_path);
        JsonUserDefaults theirs(m_path);
        QVERIFY(!mine.object(u"key"_s));
        for (int number = 0; number < 20; ++number) {
            QVERIFY(theirs.setObject(u"key"_s, number % 10));
            QCOMPARE(mine.object(u"key"_s), QVariant(number % 10));
        }
        QVERIFY(QFile::remove(m_path));
        QVERIFY(!mine.object(u"key"_s));
        QCOMPARE(mine.errorString(), QString());
    }

    void losesNothingBetweenTwoWriters()
    {
        constexpr int count = 60;
        QProcess first;
        QProcess second;
        startChild(first, {u"--write"_s, m_path, u"first"_s, QString::number(count)});
        startChild(second, {u"--write"_s, m_path, u"second"_s, QString::number(count)});
        QVERIFY(first.waitForFinished(60'000) && second.waitForFinished(60'000));
        QCOMPARE(first.exitCode() + second.exitCode(), 0);

        const JsonUserDefaults defaults(m_path);
        for (int number = 0; number < count; ++number) {
            QCOMPARE(defaults.object(u"first"_s + QString::number(number)), QVariant(number));
            QCOMPARE(defaults.object(u"second"_s + QString::number(number)), QVariant(number));
        }
    }

    void keepsWhatWasAcknowledgedBeforeAKill()
    {
        JsonUserDefaults defaults(m_path);
        for (int round = 1; round <= 3; ++round) {
            const QString prefix = u"round %1 "_s.arg(round);
            QProcess writer;
            startChild(writer, {u"--write"_s, m_path, prefix, u"100000"_s});
            QByteArray output;
            while (output.count('\n') < 7 * round && writer.waitForReadyRead())
                output += writer.readAllStandardOutput();
            writer.kill();
            QVERIFY(writer.waitForFinished());
            output += writer.readAllStandardOutput();

            const auto acknowledged = output.count('\n');
            QVERIFY(acknowledged >= 7 * round);
            for (int number = 0; number < acknowledged; ++number)
                QCOMPARE(defaults.object(prefix + QString::number(number)), QVariant(number));
            // Whatever lock the dead process left does not stand in the way.
            QVERIFY2(defaults.setObject(u"own"_s, round), qPrintable(defaults.errorString()));
        }
    }

    void setsADamagedFileAside_data()
    {
        QTest::addColumn<QByteArray>("content");
        const QByteArray deep
            = QByteArray(maximumDefaultsDepth + 2, '[') + QByteArray(maximumDefaultsDepth + 2, ']');
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("cut short") << QByteArray("{\"key\": 1, \"ot");
        QTest::newRow("not an object") << QByteArray("[1]");
        QTest::newRow("null") << QByteArray("{\"key\": null}");
        QTest::newRow("malformed bytes") << QByteArray("{\"key\": {\"$data\": \"?\"}}");
        QTest::newRow("marker of another kind") << QByteArray("{\"key\": {\"$real\": 1}}");
        QTest::newRow("nested too deeply") << "{\"key\": " + deep + '}';
        QTest::newRow("too large") << "{\"key\": 1}" + QByteArray(maximumDefaultsSize, ' ');
    }

    void setsADamagedFileAside()
    {
        QFETCH(const QByteArray, content);
        const QString path = m_folder->filePath(u"settings.json"_s);
        putContent(path, content);
        putContent(path + u".damaged-1"_s, "kept from before");

        JsonUserDefaults defaults(path);
        QVERIFY(!defaults.object(u"key"_s));
        QVERIFY(defaults.errorString().contains(path));
        QVERIFY(defaults.removeObject(u"key"_s));
        QCOMPARE(contentOf(path), content);

        QVERIFY(defaults.setObject(u"new"_s, 1));
        QCOMPARE(defaults.errorString(), QString());
        QCOMPARE(contentOf(path + u".damaged-1"_s), "kept from before");
        QCOMPARE(contentOf(path + u".damaged-2"_s), content);
        QCOMPARE(parseDefaults(contentOf(path)), QVariantMap({{u"new"_s, 1}}));
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
        QVERIFY(!defaults.setObject(u"gone"_s, 1));
        QVERIFY(!defaults.removeObject(u"gone"_s));
        QCOMPARE(defaults.object(u"key"_s), QVariant(1));
        QVERIFY(!defaults.object(u"gone"_s));
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
        QVERIFY(defaults.setObject(u"other"_s, 3));
        QCOMPARE(JsonUserDefaults(m_path).object(u"key"_s), QVariant(2));
    }

private:
    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_path;
};

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = application.arguments();
    if (arguments.size() > 2 && (arguments[1] == u"--check" || arguments[1] == u"--write"))
        return childRole(arguments);
    TestJsonUserDefaults test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_json_user_defaults.moc"
