#pragma once

#include <QRect>

namespace tovel {

// Where a popover lies seen from what it belongs to.
enum class PopoverSide { left, above, right, below };

struct PopoverPlacement
{
    PopoverSide side = PopoverSide::below;
    QRect body; // without the arrow, in the coordinates of the screen
    QPoint tip; // of the arrow, at the edge of the anchor

    bool operator==(const PopoverPlacement &) const = default;
};

constexpr int popoverArrowLength = 9;
constexpr int popoverArrowWidth = 20; // where it joins the body
constexpr int popoverRadius = 12;

// A body of the given size beside the anchor: on the wanted side if the screen has room there, else
// on the opposite side, else below or above it or on the right or left, else on the side with most
// room. It is centred on the anchor as far as it stays on the screen; a body larger than the screen
// begins at its top left corner. The arrow points at the anchor as far as the body's corners let
// it.
PopoverPlacement placePopover(const QRect &anchor, const QSize &body, const QRect &screen,
                              PopoverSide wanted);

} // namespace tovel
