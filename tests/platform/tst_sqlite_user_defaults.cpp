#include "failing_file_system.h"
#include "platform/linux/defaults/json_value.h"
#include "platform/linux/defaults/sqlite_user_defaults.h"
#include "support/test.h"

#include <QElapsedTimer>

#include <csignal>

#include <fcntl.h>
#include <sched.h>
#include <sqlite3.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace std::chrono_literals;

Q_DECLARE_METATYPE(std::function<void()>)

namespace {

using Defaults = SqliteUserDefaults;
using End = FailingFileSystem::End;

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return QFileInfo(path).isFile() && file.open(QIODevice::ReadOnly) ? file.readAll()
                                                                      : QByteArray();
}

// In place, as a copy over a file does it.
void putContent(const QString &path, const QByteArray &content)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(content), content.size());
}

void makePipe(const QString &path) { QCOMPARE(::mkfifo(qPrintable(path), 0600), 0); }

// Has another program change the file.
void runSql(const QString &path, const QByteArray &sql)
{
    sqlite3 *database = nullptr;
    QCOMPARE(sqlite3_open(qPrintable(path), &database), SQLITE_OK);
    QCOMPARE(sqlite3_exec(database, sql.constData(), nullptr, nullptr, nullptr), SQLITE_OK);
    sqlite3_close(database);
}

// Runs it in a process of its own; the exit status, or minus the signal that ended it.
int inProcess(const std::function<void()> &work)
{
    const pid_t child = ::fork();
    if (child == 0) {
        work();
        ::_exit(0);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status);
}

// Puts a file system of a few pages there, for this process alone; false where nobody may.
bool mountSmallDisk(const QString &folder)
{
    const uid_t user = ::getuid();
    const gid_t group = ::getgid();
    if (user != 0) {
        if (::unshare(CLONE_NEWUSER) != 0)
            return false;
        putContent(u"/proc/self/setgroups"_s, "deny");
        putContent(u"/proc/self/gid_map"_s, "0 " + QByteArray::number(group) + " 1");
        putContent(u"/proc/self/uid_map"_s, "0 " + QByteArray::number(user) + " 1");
    }
    return ::unshare(CLONE_NEWNS) == 0
        && ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0
        && ::mount("small", qPrintable(folder), "tmpfs", 0, "size=64k") == 0;
}

DefaultsOutcome store(Defaults &defaults, const QString &key, const QVariant &value)
{
    return defaults.setObject(key, value, DefaultsAuthor::User);
}

DefaultsOutcome storeAll(Defaults &defaults, const DefaultsChanges &changes)
{
    return defaults.change([&](const QVariantMap &) { return changes; }, DefaultsAuthor::User);
}

// A text that needs a page of its own.
QString large(char16_t letter) { return QString(6000, letter); }

} // namespace

class TestSqliteUserDefaults final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        m_path = m_folder->filePath(u"a/b/settings.sqlite"_s);
        m_json = m_folder->filePath(u"a/b/settings.json"_s);
        FailingFileSystem::mend();
    }

    void isTheUsersAlone()
    {
        Defaults defaults = opened();
        QCOMPARE(defaults.dictionaryRepresentation().failure, QString());
        QVERIFY(!QFile::exists(m_folder->filePath(u"a"_s))); // reading makes nothing
        QVERIFY(store(defaults, u"key"_s, 1).isStored());
        for (const auto &[name, mode] : {std::pair(u"a/b/settings.sqlite"_s, 0600U),
                                         std::pair(u"a/b"_s, 0700U), std::pair(u"a"_s, 0700U)}) {
            struct stat status
            {
            };
            QCOMPARE(::stat(qPrintable(m_folder->filePath(name)), &status), 0);
            QCOMPARE(status.st_mode & 0777, mode);
        }
        QCOMPARE(files(), QStringList{u"settings.sqlite"_s});
    }

    void refusesWhatIsTooDeepOrTooLarge()
    {
        QVariant deep = 1;
        for (int depth = 0; depth <= maximumDefaultsDepth; ++depth)
            deep = QVariantList{deep};
        Defaults defaults = opened();
        QVERIFY(!store(defaults, u"first"_s, deep).isStored());
        const QString third(maximumDefaultsSize / 3, u'x');
        for (const QString &key : {u"a"_s, u"b"_s})
            QVERIFY(store(defaults, key, third).isStored());
        const auto before = defaults.dictionaryRepresentation().values;
        for (const QVariant &value :
             {deep, QVariant(QString(maximumDefaultsSize, u'x')), QVariant(third)}) {
            QVERIFY(!store(defaults, u"c"_s, value).isStored());
            QCOMPARE(defaults.dictionaryRepresentation().values, before);
        }
    }

    void writesOnlyChanges()
    {
        Defaults defaults = opened();
        QVERIFY(store(defaults, u"key"_s, 1).isStored());
        const QByteArray written = contentOf(m_path);
        QVERIFY(store(defaults, u"key"_s, 1).isStored());
        QCOMPARE(contentOf(m_path), written);
        QVERIFY(store(defaults, u"key"_s, true).isStored()); // equal to 1 for QVariant
        QCOMPARE(defaults.dictionaryRepresentation().boolean(u"key"_s), true);
        for (int number = 0; number < 20; ++number) { // what others write is seen
            Defaults other = opened();
            QVERIFY(store(other, u"key"_s, number % 10).isStored());
            QCOMPARE(valueIn(defaults), number % 10);
        }
    }

    void takesOverAnOlderFileOnce()
    {
        QVERIFY(QDir().mkpath(m_folder->filePath(u"a/b"_s)));
        putContent(m_json, R"({"key": 1, "gone": null, "odd": ["a", null, {"$data": 1}]})");
        Defaults reader = opened();
        QVariantMap values{{u"key"_s, 1}, {u"odd"_s, QVariantList{u"a"_s, QVariant(), QVariant()}}};
        QCOMPARE(reader.dictionaryRepresentation().values, values);
        QCOMPARE(files(), QStringList{u"settings.json"_s});

        Defaults defaults = opened();
        QVERIFY(store(defaults, u"new"_s, 2).isStored());
        values.insert(u"new"_s, 2);
        for (const Defaults &each : {std::cref(reader), std::cref(defaults)})
            QCOMPARE(each.dictionaryRepresentation().values, values);
        QCOMPARE(files(), (QStringList{u"settings.json.taken-over"_s, u"settings.sqlite"_s}));
        putContent(m_json, R"({"key": 3})");
        QCOMPARE(valueIn(defaults), 1);
        QVERIFY(QFile::remove(m_json));
        QVERIFY(QFile::remove(m_path)); // to start afresh
        QCOMPARE(defaults.dictionaryRepresentation().values, QVariantMap());
        QCOMPARE(defaults.dictionaryRepresentation().failure, QString());
    }

    void tellsWhatItCannotRead_data()
    {
        const auto row = [](const char *name, const QString &culprit, bool isDamaged,
                            const std::function<void(const QString &)> &spoil) {
            QTest::newRow(name) << culprit << isDamaged
                                << std::function<void(const QString &)>(spoil);
        };
        const auto content = [](const QByteArray &bytes) {
            return [bytes](const QString &path) { putContent(path, bytes); };
        };
        const auto sql = [](const QByteArray &text) {
            return [text](const QString &path) { runSql(path, text); };
        };
        const auto directory = [](const QString &path) { QVERIFY(QDir().mkpath(path)); };
        const auto alone = [this](const std::function<void(const QString &)> &spoil) {
            return [this, spoil](const QString &path) {
                QVERIFY(QFile::remove(m_path));
                spoil(path);
            };
        };
        const QString database = u"settings.sqlite"_s;
        const QString json = u"settings.json"_s;
        QTest::addColumn<QString>("culprit");
        QTest::addColumn<bool>("isDamaged");
        QTest::addColumn<std::function<void(const QString &)>>("spoil");

        row("empty", database, true, content({}));
        row("another file", database, true, content(QByteArray(9000, 'x')));
        row("a broken page", database, true, [](const QString &path) {
            QFile file(path);
            QVERIFY(file.open(QIODevice::ReadWrite) && file.seek(4096));
            QCOMPARE(file.write(QByteArray(4096, '\xff')), 4096);
        });
        row("another table of that name", database, true,
            sql("DROP TABLE defaults; CREATE TABLE defaults(key, value)"));
        row("a trigger", database, true,
            sql("CREATE TRIGGER t AFTER INSERT ON defaults BEGIN DELETE FROM defaults; END"));
        row("too many", database, true,
            sql("WITH RECURSIVE n(n) AS (SELECT 1 UNION ALL SELECT n + 1 FROM n LIMIT 1000) "
                "INSERT INTO defaults SELECT n, n FROM n"));
        row("too large", database, true, [](const QString &path) {
            QVERIFY(QFile::resize(path, 5 * qint64(maximumDefaultsSize)));
        });
        row("a later version", database, false, sql("PRAGMA user_version = 2"));
        row("a pipe", database, false, alone(makePipe));
        row("a folder", database, false, alone(directory));
        row("a link to nothing", database, false,
            alone([](const QString &path) { QVERIFY(QFile::link(path + u".not"_s, path)); }));
        row("a pipe as journal", database + u"-journal"_s, false, makePipe);
        row("a pipe as log", database + u"-wal"_s, false, makePipe);
        row("older, half of it", json, true, alone(content("{\"key\": 1, \"ot")));
        row("older, a pipe", json, false, alone(makePipe));
    }

    void tellsWhatItCannotRead()
    {
        QFETCH(const QString, culprit);
        QFETCH(const bool, isDamaged);
        QFETCH(const std::function<void(const QString &)>, spoil);
        Defaults before = opened({.restoringTime = 0s});
        QVERIFY(store(before, u"key"_s, 1).isStored());
        QVERIFY(store(before, u"large"_s, large(u'x')).isStored());
        QCOMPARE(valueIn(before), 1);
        const QString path = QFileInfo(m_path).path() + u'/' + culprit;
        spoil(path);
        const QStringList there = files();
        const QByteArray content = contentOf(path);

        Defaults defaults = opened();
        for (int turn = 0; turn < 2; ++turn) {
            const DefaultsReading reading = defaults.dictionaryRepresentation();
            QVERIFY2(reading.failure.contains(path), qPrintable(reading.failure));
            QCOMPARE(reading.values, QVariantMap());
            QVERIFY(!store(defaults, u"key"_s, 2).isStored()); // it may be on its way back
        }
        QVERIFY(!before.setObject(u"key"_s, 2).isStored()); // not asked for by the user
        QCOMPARE(files(), there);
        QCOMPARE(contentOf(path), content);

        const DefaultsOutcome outcome = store(before, u"new"_s, 2);
        QCOMPARE(outcome.isStored(), isDamaged);
        QCOMPARE(!outcome.notice.isEmpty(), isDamaged);
        if (!isDamaged) {
            QCOMPARE(files(), there);
            return;
        }
        QCOMPARE(before.dictionaryRepresentation().values.keys(),
                 (QStringList{u"key"_s, u"large"_s, u"new"_s}));
        QCOMPARE(defaults.dictionaryRepresentation().values,
                 before.dictionaryRepresentation().values);
        const bool isOlder = culprit == u"settings.json"_s;
        const QString now = isOlder ? m_json : m_path + u".damaged"_s;
        QVERIFY(contentOf(now) == content);
        QVERIFY2(outcome.notice.contains(u'“' + now + u'”'), qPrintable(outcome.notice));
        QCOMPARE(store(before, u"new"_s, 3).notice, QString());
    }

    void seesAFileThatTakesItsPlace()
    {
        Defaults defaults = opened();
        QVERIFY(store(defaults, u"key"_s, 1).isStored());
        const QByteArray backup = contentOf(m_path);
        const auto change = [&](int number) {
            QVERIFY(store(defaults, u"key"_s, number).isStored());
            QCOMPARE(valueIn(defaults), number);
        };
        change(2);
        putContent(m_path, backup.left(5000)); // a slow restore
        QVERIFY(!defaults.dictionaryRepresentation().succeeded());
        QVERIFY(!store(defaults, u"key"_s, 3).isStored());
        putContent(m_path, backup);
        QCOMPARE(valueIn(defaults), 1);
        change(2);
        putContent(m_path + u".new"_s, backup);
        QCOMPARE(::rename(qPrintable(m_path + u".new"_s), qPrintable(m_path)), 0);
        QCOMPARE(valueIn(defaults), 1);
        change(2);
        runSql(m_path, "PRAGMA journal_mode = WAL; UPDATE defaults SET value = 5");
        QCOMPARE(valueIn(defaults), 5);
        change(6);
        QCOMPARE(files(), QStringList{u"settings.sqlite"_s});
        QVERIFY(QFile::remove(m_path));
        // A journal that was left behind is not of the new file.
        putContent(m_path + u"-journal"_s, "what a process left that was killed");
        QCOMPARE(defaults.dictionaryRepresentation().values, QVariantMap());
        change(4);
        QCOMPARE(files(),
                 (QStringList{u"settings.sqlite"_s, u"settings.sqlite-journal.damaged"_s}));

        // In the midst of a change, which then is one of the new file.
        int asked = 0;
        const auto outcome = defaults.change(
            [&](const QVariantMap &stored) {
                if (++asked == 2) {
                    putContent(m_path + u".new"_s, backup);
                    ::rename(qPrintable(m_path + u".new"_s), qPrintable(m_path));
                }
                return DefaultsChanges{{u"seen"_s, stored[u"key"_s]}};
            },
            DefaultsAuthor::User);
        QCOMPARE(outcome.failure, QString());
        QCOMPARE(defaults.dictionaryRepresentation().values,
                 QVariantMap({{u"key"_s, 1}, {u"seen"_s, 1}}));
    }

    void waitsForOthersButNotForEver()
    {
        Defaults defaults = opened();
        QVERIFY(store(defaults, u"key"_s, 1).isStored());
        sqlite3 *other = nullptr;
        QCOMPARE(sqlite3_open(qPrintable(m_path), &other), SQLITE_OK);
        QCOMPARE(sqlite3_exec(other, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr), SQLITE_OK);
        Defaults patient = opened({.patience = 400ms});
        QElapsedTimer timer;
        timer.start();
        QVERIFY(!store(patient, u"key"_s, 2).isStored());
        QVERIFY(timer.elapsed() >= 400);
        QVERIFY(!patient.dictionaryRepresentation().succeeded());
        QVERIFY(!store(patient, u"key"_s, 2).isStored());
        QVERIFY(timer.elapsed() < 800); // once for all three
        sqlite3_close(other);
        QCOMPARE(valueIn(patient), 1); // and nothing is made up for
        QVERIFY(store(patient, u"key"_s, 2).isStored());
        QCOMPARE(valueIn(defaults), 2);
    }

    void survivesEveryStep()
    {
        for (const End end : {End::Once, End::ForGood, End::Killed}) {
            init();
            survivesEveryStep(end);
        }
    }

    void changesNothingWithoutDescriptors()
    {
        Defaults defaults = opened();
        QVERIFY(QDir().mkpath(m_folder->filePath(u"a/b"_s)));
        putContent(m_json, R"({"key": 1})");
        for (const bool isTakenOver : {false, true}) {
            QVERIFY(!isTakenOver || store(defaults, u"new"_s, 1).isStored());
            const int status = inProcess([&] {
                const int lowest = ::dup(0);
                const rlimit none{rlim_t(lowest), rlim_t(lowest)};
                ::close(lowest);
                ::setrlimit(RLIMIT_NOFILE, &none);
                Defaults poor = opened();
                const bool isTold = !poor.dictionaryRepresentation().succeeded();
                const QDeadlineTimer now;
                DefaultsDatabase database(m_path, nullptr, now);
                const bool isCauseTold = database.beginChange().reason == qt_error_string(EMFILE);
                ::_exit(isTold && isCauseTold && !store(poor, u"key"_s, 2).isStored() ? 0 : 1);
            });
            QCOMPARE(status, 0);
            QCOMPARE(valueIn(defaults), 1);
        }
    }

    void keepsWhatItAcknowledgedOnAFullDisk()
    {
        constexpr int NothingMounted = 77;
        const int status = inProcess([&] {
            if (!mountSmallDisk(m_folder->path()))
                ::_exit(NothingMounted);
            // Without room for a page, what there is of an older version stays.
            const QString filler = m_folder->filePath(u"filler"_s);
            QDir().mkpath(QFileInfo(m_path).path());
            putContent(m_json, R"({"key": 1})");
            putContent(filler, QByteArray(60 * 1024, 'x'));
            Defaults early = opened();
            if (store(early, u"key"_s, 2).isStored() || files() != QStringList{u"settings.json"_s})
                ::_exit(3);
            QFile::remove(filler);

            QVariantMap acknowledged{{u"key"_s, 1}};
            int refusals = 0;
            for (int number = 0; number < 60; ++number) {
                // At first anew, and then in the place of another.
                const QString key = QString::number(number % 20);
                const QString value = large(u'a' + number).left(number % 3 == 0 ? 10 : 6000);
                Defaults defaults = opened();
                if (store(defaults, key, value).isStored())
                    acknowledged.insert(key, value);
                else
                    ++refusals;
                if (opened().dictionaryRepresentation().values != acknowledged)
                    ::_exit(1);
            }
            ::_exit(refusals > 0 && acknowledged.size() > 3 ? 0 : 2);
        });
        if (status == NothingMounted)
            QSKIP("no disk may be mounted here; a full one is tried by writes that fail");
        QCOMPARE(status, 0);
    }

    // Several processes add to one list, and some of them are killed. What each was told is stored
    // has to be there in the end.
    void losesNothingBetweenProcesses()
    {
        constexpr int writers = 4;
        constexpr int entries = 30;
        QVERIFY(QDir().mkpath(m_folder->filePath(u"a/b"_s)));
        putContent(m_json, R"({"key": 1})");
        int told[2];
        QCOMPARE(::pipe2(told, O_CLOEXEC), 0);
        QList<pid_t> children;
        for (int writer = 0; writer < writers; ++writer) {
            children.append(::fork());
            if (children.last() != 0)
                continue;
            Defaults defaults = opened({.patience = 10s});
            for (int entry = 0; entry < entries; ++entry) {
                const int number = writer * entries + entry;
                const auto outcome = defaults.change(
                    [number](const QVariantMap &stored) {
                        QVariantList list = stored[u"list"_s].toList();
                        list.append(number);
                        return DefaultsChanges{{u"list"_s, list}};
                    },
                    DefaultsAuthor::User);
                if (!outcome.isStored())
                    ::_exit(1);
                if (::write(told[1], &number, sizeof number) != sizeof number)
                    ::_exit(2);
            }
            ::_exit(0);
        }
        ::close(told[1]);
        QList<int> acknowledged;
        for (int number = 0; ::read(told[0], &number, sizeof number) == sizeof number;) {
            acknowledged.append(number);
            if (acknowledged.size() == writers * entries / 3)
                ::kill(children[0], SIGKILL);
            if (acknowledged.size() == writers * entries / 2)
                ::kill(children[1], SIGKILL);
        }
        ::close(told[0]);
        int good = 0;
        for (const pid_t child : std::as_const(children)) {
            int status = 0;
            ::waitpid(child, &status, 0);
            good += WIFEXITED(status) && WEXITSTATUS(status) == 0;
        }
        QVERIFY(good >= writers - 2);
        Defaults defaults = opened();
        const auto list = defaults.dictionaryRepresentation().object(u"list"_s)->toList();
        for (const int number : std::as_const(acknowledged))
            QVERIFY2(list.contains(number), qPrintable(QString::number(number)));
        QCOMPARE(valueIn(defaults), 1);
        QCOMPARE(files(), (QStringList{u"settings.json.taken-over"_s, u"settings.sqlite"_s}));
    }

private:
    // A change that takes and gives back pages, ended at each of its steps in turn.
    void survivesEveryStep(End end)
    {
        Defaults defaults = opened();
        const DefaultsChanges back{
            {u"a"_s, large(u'a')}, {u"b"_s, large(u'b')}, {u"c"_s, std::nullopt}, {u"key"_s, 1}};
        const DefaultsChanges changes{{u"a"_s, std::nullopt}, {u"c"_s, large(u'c')}, {u"key"_s, 2}};
        QVERIFY(storeAll(defaults, back).isStored());
        const QVariantMap before = defaults.dictionaryRepresentation().values;
        const auto work = [&](int step) {
            Defaults failing = opened({.fileSystem = FailingFileSystem::name()});
            FailingFileSystem::failAt(step, end);
            return storeAll(failing, changes);
        };
        int step = 0;
        for (bool wentThrough = false; !wentThrough; ++step) {
            QVERIFY(step < 100);
            QCOMPARE(storeAll(defaults, back).failure, QString());
            if (end == End::Killed) {
                const int status = inProcess([&] { ::_exit(work(step).isStored() ? 0 : 1); });
                wentThrough = status != -SIGKILL;
                QVERIFY(status == 0 || !wentThrough);
            } else {
                wentThrough = work(step).isStored();
                QVERIFY(wentThrough != FailingFileSystem::wasReached());
                FailingFileSystem::mend();
            }
            const DefaultsReading after = defaults.dictionaryRepresentation();
            QCOMPARE(after.failure, QString());
            if (wentThrough)
                QCOMPARE(after.object(u"key"_s), 2);
            else
                QVERIFY2(after.values == before, qPrintable(QString::number(step)));
        }
        QVERIFY(step > 8);
        QCOMPARE(files(), QStringList{u"settings.sqlite"_s}); // nothing is left behind
    }

    Defaults opened(SqliteUserDefaultsOptions options = {}) const
    {
        return Defaults(m_path, m_json, options);
    }

    static int valueIn(const Defaults &defaults)
    {
        return defaults.dictionaryRepresentation().object(u"key"_s).value_or(-1).toInt();
    }

    QStringList files() const
    {
        return QDir(QFileInfo(m_path).path())
            .entryList(QDir::AllEntries | QDir::System | QDir::Hidden | QDir::NoDotAndDotDot,
                       QDir::Name);
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_path;
    QString m_json;
};

QTEST_GUILESS_MAIN(TestSqliteUserDefaults)
#include "tst_sqlite_user_defaults.moc"
