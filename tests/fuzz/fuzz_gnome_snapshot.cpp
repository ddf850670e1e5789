#include "fuzz.h"
#include "platform/session/gnome/picture.h"
#include "sound_picture.h"

using namespace tovel;
using namespace tovel::gnome;

// Two sessions, one after the other, with a line between them.
void fuzz(QByteArrayView input)
{
    const QByteArray bytes = input.toByteArray();
    Picture picture;
    for (const QByteArray &json : bytes.split('\n')) {
        const auto snapshot = readSnapshot(json);
        if (!snapshot)
            continue;
        picture.draw(*snapshot, {{QPointF(0, 0), QStringLiteral("eDP-1"), true}});
        expectSound(picture);
        picture.expectOtherNumbers(json.size() % 2 == 0);
    }
}
