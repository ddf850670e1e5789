#pragma once

#include <QString>

namespace tovel {

class SimulatedDesktop;

// Fills an empty desktop for the demo: two displays, regular and full-screen desktops, applications
// with names and pictures ("files.svg" and so on in the folder, not looked for; one application has
// none), windows for every reason to stay behind, and moves and switches that take as long as the
// eye can follow. Turns recording off.
void populateDemo(SimulatedDesktop &desktop, const QString &iconFolder);

} // namespace tovel
