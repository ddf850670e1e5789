#include "platform/linux/application_launcher.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <unistd.h>

using namespace tovel;
using namespace Qt::StringLiterals;

class TestApplicationLauncher final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(QDir(m_folder.path()).mkpath(u"applications/kde"_s));
        qputenv("XDG_DATA_HOME", QFile::encodeName(m_folder.path()));
    }

    void locatesEntries()
    {
        const ApplicationLauncher launcher;
        const QByteArray missing
            = "[Desktop Entry]\nType=Application\nName=A\nExec=no-such-program\n";
        const QUrl top = write(u"my-app.desktop"_s, missing);
        const QUrl below = write(u"kde/my-viewer.desktop"_s, missing);
        write(u"hidden.desktop"_s, missing + "Hidden=true\n");
        QCOMPARE(launcher.locate(u"my-app"_s), top);
        QCOMPARE(launcher.locate(u"kde-my-viewer"_s), below);
        for (const QString &absent : {u"hidden"_s, u"kde/my-viewer"_s, u"kde-..-my-app"_s, u"kde"_s,
                                      u"my-app.desktop"_s, QString()})
            QCOMPARE(launcher.locate(absent), QUrl());
    }

    void startsAProgramOfItsOwn()
    {
        const QString marker = m_folder.filePath(u"marker"_s);
        const QUrl location = write(u"session.desktop"_s,
                                    "[Desktop Entry]\nType=Application\nName=A\nExec=sh -c \"exec "
                                    "cut -d' ' -f6 /proc/self/stat >"
                                        + QFile::encodeName(marker) + "\"\n");
        ApplicationLauncher launcher;
        QList<std::optional<QString>> outcomes;
        launcher.launch(location, [&](const auto &reason) { outcomes << reason; });
        QTRY_COMPARE(outcomes.size(), 1);
        QCOMPARE(outcomes.first(), std::nullopt);

        QFile file(marker);
        QTRY_VERIFY(file.size() > 0);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QVERIFY(file.readAll().trimmed() != QByteArray::number(::getsid(0)));
        QCOMPARE(outcomes.size(), 1);
    }

    void tellsWhyNot()
    {
        const auto reason = [this](const QString &name, const QByteArray &content) {
            ApplicationLauncher launcher;
            std::optional<QString> outcome;
            launcher.launch(write(name, content),
                            [&](const auto &why) { outcome = why.value_or(u"started"_s); });
            const bool isTold = QTest::qWaitFor([&] { return outcome.has_value(); });
            return isTold && !outcome->isEmpty() ? *outcome : u"untold"_s;
        };
        const std::pair<QByteArray, QString> rows[] = {
            {"Exec=no-such-program %U\n", qt_error_string(ENOENT)},
            {"Exec=true\nPath=/no/such/folder\n", u"/no/such/folder"_s},
            {"Type=Link\nURL=file:///\n", u"broken.desktop"_s},
            {{}, u"Exec"_s},
            {"Exec='true\n", u"'true"_s},
        };
        for (const auto &[rest, part] : rows) {
            const QString why
                = reason(u"broken.desktop"_s, "[Desktop Entry]\nType=Application\nName=A\n" + rest);
            QVERIFY2(why.contains(part), qPrintable(why));
        }
        const QString why = reason(u"binary.desktop"_s, "\x7f\\ELF");
        QVERIFY(why != u"started" && why != u"untold");
    }

    void forgetsHandlersWhenDestroyed()
    {
        const QUrl location = QUrl::fromLocalFile(m_folder.path());
        int calls = 0;
        {
            ApplicationLauncher launcher;
            launcher.launch(location, [&](const auto &) { ++calls; });
        }
        auto launcher = std::make_unique<ApplicationLauncher>();
        bool destroyed = false;
        launcher->launch(location, [&](const auto &) {
            launcher.reset();
            destroyed = true;
        });
        QTRY_VERIFY(destroyed);
        QCOMPARE(calls, 0);
    }

private:
    QUrl write(const QString &name, const QByteArray &content)
    {
        const QString path = m_folder.filePath(u"applications/"_s + name);
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
            qFatal("The entry could not be written.");
        return QUrl::fromLocalFile(path);
    }

    QTemporaryDir m_folder;
};

QTEST_GUILESS_MAIN(TestApplicationLauncher)
#include "tst_application_launcher.moc"
