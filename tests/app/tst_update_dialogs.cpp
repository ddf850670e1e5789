#include "app/updates/update_dialog.h"
#include "app/updates/update_dialogs.h"
#include "support/test.h"

#include <QApplication>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTimeZone>

namespace {

const ProgramVersion current{u"10"_s, u"1.0"_s};

SUAppcastItem release(const QString &page)
{
    return {.title = u"Tovel <b>1.2</b>"_s,
            .versionString = u"12"_s,
            .displayVersionString = u"1.2"_s,
            .itemDescription = u"• <i>Faster</i>"_s,
            .infoURL = QUrl(page),
            .date = QDateTime({2024, 5, 3}, {12, 0}, QTimeZone::utc())};
}

// The driver, the pages it opened, and how often the user was done.
struct World
{
    QList<QUrl> pages;
    bool opens = true;
    int answers = 0;
    UpdateDialogs dialogs{[this](const QUrl &page) {
        pages.append(page);
        return opens;
    }};

    std::function<void()> answer()
    {
        return [this] { ++answers; };
    }

    UpdateDialog &dialog() { return *dialogs.dialog(); }

    QStringList buttons()
    {
        QStringList texts;
        for (const QPushButton *button : dialog().findChildren<QPushButton *>())
            texts += button->text().remove(u'&') + (button->isDefault() ? u"*"_s : u""_s);
        texts.sort();
        return texts;
    }

    // A deleted window takes its place until the event loop is back.
    int windows()
    {
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        return int(QApplication::topLevelWidgets().size());
    }
};

} // namespace

class TestUpdateDialogs : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void isClosedByTheKeyboard()
    {
        for (const Qt::Key key : {Qt::Key_Escape, Qt::Key_Return}) {
            World world;
            world.dialogs.showChecking(world.answer());
            // What is shown from within an answer stays.
            world.dialogs.showChecking(
                [&] { world.dialogs.showUpToDate(current, world.answer()); });
            QVERIFY(world.dialog().isVisible() && !world.dialog().isModal());
            QCOMPARE(world.buttons(), QStringList{u"Cancel*"_s});
            QTest::keyClick(&world.dialog(), key);
            QCOMPARE(world.windows(), 1);
            QCOMPARE(world.dialog().accessibleDescription(), u"Version 1.0 (10) is the newest."_s);
            QCOMPARE(world.answers, 0);
            QTest::keyClick(&world.dialog(), key);
            QCOMPARE(world.answers, 1);
            QCOMPARE(world.windows(), 0);
        }
    }

    void showsWhatIsNew()
    {
        World world;
        world.dialogs.showUpdateFound(current, release(u"https://tovel.test/1.2"_s),
                                      world.answer());
        QCOMPARE(world.dialog().accessibleName(), u"Tovel <b>1.2</b>"_s);
        const QString text = world.dialog().accessibleDescription();
        QVERIFY(text.contains(u"Version 1.2 (12)"_s) && text.contains(u"2024"_s));
        const auto *notes = world.dialog().findChild<QPlainTextEdit *>();
        QCOMPARE(notes->toPlainText(), u"• <i>Faster</i>"_s);
        QVERIFY(notes->isReadOnly() && !notes->accessibleName().isEmpty());
        QCOMPARE(world.buttons(), (QStringList{u"Close"_s, u"Open Release Page*"_s}));

        world.opens = false;
        QTest::keyClick(&world.dialog(), Qt::Key_Return);
        QCOMPARE(world.pages, QList<QUrl>{QUrl(u"https://tovel.test/1.2"_s)});
        QVERIFY(world.dialog().accessibleDescription().contains(u"https://tovel.test/1.2"_s));
        QCOMPARE(world.answers, 0);
        world.opens = true;
        QTest::keyClick(&world.dialog(), Qt::Key_Return);
        QCOMPARE(world.pages.size(), 2);
        QCOMPARE(world.answers, 1);
        QCOMPARE(world.windows(), 0);

        world.dialogs.showUpdateFound(current, release(u"file:///etc/hostname"_s), world.answer());
        QCOMPARE(world.buttons(), QStringList{u"Close*"_s});
    }
};

QTEST_MAIN(TestUpdateDialogs)
#include "tst_update_dialogs.moc"
