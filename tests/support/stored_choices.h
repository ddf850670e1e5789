#pragma once

#include "platform/user_defaults.h"

namespace tovel {

class PrivateSession;

// What the programs of the session have stored.
DefaultsReading storedChoices(const PrivateSession &session);

} // namespace tovel
