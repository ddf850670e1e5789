#include "app/panel/window_frame.h"

#include <QRegion>
#include <QStringList>

#include <algorithm>

namespace tovel {

namespace {

// The farthest that X11 can express, in 16 bits.
constexpr int FarthestCoordinate = 32767;

// How much of the title bar has to be on a screen, so that the mouse can drag the window.
constexpr QSize Handle(64, 16);
constexpr int HandleReach = 24;

int area(const QRect &rect) { return rect.isEmpty() ? 0 : rect.width() * rect.height(); }

int distance(const QRect &screen, QPoint point)
{
    const int x = std::max({screen.left() - point.x(), 0, point.x() - screen.right()});
    const int y = std::max({screen.top() - point.y(), 0, point.y() - screen.bottom()});
    return x + y;
}

bool canBeReached(const QRect &frame, const QList<QRect> &screens)
{
    const QRect edge(frame.topLeft(), QSize(frame.width(), HandleReach));
    return std::ranges::any_of(screens, [&edge](const QRect &screen) {
        const QSize shown = screen.intersected(edge).size();
        return shown.width() >= Handle.width() && shown.height() >= Handle.height();
    });
}

bool isWhollyShown(const QRect &frame, const QList<QRect> &screens)
{
    QRegion hidden(frame);
    for (const QRect &screen : screens)
        hidden -= screen;
    return hidden.isEmpty();
}

} // namespace

QString frameText(const WindowFrame &frame)
{
    QStringList numbers;
    for (const QRect &rect : {frame.frame, frame.screen}) {
        for (const int number : {rect.x(), rect.y(), rect.width(), rect.height()})
            numbers.append(QString::number(number));
    }
    return numbers.join(u' ');
}

std::optional<WindowFrame> parseFrame(const QString &text)
{
    QList<int> numbers;
    const QStringList words = text.split(u' ', Qt::SkipEmptyParts);
    for (const QString &word : words) {
        bool isNumber = false;
        numbers.append(word.toInt(&isNumber));
        if (!isNumber || std::abs(numbers.last()) > FarthestCoordinate)
            return std::nullopt;
    }
    if (numbers.size() != 8)
        return std::nullopt;
    const WindowFrame frame{QRect(numbers[0], numbers[1], numbers[2], numbers[3]),
                            QRect(numbers[4], numbers[5], numbers[6], numbers[7])};
    if (frame.frame.isEmpty())
        return std::nullopt;
    return frame;
}

QRect fittedFrame(const QRect &frame, const QList<QRect> &screens)
{
    const QRect whole = wholeFrame(frame, screens);
    return whole.size() == frame.size() && canBeReached(frame, screens) ? frame : whole;
}

QRect wholeFrame(const QRect &frame, const QList<QRect> &screens)
{
    if (screens.isEmpty() || isWhollyShown(frame, screens))
        return frame;
    const QRect screen = *std::ranges::max_element(screens, {}, [&frame](const QRect &candidate) {
        return std::pair(area(candidate.intersected(frame)), -distance(candidate, frame.center()));
    });
    const QSize size = frame.size().boundedTo(screen.size());
    const QPoint last(screen.right() + 1 - size.width(), screen.bottom() + 1 - size.height());
    return QRect(std::clamp(frame.x(), screen.x(), last.x()),
                 std::clamp(frame.y(), screen.y(), last.y()), size.width(), size.height());
}

QRect centeredFrame(QSize size, const QRect &screen)
{
    QRect frame(QPoint(), size.boundedTo(screen.size()));
    frame.moveCenter(screen.center());
    return frame;
}

} // namespace tovel
