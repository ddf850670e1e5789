#pragma once

namespace tovel {

// Makes assistive programs see the components as what they are. The toolkit reads a button without
// value and selection, an icon as an unnamed group. Done once; further calls do nothing.
void installAccessibleSurfaces();

} // namespace tovel
