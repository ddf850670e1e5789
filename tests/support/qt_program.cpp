// A program of the toolkit's own making: one window with the title that it is given.

#include <QGuiApplication>
#include <QRasterWindow>

int main(int argc, char *argv[])
{
    const QGuiApplication application(argc, argv);
    QRasterWindow window;
    window.setTitle(QGuiApplication::arguments().value(1));
    window.resize(200, 120);
    window.show();
    return QGuiApplication::exec();
}
