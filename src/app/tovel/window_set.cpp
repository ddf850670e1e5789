#include "app/tovel/window_set.h"

#include "app/panel/own_window.h"

#include <QPainter>
#include <QRasterWindow>

namespace tovel {

namespace {

class PlainWindow final : public QRasterWindow
{
protected:
    void paintEvent(QPaintEvent *) override
    {
        const QRect area(QPoint(), size());
        QPainter painter(this);
        painter.fillRect(area, QColor(0xf2, 0xef, 0xe8));
        painter.setPen(QColor(0x30, 0x2c, 0x26));
        painter.drawText(area, Qt::AlignCenter, title());
    }
};

} // namespace

WindowSet::WindowSet() = default;
WindowSet::~WindowSet() = default;

OwnWindow WindowSet::open(const QString &title, const QRect &content)
{
    auto window = std::make_unique<PlainWindow>();
    window->setTitle(title);
    // Before it is shown, so that the position goes along as the user's own wish.
    window->setGeometry(content);
    window->show();
    window->raise();
    m_windows.push_back(std::move(window));
    return ownWindow(*m_windows.back());
}

void WindowSet::minimize(const QString &title)
{
    for (const auto &window : m_windows) {
        if (window->title() == title)
            window->showMinimized();
    }
}

} // namespace tovel
