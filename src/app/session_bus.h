#pragma once

#include <QByteArray>
#include <QDBusConnection>

namespace tovel {

// The bus of the user's session (D-Bus Specification, "Well-known Message Bus Instances"). A
// connection that is not connected, and never will be, where no bus is known or it does not answer
// within two seconds: none is ever started for the asking. Every call answers with the same
// connection.
QDBusConnection sessionBus();

// Libraries, Qt among them, start a bus the first time they want one where none is known. While
// this object is there they find none; Qt does not look again afterwards, and programs that are
// started then see the environment as it was. To be made before QApplication, and to go after that
// is made.
class NoBusStart final
{
public:
    NoBusStart();
    ~NoBusStart();

    NoBusStart(const NoBusStart &) = delete;
    NoBusStart &operator=(const NoBusStart &) = delete;

private:
    QByteArray m_address;
};

} // namespace tovel
