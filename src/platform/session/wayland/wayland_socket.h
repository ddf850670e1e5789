#pragma once

#include <QByteArray>

#include <chrono>

namespace tovel {

// The sockets of Wayland's compositors, by the names that WAYLAND_DISPLAY has for them.

// A connection, which the caller closes; -1 when nobody listens, or somebody of another user does.
// Does not wait.
int connectToCompositor(const QByteArray &name);

// Whether a compositor answers a connection's first question (wl_display.sync) in time. It is not
// asked what it offers, which some tell only after they have looked at the program closely.
bool isCompositorAnswering(const QByteArray &name, std::chrono::milliseconds patience);

} // namespace tovel
