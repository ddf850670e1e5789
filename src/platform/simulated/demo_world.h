#pragma once

namespace tovel {

class SimulatedDesktop;

// Fills an empty desktop for the demo: two displays, regular and full-screen desktops, applications
// with names and icon-theme names, windows for every reason to stay behind, and moves and switches
// that take as long as the eye can follow. Turns recording off.
void populateDemo(SimulatedDesktop &desktop);

} // namespace tovel
