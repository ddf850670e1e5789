#include "support/stored_choices.h"

#include "platform/linux/defaults/sqlite_user_defaults.h"
#include "support/private_session.h"

namespace tovel {

using namespace Qt::StringLiterals;

DefaultsReading storedChoices(const PrivateSession &session)
{
    const QString file
        = session.environment().value(u"XDG_CONFIG_HOME"_s) + u"/org.tovel.Tovel/defaults"_s;
    return SqliteUserDefaults(file + u".sqlite"_s, file + u".json"_s).dictionaryRepresentation();
}

} // namespace tovel
