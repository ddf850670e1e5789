#pragma once

#include <QStringView>

#include <compare>

namespace tovel {

// Which of two versions came out later. Numbers count as numbers ("1.10" after "1.9"), missing ones
// as 0 ("1.0" is "1.0.0"), and words come before the release they lead to ("1.0b2", "1.0-rc.1"
// before "1.0"), among themselves by the alphabet without case. What stands between numbers and
// words says nothing. Every text has its place in the order.
std::weak_ordering compareVersions(QStringView left, QStringView right);

} // namespace tovel
