#pragma once

#include <QString>

namespace tovel {

// By the kernel's name for the connector, which sessions show as the screen's.
inline bool isBuiltInScreen(const QString &connector)
{
    for (const auto *prefix : {"eDP", "LVDS", "DSI"}) {
        if (connector.startsWith(QLatin1StringView(prefix)))
            return true;
    }
    return false;
}

} // namespace tovel
