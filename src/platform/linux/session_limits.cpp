#include "platform/linux/session_limits.h"

namespace tovel {

using namespace Qt::StringLiterals;

QStringList sessionLimits(DesktopSession &session)
{
    QStringList limits = session.limits();
    // What it could do matters once it can do anything.
    if (!session.isControllable())
        return limits;
    const SessionCapabilities can = session.capabilities();
    if (!can.globalKeys)
        limits.append(
            u"This session gives no program a key: the keyboard shortcut does not work."_s);
    if (!can.above)
        limits.append(u"This session keeps no window above the others: a pinned panel is not."_s);
    if (!can.onAllWorkspaces)
        limits.append(
            u"This session puts no window on all desktops: the panel stays on its own."_s);
    if (!can.keepsEmptyWorkspaces)
        limits.append(u"Desktops without windows go away by themselves in this session."_s);
    return limits;
}

} // namespace tovel
