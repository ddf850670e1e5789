#pragma once

#include "platform/session/session_records.h"

#include <QSet>

namespace tovel {

// Dies of a picture of a session whose parts do not fit together.
template <typename Picture>
void expectSound(const Picture &picture)
{
    QSet<std::uint64_t> workspaces{0};
    for (const SessionOutput &output : picture.outputs()) {
        for (const SessionWorkspace &workspace : output.workspaces) {
            if (workspaces.contains(workspace.id))
                qFatal("two workspaces share an id");
            workspaces.insert(workspace.id);
        }
        if (output.shown && !workspaces.contains(*output.shown))
            qFatal("a workspace is shown that is not there");
    }
    QSet<std::uint32_t> windows{0};
    for (const SessionWindow &window : picture.windows()) {
        if (windows.contains(window.id))
            qFatal("two windows share an id");
        windows.insert(window.id);
        for (const std::uint64_t workspace : window.workspaces) {
            if (!workspaces.contains(workspace))
                qFatal("a window is where nothing is");
        }
    }
    if (!windows.contains(picture.activeWindow()))
        qFatal("a window is active that is not there");
}

} // namespace tovel
