#pragma once

class QDialogButtonBox;

namespace tovel {

// Tab goes through all buttons that the box has now, in the order in which they were added.
void letTabReachAll(QDialogButtonBox &buttons);

} // namespace tovel
