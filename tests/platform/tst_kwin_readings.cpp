#include "platform/session/kwin/key_meanings.h"
#include "platform/session/kwin/told_texts.h"

#include <QTest>

#include <linux/input-event-codes.h>

using namespace tovel;
using namespace tovel::kwin;
using namespace Qt::StringLiterals;

// What is made of KWin's words and of its keyboard.
class TestKWinReadings : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsSupportInformation_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("version");
        QTest::addColumn<bool>("shows");
        QTest::newRow("as it is") << u"Version\n=====\nKWin version: 5.27.5\nQt Version: 5.15.8\n"
                                     "activationDesktopPolicy: 0\n"_s
                                  << u"5.27.5"_s << true;
        QTest::newRow("brought here") << u"activationDesktopPolicy: 1"_s << QString() << false;
        QTest::newRow("by its name")
            << u"activationDesktopPolicy: SwitchToOtherDesktop"_s << QString() << true;
        QTest::newRow("no policy") << u"KWin version: 6.3.6"_s << u"6.3.6"_s << false;
        QTest::newRow("no number") << u"activationDesktopPolicy: 0x0"_s << QString() << false;
        QTest::newRow("a version without end")
            << u"KWin version: "_s + QString(100000, u'9') << QString(64, u'9') << false;
        QTest::newRow("nothing") << QString() << QString() << false;
    }
    void readsSupportInformation()
    {
        QFETCH(QString, text);
        const SupportInformation information = parseSupportInformation(text);
        QTEST(information.version, "version");
        QTEST(information.activationShowsDesktop, "shows");
    }

    void cutsTexts()
    {
        QCOMPARE(toldText(nullptr), QString());
        QCOMPARE(toldText(QByteArray(100000, 'x').constData()).size(), 4096);
    }

    // Without a keymap, or with one that is none, the US layout counts.
    void namesKeysByTheirSymbols_data()
    {
        QTest::addColumn<SessionKey>("key");
        QTest::addColumn<int>("combination");
        const auto row = [](const char *name, const SessionKey &key, int combination) {
            QTest::newRow(name) << key << combination;
        };
        row("letter", {.position = KEY_T, .control = true, .alt = true, .super = true},
            Qt::Key_T | int(Qt::CTRL) | int(Qt::ALT) | int(Qt::META));
        row("letter with Shift", {.position = KEY_T, .shift = true}, Qt::Key_T | int(Qt::SHIFT));
        row("symbol made by Shift", {.position = KEY_1, .shift = true, .control = true},
            Qt::Key_Exclam | int(Qt::CTRL));
        row("function key with Shift", {.position = KEY_F11, .shift = true},
            Qt::Key_F11 | int(Qt::SHIFT));
        row("Tab with Shift", {.position = KEY_TAB, .shift = true}, Qt::Key_Tab | int(Qt::SHIFT));
        row("arrow", {.position = KEY_LEFT}, Qt::Key_Left);
        row("space", {.position = KEY_SPACE}, Qt::Key_Space);
        row("no key", {.position = 0xFFFFFFFF}, 0);
        row("modifier alone", {.position = KEY_LEFTCTRL}, 0);
    }
    void namesKeysByTheirSymbols()
    {
        QFETCH(SessionKey, key);
        for (const auto &keymap : {QByteArray(), QByteArray("xkb_keymap {")})
            QTEST(KeyMeanings(keymap).combination(key, 0), "combination");
    }
};

QTEST_GUILESS_MAIN(TestKWinReadings)
#include "tst_kwin_readings.moc"
