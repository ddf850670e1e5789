#include "platform/linux/installed_applications.h"

#include "platform/linux/glib_pointer.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMap>
#include <QStandardPaths>

#include <algorithm>
#include <array>
#include <utility>

#include <gio/gdesktopappinfo.h>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

constexpr int deepestFolder = 4;
constexpr qint64 settleTime = 10'000; // milliseconds
constexpr qint64 unsettled = -1;

qint64 modificationTime(const QString &folder)
{
    const QFileInfo info(folder);
    return info.isDir() ? info.lastModified().toMSecsSinceEpoch() : 0;
}

// Programs that run others: that a window's process is one of them says nothing.
bool isLauncher(const QString &program)
{
    static constexpr std::array launchers{u"bash", u"dash", u"electron", u"env",  u"flatpak",
                                          u"gjs",  u"java", u"node",     u"perl", u"ruby",
                                          u"sh",   u"snap", u"sudo",     u"wine", u"xdg-open"};
    return program.startsWith(u"python")
        || std::ranges::any_of(launchers, [&](QStringView name) { return program == name; });
}

QString programOf(GDesktopAppInfo *info)
{
    if (g_desktop_app_info_get_boolean(info, "Terminal"))
        return {};
    const char *executable = g_app_info_get_executable(G_APP_INFO(info));
    const QString name = QFileInfo(QFile::decodeName(executable)).fileName();
    return isLauncher(name) ? QString() : name;
}

QString iconOf(GDesktopAppInfo *info)
{
    const GText text(g_desktop_app_info_get_string(info, "Icon"));
    QString icon = QString::fromUtf8(text.get());
    if (!icon.startsWith(u'/')) {
        // A theme name with a suffix is an error that many entries make.
        for (const QStringView suffix : {u".png", u".svg", u".xpm"}) {
            if (icon.endsWith(suffix))
                icon.chop(suffix.size());
        }
    }
    return icon;
}

std::optional<ApplicationEntry> readEntry(const QString &identifier, const QString &path)
{
    const GObjectPointer<GDesktopAppInfo> info(
        g_desktop_app_info_new_from_filename(QFile::encodeName(path).constData()));
    if (!info || g_desktop_app_info_get_is_hidden(info.get()))
        return std::nullopt;
    ApplicationEntry entry;
    entry.bundleIdentifier = identifier;
    entry.name = cleanClue(QString::fromUtf8(g_app_info_get_name(G_APP_INFO(info.get()))));
    entry.icon = iconOf(info.get());
    entry.path = path;
    entry.startupWMClass = QString::fromUtf8(g_desktop_app_info_get_startup_wm_class(info.get()));
    entry.executable = programOf(info.get());
    entry.visible = !g_desktop_app_info_get_nodisplay(info.get());
    return entry;
}

} // namespace

InstalledApplications::InstalledApplications(QStringList folders)
    : m_folders(std::move(folders))
{ }

QStringList InstalledApplications::standardFolders()
{
    return QStandardPaths::standardLocations(QStandardPaths::ApplicationsLocation);
}

const ApplicationIndex &InstalledApplications::index()
{
    if (!m_index)
        load();
    return *m_index;
}

bool InstalledApplications::reloadIfChanged()
{
    if (m_index
        && std::all_of(
            m_folderTimes.keyValueBegin(), m_folderTimes.keyValueEnd(),
            [](const auto &folder) { return folder.second == modificationTime(folder.first); }))
        return false;
    load();
    return true;
}

void InstalledApplications::load()
{
    m_folderTimes.clear();
    const qint64 now = QDateTime::currentMSecsSinceEpoch();
    QMap<QString, QString> paths; // by identifier

    const auto collect
        = [&](const auto &self, const QString &folder, const QString &prefix, int depth) -> void {
        const qint64 time = modificationTime(folder);
        m_folderTimes.insert(folder, time + settleTime > now ? unsettled : time);
        const QDir directory(folder);
        const auto files = directory.entryInfoList({u"*.desktop"_s}, QDir::Files | QDir::Hidden);
        for (const QFileInfo &file : files) {
            const QString identifier = prefix + file.completeBaseName();
            if (!paths.contains(identifier))
                paths.insert(identifier, file.filePath());
        }
        if (depth == deepestFolder)
            return;
        for (const QString &name : directory.entryList(QDir::Dirs | QDir::NoDotAndDotDot))
            self(self, folder + u'/' + name, prefix + name + u'-', depth + 1);
    };
    for (const QString &folder : std::as_const(m_folders))
        collect(collect, folder, QString(), 1);

    std::vector<ApplicationEntry> entries;
    entries.reserve(static_cast<std::size_t>(paths.size()));
    for (auto it = paths.cbegin(); it != paths.cend(); ++it) {
        if (auto entry = readEntry(it.key(), it.value()))
            entries.push_back(*std::move(entry));
    }
    m_index.emplace(std::move(entries));
}

} // namespace tovel
