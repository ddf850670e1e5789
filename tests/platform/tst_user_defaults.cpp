#include "platform/linux/defaults/json_value.h"
#include "platform/linux/defaults/sqlite_user_defaults.h"
#include "platform/simulated/memory_user_defaults.h"
#include "support/test.h"

#include <QDate>
#include <QDebug>

#include <limits>

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

} // namespace

// What every domain keeps to.
class TestUserDefaults final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase_data()
    {
        QTest::addColumn<bool>("inMemory");
        QTest::newRow("memory") << true;
        QTest::newRow("sqlite") << false;
    }

    void init()
    {
        QFETCH_GLOBAL(bool, inMemory);
        m_folder = std::make_unique<QTemporaryDir>();
        m_defaults = inMemory ? std::make_unique<MemoryUserDefaults>() : opened();
    }

    void keepsEveryKind()
    {
        QCOMPARE(m_defaults->dictionaryRepresentation().values, QVariantMap());
        const QVariantMap kinds = everyKind();
        for (auto it = kinds.cbegin(); it != kinds.cend(); ++it)
            QCOMPARE(m_defaults->setObject(it.key(), it.value()).failure, QString());
        // QVariant's own comparison takes 1 for true.
        QCOMPARE(QDebug::toString(m_defaults->dictionaryRepresentation().values),
                 QDebug::toString(kinds));
        const DefaultsReading reading = m_defaults->dictionaryRepresentation();
        QCOMPARE(reading.boolean(u"true"_s), true);
        QVERIFY(!reading.text(u"true"_s) && !reading.realNumber(u"true"_s));
        QVERIFY(reading.realNumber(u"fraction"_s) && !reading.boolean(u"none"_s));
        QVERIFY(!reading.texts(u"list"_s) && !reading.textDictionary(u"dictionary"_s));
    }

    void changesAllOrNothing()
    {
        const auto store = [this](const DefaultsChanges &changes) {
            return m_defaults->change([&](const QVariantMap &) { return changes; },
                                      DefaultsAuthor::User);
        };
        QVERIFY(store({{u"a"_s, 1LL}, {u"b"_s, 2LL}}).isStored());
        QVERIFY(store({{u"a"_s, std::nullopt}, {u"none"_s, std::nullopt}}).isStored());
        const QVariantMap before{{u"b"_s, 2LL}};
        QCOMPARE(m_defaults->dictionaryRepresentation().values, before);
        for (const QVariant &value : {QVariant(), QVariant(QVariantList{1, QDate(2024, 1, 1)})}) {
            QVERIFY(!store({{u"a"_s, 1LL}, {u"b"_s, value}}).isStored());
            QCOMPARE(m_defaults->dictionaryRepresentation().values, before);
        }
    }

    void decidesByWhatIsStored()
    {
        for (int count = 1; count <= 3; ++count) {
            const auto outcome = m_defaults->change(
                [](const QVariantMap &stored) {
                    return DefaultsChanges{{u"count"_s, stored[u"count"_s].toLongLong() + 1}};
                },
                DefaultsAuthor::User);
            QVERIFY(outcome.isStored());
            QCOMPARE(m_defaults->dictionaryRepresentation().object(u"count"_s), count);
        }
    }

private:
    std::unique_ptr<UserDefaults> opened() const
    {
        return std::make_unique<SqliteUserDefaults>(m_folder->filePath(u"x/settings.sqlite"_s),
                                                    m_folder->filePath(u"x/settings.json"_s));
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<UserDefaults> m_defaults;
};

QTEST_GUILESS_MAIN(TestUserDefaults)
#include "tst_user_defaults.moc"
