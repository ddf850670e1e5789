#pragma once

#include <QByteArray>

namespace tovel {

struct SimulatedState;

// The private entry points, which act on one desktop at a time.
namespace simulatedwindowserver {

// The desktop that the entry points act on; null for none, and then they answer failure. Returns
// the one before.
SimulatedState *setActiveDesktop(SimulatedState *desktop);

// Addresses of the exported entry points of the framework and of the process; null for others.
void *frameworkEntry(const QByteArray &name);
void *processEntry(const QByteArray &name);

// The address of the function that the framework does not export.
void *submitMoveEntry();

} // namespace simulatedwindowserver

} // namespace tovel
