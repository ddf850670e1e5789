#pragma once

#include <QDBusConnection>
#include <QDBusMessage>

namespace tovel {

// The Tovel that runs on the session bus, as others find it.
enum class RunningTovel {
    None, // none, one of another display, which is none for this one, or something else
    Answers,
    Silent, // does not answer
};

// Asks for it, and waits for the answer five seconds at most. Starts none.
RunningTovel findRunningTovel(const QDBusConnection &bus);

// A call of a method of its object, which does not start one either.
QDBusMessage callOfRunningTovel(const QString &interface, const QString &method,
                                const QVariantList &arguments);

} // namespace tovel
