#include "fuzz.h"
#include "platform/session/i3/assigned_workspaces.h"
#include "platform/session/i3/commands.h"
#include "platform/session/i3/frames.h"
#include "platform/session/i3/picture.h"
#include "sound_picture.h"

using namespace tovel;
using namespace tovel::i3;

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
