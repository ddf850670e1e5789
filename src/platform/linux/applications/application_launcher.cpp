#include "platform/linux/applications/application_launcher.h"

#include "platform/linux/applications/desktop_entry.h"
#include "platform/linux/applications/glib_pointer.h"
#include "platform/linux/applications/installed_applications.h"
#include "platform/regular_file.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

#include <thread>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <gio/gdesktopappinfo.h>
#include <unistd.h>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

using Reason = std::optional<QString>;

struct GMainContextRelease
{
    void operator()(GMainContext *context) const { g_main_context_unref(context); }
};

Reason reasonFrom(GError *error)
{
    const GErrorPointer owner(error);
    return QString::fromUtf8(error->message);
}

// Deeper folders are nobody's; links among them could make for any number of paths.
constexpr int DeepestFolder = 4;

// More are nobody's either.
constexpr qsizetype MostFolders = 5000;

// The file of this id below the folder: every '-' may stand for a subfolder.
QString findBelow(const QString &folder, const QString &identifier, int depth = 0)
{
    const QString file = folder + u'/' + identifier + u".desktop"_s;
    if (QFileInfo(file).isFile())
        return file;
    for (qsizetype dash = identifier.indexOf(u'-'); dash >= 0 && depth < DeepestFolder;
         dash = identifier.indexOf(u'-', dash + 1)) {
        const QString name = identifier.first(dash);
        const QString subfolder = folder + u'/' + name;
        if (name.isEmpty() || name == u"." || name == u".." || !QFileInfo(subfolder).isDir())
            continue;
        const QString found = findBelow(subfolder, identifier.mid(dash + 1), depth + 1);
        if (!found.isEmpty())
            return found;
    }
    return {};
}

Reason notAFile(const QString &path) { return u"“%1” is not a file."_s.arg(path); }

GText entryText(GKeyFile *keyFile, const char *key)
{
    return GText(g_key_file_get_string(keyFile, G_KEY_FILE_DESKTOP_GROUP, key, nullptr));
}

bool isHidden(const QString &path)
{
    const auto content = readRegularFile(path, desktopFileLimit);
    const auto keyFile = content ? parseKeyFile(*content, nullptr) : nullptr;
    return keyFile
        && g_key_file_get_boolean(keyFile.get(), G_KEY_FILE_DESKTOP_GROUP,
                                  G_KEY_FILE_DESKTOP_KEY_HIDDEN, nullptr);
}

// What stands for a list of GIO's without being a file.
Reason brokenListIn(const QString &folder)
{
    const auto lists = QDir(folder).entryInfoList({u"*.list"_s, u"mimeinfo.cache"_s},
                                                  QDir::AllEntries | QDir::System | QDir::Hidden);
    for (const QFileInfo &list : lists) {
        if (list.exists() && !list.isFile())
            return notAFile(list.filePath());
    }
    return std::nullopt;
}

// What GIO would not get past. Before it starts anything it reads its lists, where a pipe would
// hold it for ever, and looks into all folders below those of applications, through links as well.
Reason obstacleToGio()
{
    QStringList folders = InstalledApplications::standardFolders();
    const QStringList configuration
        = QStandardPaths::standardLocations(QStandardPaths::GenericConfigLocation);
    for (const QString &folder : folders + configuration) {
        if (const Reason broken = brokenListIn(folder))
            return broken;
    }
    for (qsizetype i = 0; i < folders.size(); ++i) {
        const QDir folder(folders[i]);
        for (const QString &name :
             folder.entryList(QDir::Dirs | QDir::NoDotAndDotDot | QDir::Hidden))
            folders.append(folder.filePath(name));
        if (folders.size() > MostFolders)
            return u"There are too many folders below “%1”."_s.arg(folder.path());
    }
    return std::nullopt;
}

// Tries the command so that the reason is the system's own. GIO only says that it takes no such
// entry. When the program is there after all, it has been started.
Reason tryCommand(const char *command)
{
    GError *error = nullptr;
    char **arguments = nullptr;
    if (!g_shell_parse_argv(command, nullptr, &arguments, &error))
        return reasonFrom(error);
    const GTexts owner(arguments);
    std::vector<char *> kept;
    for (char **argument = arguments; *argument; ++argument) {
        if (**argument != '%')
            kept.push_back(*argument);
    }
    kept.push_back(nullptr);
    constexpr auto flags = static_cast<GSpawnFlags>(G_SPAWN_SEARCH_PATH | G_SPAWN_STDOUT_TO_DEV_NULL
                                                    | G_SPAWN_STDERR_TO_DEV_NULL);
    if (!g_spawn_async(
            nullptr, kept.data(), nullptr, flags, [](void *) { ::setsid(); }, nullptr, nullptr,
            &error))
        return reasonFrom(error);
    return std::nullopt;
}

// Why GIO takes no entry from this file.
Reason reasonForRefusal(const QString &path, QByteArrayView content)
{
    GError *error = nullptr;
    const auto keyFile = parseKeyFile(content, &error);
    if (!keyFile)
        return reasonFrom(error);
    const GText type = entryText(keyFile.get(), G_KEY_FILE_DESKTOP_KEY_TYPE);
    const GText command = entryText(keyFile.get(), G_KEY_FILE_DESKTOP_KEY_EXEC);
    if (g_strcmp0(type.get(), G_KEY_FILE_DESKTOP_TYPE_APPLICATION) != 0 || !command)
        return u"“%1” does not describe an application."_s.arg(path);
    const GText required = entryText(keyFile.get(), G_KEY_FILE_DESKTOP_KEY_TRY_EXEC);
    if (required && !GText(g_find_program_in_path(required.get()))) {
        const GText quoted(g_shell_quote(required.get()));
        return tryCommand(quoted.get());
    }
    return tryCommand(command.get());
}

// Activation over D-Bus, which tells how it went, unlike GIO's blocking call. With a launch context
// GIO would complain, when it fails, that the context tracks no start.
Reason activate(GAppInfo *info, GCancellable *cancellable)
{
    struct Outcome
    {
        bool done = false;
        Reason reason;
    } outcome;
    g_app_info_launch_uris_async(
        info, nullptr, nullptr, cancellable,
        [](GObject *source, GAsyncResult *result, void *data) {
            auto &filled = *static_cast<Outcome *>(data);
            GError *error = nullptr;
            if (!g_app_info_launch_uris_finish(G_APP_INFO(source), result, &error))
                filled.reason = reasonFrom(error);
            filled.done = true;
        },
        &outcome);
    while (!outcome.done)
        g_main_context_iteration(g_main_context_get_thread_default(), true);
    return outcome.reason;
}

Reason spawn(GDesktopAppInfo *info)
{
    const GObjectPointer<GAppLaunchContext> launchContext(g_app_launch_context_new());
    // Tokens of our own start, which are not the application's to use.
    g_app_launch_context_unsetenv(launchContext.get(), "DESKTOP_STARTUP_ID");
    g_app_launch_context_unsetenv(launchContext.get(), "XDG_ACTIVATION_TOKEN");
    GError *error = nullptr;
    const int null = ::open("/dev/null", O_RDWR | O_CLOEXEC);
    const bool launched = g_desktop_app_info_launch_uris_as_manager_with_fds(
        info, nullptr, launchContext.get(), G_SPAWN_SEARCH_PATH, [](void *) { ::setsid(); },
        nullptr, nullptr, nullptr, null, null, null, &error);
    if (null >= 0)
        ::close(null);
    return launched ? std::nullopt : reasonFrom(error);
}

Reason start(const QString &path, GCancellable *cancellable)
{
    const auto content = readRegularFile(path, desktopFileLimit);
    if (!content)
        return notAFile(path);
    if (const Reason obstacle = obstacleToGio())
        return obstacle;
    const GObjectPointer<GDesktopAppInfo> info(
        g_desktop_app_info_new_from_filename(QFile::encodeName(path).constData()));
    if (!info)
        return reasonForRefusal(path, *content);
    if (g_desktop_app_info_get_boolean(info.get(), "DBusActivatable"))
        return activate(G_APP_INFO(info.get()), cancellable);
    return spawn(info.get());
}

// On a thread of its own, with a main context of its own: GIO waits for the session bus even to
// start a program that has nothing to do with it.
Reason startOnThisThread(const QString &path, GCancellable *cancellable)
{
    const std::unique_ptr<GMainContext, GMainContextRelease> context(g_main_context_new());
    g_main_context_push_thread_default(context.get());
    const Reason reason = start(path, cancellable);
    g_main_context_pop_thread_default(context.get());
    return reason;
}

} // namespace

struct ApplicationLauncher::Launch
{
    Handler handler;
    GObjectPointer<GCancellable> cancellable{g_cancellable_new()};
    std::thread thread;

    ~Launch()
    {
        g_cancellable_cancel(cancellable.get());
        if (thread.joinable())
            thread.join();
    }
};

ApplicationLauncher::ApplicationLauncher() = default;

// The launches go first, joined, so that none reports to a context that is gone.
ApplicationLauncher::~ApplicationLauncher() { m_launches.clear(); }

QUrl ApplicationLauncher::locate(const QString &bundleIdentifier) const
{
    if (bundleIdentifier.isEmpty() || bundleIdentifier.contains(u'/')
        || bundleIdentifier.contains(QChar::Null))
        return {};
    for (const QString &folder : InstalledApplications::standardFolders()) {
        const QString path = findBelow(folder, bundleIdentifier);
        if (!path.isEmpty())
            return isHidden(path) ? QUrl() : QUrl::fromLocalFile(path);
    }
    return {};
}

void ApplicationLauncher::launch(const QUrl &desktopFile, Handler handler)
{
    const std::uint64_t number = m_nextNumber++;
    auto launch = std::make_unique<Launch>();
    launch->handler = std::move(handler);
    launch->thread = std::thread([this, number, path = desktopFile.toLocalFile(),
                                  cancellable = launch->cancellable.get()] {
        const Reason reason = startOnThisThread(path, cancellable);
        QMetaObject::invokeMethod(
            &m_context, [this, number, reason] { finish(number, reason); }, Qt::QueuedConnection);
    });
    m_launches.emplace(number, std::move(launch));
}

void ApplicationLauncher::finish(std::uint64_t number, const std::optional<QString> &reason)
{
    // The handler may destroy this object.
    const auto node = m_launches.extract(number);
    node.mapped()->thread.join();
    node.mapped()->handler(reason);
}

} // namespace tovel
