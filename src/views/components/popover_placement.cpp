#include "views/components/popover_placement.h"

#include <algorithm>
#include <array>

namespace tovel {

namespace {

// Pixels between the anchor and the screen's edge on a side, less what the popover needs there.
int spareRoom(const QRect &anchor, const QSize &body, const QRect &screen, PopoverSide side)
{
    switch (side) {
    case PopoverSide::left:
        return anchor.left() - screen.left() - body.width() - popoverArrowLength;
    case PopoverSide::right:
        return screen.right() - anchor.right() - body.width() - popoverArrowLength;
    case PopoverSide::above:
        return anchor.top() - screen.top() - body.height() - popoverArrowLength;
    case PopoverSide::below:
        return screen.bottom() - anchor.bottom() - body.height() - popoverArrowLength;
    }
    Q_UNREACHABLE();
}

PopoverSide opposite(PopoverSide side)
{
    switch (side) {
    case PopoverSide::left:
        return PopoverSide::right;
    case PopoverSide::right:
        return PopoverSide::left;
    case PopoverSide::above:
        return PopoverSide::below;
    case PopoverSide::below:
        return PopoverSide::above;
    }
    Q_UNREACHABLE();
}

PopoverSide chooseSide(const QRect &anchor, const QSize &body, const QRect &screen,
                       PopoverSide wanted)
{
    const std::array order = {wanted,
                              opposite(wanted),
                              PopoverSide::below,
                              PopoverSide::above,
                              PopoverSide::right,
                              PopoverSide::left};
    const auto room = [&](PopoverSide side) { return spareRoom(anchor, body, screen, side); };
    const auto fitting = std::ranges::find_if(order, [&](auto side) { return room(side) >= 0; });
    return fitting != order.end() ? *fitting : *std::ranges::max_element(order, {}, room);
}

// Where something of the given length begins so that it stays between first and last.
int kept(int begin, int length, int first, int last)
{
    return std::max(first, std::min(begin, last + 1 - length));
}

int arrowCentre(int wanted, int begin, int length)
{
    const int margin = popoverRadius + popoverArrowWidth / 2;
    if (length < 2 * margin)
        return begin + length / 2;
    return std::clamp(wanted, begin + margin, begin + length - margin);
}

} // namespace

PopoverPlacement placePopover(const QRect &anchor, const QSize &size, const QRect &screen,
                              PopoverSide wanted)
{
    const PopoverSide side = chooseSide(anchor, size, screen, wanted);
    QRect body({}, size);
    body.moveCenter(anchor.center());
    if (side == PopoverSide::left)
        body.moveRight(anchor.left() - 1 - popoverArrowLength);
    else if (side == PopoverSide::right)
        body.moveLeft(anchor.right() + 1 + popoverArrowLength);
    else if (side == PopoverSide::above)
        body.moveBottom(anchor.top() - 1 - popoverArrowLength);
    else
        body.moveTop(anchor.bottom() + 1 + popoverArrowLength);
    body.moveTo(kept(body.left(), body.width(), screen.left(), screen.right()),
                kept(body.top(), body.height(), screen.top(), screen.bottom()));

    PopoverPlacement result{.side = side, .body = body};
    const QPoint centre = anchor.center();
    if (side == PopoverSide::left || side == PopoverSide::right) {
        result.tip = {side == PopoverSide::left ? body.right() + 1 + popoverArrowLength
                                                : body.left() - popoverArrowLength,
                      arrowCentre(centre.y(), body.top(), body.height())};
    } else {
        result.tip = {arrowCentre(centre.x(), body.left(), body.width()),
                      side == PopoverSide::above ? body.bottom() + 1 + popoverArrowLength
                                                 : body.top() - popoverArrowLength};
    }
    return result;
}

} // namespace tovel
