#include "fuzz.h"
#include "platform/session/i3/assigned_workspaces.h"
#include "platform/session/i3/commands.h"
#include "platform/session/i3/frames.h"
#include "platform/session/i3/picture.h"

#include <QSet>

using namespace tovel;
using namespace tovel::i3;

namespace {

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
}

} // namespace

void fuzz(QByteArrayView input)
{
    const QByteArray bytes = input.toByteArray();
    FrameReader frames;
    frames.append(bytes);
    while (frames.take()) { }

    readVersion(bytes);
    readSuccess(bytes);
    readsReload(bytes);
    readPressedCommand(bytes);
    Sources sources{.assigned = assignedWorkspaces(readConfiguration(bytes))};
    sources.assigned += assignedWorkspaces(QString::fromUtf8(bytes));
    if (const auto tree = readTree(bytes)) {
        sources.tree = *tree;
        Picture picture;
        for (const Compositor compositor : {Compositor::I3, Compositor::Sway}) {
            sources.compositor = compositor;
            picture.draw(sources);
            expectSound(picture);
        }
    }
    for (const Compositor compositor : {Compositor::I3, Compositor::Sway}) {
        const auto quoted = quotedWorkspace(compositor, QString::fromUtf8(bytes));
        if (quoted && quoted->contains('\n'))
            qFatal("a name ends its command");
    }
}
