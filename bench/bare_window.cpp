// The least that a Qt Widgets program with a window does, for comparing starts: bare_window [TEXT].
// As large as the panel and at the same place, empty or with a text in it.
#include <QApplication>
#include <QLabel>
#include <QScreen>

int main(int argc, char *argv[])
{
    QApplication::setStyle(QStringLiteral("fusion"));
    const QApplication application(argc, argv);
    QWidget window;
    window.resize(940, 720);
    window.move(QGuiApplication::primaryScreen()->availableGeometry().center()
                - window.rect().center());
    if (argc > 1) {
        auto *label = new QLabel(QString::fromLocal8Bit(argv[1]), &window);
        label->move(window.rect().center());
    }
    window.show();
    return QApplication::exec();
}
