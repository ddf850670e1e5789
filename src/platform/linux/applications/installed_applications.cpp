#include "platform/linux/applications/installed_applications.h"

#include "platform/linux/applications/desktop_entry.h"
#include "platform/regular_file.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QMap>
#include <QStandardPaths>

#include <algorithm>
#include <utility>

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
        const auto content = readRegularFile(it.value(), desktopFileLimit);
        auto entry = content ? parseDesktopEntry(it.key(), it.value(), *content) : std::nullopt;
        if (entry)
            entries.push_back(*std::move(entry));
    }
    m_index.emplace(std::move(entries));
}

} // namespace tovel
