#include "platform/linux/applications/desktop_entry.h"

#include "platform/linux/applications/glib_pointer.h"

#include <QFile>
#include <QFileInfo>

#include <gio/gdesktopappinfo.h>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

GText text(GKeyFile *file, const char *key)
{
    return GText(g_key_file_get_string(file, G_KEY_FILE_DESKTOP_GROUP, key, nullptr));
}

bool isSet(GKeyFile *file, const char *key)
{
    return g_key_file_get_boolean(file, G_KEY_FILE_DESKTOP_GROUP, key, nullptr);
}

bool isThere(const char *program) { return GText(g_find_program_in_path(program)) != nullptr; }

bool isThereIfTried(GKeyFile *file)
{
    const GText program = text(file, G_KEY_FILE_DESKTOP_KEY_TRY_EXEC);
    return !program || *program == '\0' || isThere(program.get());
}

// The program that a command starts; nothing when it is not there. Empty for no command, as some
// applications are started by the bus alone.
std::optional<QString> programOf(const char *command)
{
    if (!command || !*command)
        return QString();
    char **parsed = nullptr;
    if (!g_shell_parse_argv(command, nullptr, &parsed, nullptr))
        return std::nullopt;
    const GTexts arguments(parsed);
    if (!isThere(parsed[0]))
        return std::nullopt;
    return QFileInfo(QFile::decodeName(parsed[0])).fileName();
}

QString iconOf(GKeyFile *file)
{
    QString icon = QString::fromUtf8(text(file, G_KEY_FILE_DESKTOP_KEY_ICON).get());
    if (!icon.startsWith(u'/')) {
        // A theme name with a suffix is an error that many entries make.
        for (const QStringView suffix : {u".png", u".svg", u".xpm"}) {
            if (icon.endsWith(suffix))
                icon.chop(suffix.size());
        }
    }
    return icon;
}

} // namespace

std::optional<ApplicationEntry> parseDesktopEntry(const QString &identifier, const QString &path,
                                                  QByteArrayView content)
{
    const GKeyFilePointer owner = parseKeyFile(content, nullptr);
    GKeyFile *file = owner.get();
    if (!file)
        return std::nullopt;
    const GText group(g_key_file_get_start_group(file));
    const GText type = text(file, G_KEY_FILE_DESKTOP_KEY_TYPE);
    if (g_strcmp0(group.get(), G_KEY_FILE_DESKTOP_GROUP) != 0
        || g_strcmp0(type.get(), G_KEY_FILE_DESKTOP_TYPE_APPLICATION) != 0
        || isSet(file, G_KEY_FILE_DESKTOP_KEY_HIDDEN) || !isThereIfTried(file))
        return std::nullopt;
    const auto program = programOf(text(file, G_KEY_FILE_DESKTOP_KEY_EXEC).get());
    if (!program)
        return std::nullopt;
    const GText name(g_key_file_get_locale_string(file, G_KEY_FILE_DESKTOP_GROUP,
                                                  G_KEY_FILE_DESKTOP_KEY_NAME, nullptr, nullptr));
    ApplicationEntry entry;
    entry.bundleIdentifier = identifier;
    entry.name = cleanClue(QString::fromUtf8(name.get()));
    if (entry.name.isEmpty())
        entry.name = identifier;
    entry.icon = iconOf(file);
    entry.path = path;
    entry.startupWMClass
        = QString::fromUtf8(text(file, G_KEY_FILE_DESKTOP_KEY_STARTUP_WM_CLASS).get());
    if (!isSet(file, G_KEY_FILE_DESKTOP_KEY_TERMINAL) && !runsOtherPrograms(*program))
        entry.executable = *program;
    entry.visible = !isSet(file, G_KEY_FILE_DESKTOP_KEY_NO_DISPLAY);
    return entry;
}

} // namespace tovel
