#pragma once

#include "platform/linux/applications/application_index.h"

#include <QHash>
#include <QString>
#include <QStringList>

#include <optional>

namespace tovel {

// The applications that are installed on this system: the desktop entries in the applications
// folders, an earlier folder's entry hiding a later one's of the same id. Entries that say Hidden,
// or whose program is not there, do not count.
class InstalledApplications final
{
public:
    explicit InstalledApplications(QStringList folders = standardFolders());

    // The applications folders of the user and of the system, in their order of precedence
    // (freedesktop.org base directories); they need not exist.
    static QStringList standardFolders();

    // Reads the folders when first asked. Stays valid until reloadIfChanged() answers true.
    const ApplicationIndex &index();

    // Reads the folders again when one of them changed since; true when it did so. Costs one stat
    // per folder otherwise; entries rewritten in place, without a new file, go unnoticed. A folder
    // that changed in the seconds before it was read counts as changed, since packages arrive file
    // by file.
    bool reloadIfChanged();

private:
    void load();

    QStringList m_folders;
    std::optional<ApplicationIndex> m_index;
    QHash<QString, qint64>
        m_folderTimes; // milliseconds since 1970, 0 for a folder that is not there
};

} // namespace tovel
