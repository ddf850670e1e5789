#include "pictures/icon_theme.h"

#include "platform/regular_file.h"

#include <QDir>
#include <QFileInfo>
#include <QHash>
#include <QStandardPaths>

#include <algorithm>
#include <limits>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 largestIndex = 1024 * 1024;
constexpr qsizetype mostFolders = 2000;
constexpr qsizetype mostParents = 16;
constexpr qsizetype mostThemes = 32;
constexpr int largestSize = 4096;

using Group = QHash<QByteArray, QByteArray>;

QHash<QByteArray, Group> parseGroups(QByteArrayView text)
{
    QHash<QByteArray, Group> groups;
    QByteArray current;
    for (const QByteArray &untrimmed : text.toByteArray().split('\n')) {
        const QByteArray line = untrimmed.trimmed();
        const qsizetype equals = line.indexOf('=');
        if (line.startsWith('[') && line.endsWith(']'))
            current = line.sliced(1, line.size() - 2);
        else if (equals > 0 && !line.startsWith('#'))
            groups[current].insert(line.first(equals).trimmed(), line.sliced(equals + 1).trimmed());
    }
    return groups;
}

QStringList list(const Group &group, const QByteArray &key, qsizetype limit)
{
    QStringList all = QString::fromUtf8(group.value(key)).split(u',', Qt::SkipEmptyParts);
    all.resize(std::min(limit, all.size()));
    for (QString &item : all)
        item = item.trimmed();
    return all;
}

int number(const Group &group, const QByteArray &key, int otherwise)
{
    bool ok = false;
    const int number = group.value(key).toInt(&ok);
    return ok && number > 0 && number <= largestSize ? number : otherwise;
}

IconFolder folder(const QString &path, const Group &group)
{
    const int size = number(group, "Size", 0);
    const int scale = number(group, "Scale", 1);
    const QByteArray type = group.value("Type", "Threshold");
    IconFolder folder{path, size * scale, size * scale};
    if (type == "Scalable") {
        folder.smallest = number(group, "MinSize", size) * scale;
        folder.largest = number(group, "MaxSize", size) * scale;
    } else if (type == "Threshold") {
        const int threshold = number(group, "Threshold", 2);
        folder.smallest = (size - threshold) * scale;
        folder.largest = (size + threshold) * scale;
    }
    return folder;
}

// How little a folder suits the size. A smaller picture would have to be blown up.
int distance(const IconFolder &folder, int pixels)
{
    if (pixels > folder.largest)
        return std::numeric_limits<int>::max() - folder.largest;
    return std::max(0, folder.smallest - pixels);
}

QString fileIn(const QString &folder, const QString &name)
{
    for (const auto ending : {".png"_L1, ".svg"_L1, ".xpm"_L1}) {
        const QString path = folder + u'/' + name + ending;
        if (QFileInfo(path).isFile())
            return path;
    }
    return {};
}

// One search through the themes; reads the index of each once.
class Search final
{
public:
    Search(const QStringList &themes, int pixels, const QStringList &roots)
        : m_pixels(pixels)
        , m_roots(roots)
    {
        for (const QString &theme : themes)
            add(theme);
        add(u"hicolor"_s);
    }

    QString find(const QString &name) const
    {
        for (const Place &place : m_places) {
            for (const IconFolder &folder : place.theme.folders) {
                for (const QString &base : place.bases) {
                    const QString path = fileIn(base + u'/' + folder.path, name);
                    if (!path.isEmpty())
                        return path;
                }
            }
        }
        for (const QString &root : m_roots) {
            const QString path = fileIn(root, name);
            if (!path.isEmpty())
                return path;
        }
        return {};
    }

private:
    struct Place
    {
        QString name;
        QStringList bases; // the theme's folders, for it may be in several roots
        IconTheme theme; // its folders in the order of their fitness
    };

    void add(const QString &name)
    {
        const bool isKnown
            = std::ranges::any_of(m_places, [&](const Place &place) { return place.name == name; });
        if (isKnown || name.isEmpty() || name.contains(u'/') || m_places.size() == mostThemes)
            return;
        Place place{name};
        for (const QString &root : m_roots) {
            const QString base = root + u'/' + name;
            if (!QFileInfo(base).isDir())
                continue;
            place.bases.append(base);
            if (place.theme.folders.isEmpty()) {
                if (const auto index = readRegularFile(base + u"/index.theme"_s, largestIndex))
                    place.theme = parseIconTheme(*index);
            }
        }
        std::ranges::stable_sort(place.theme.folders, {}, [this](const IconFolder &folder) {
            return distance(folder, m_pixels);
        });
        const QStringList parents = place.theme.parents;
        m_places.append(std::move(place));
        for (const QString &parent : parents) {
            // The last one everywhere.
            if (parent != u"hicolor")
                add(parent);
        }
    }

    int m_pixels;
    QStringList m_roots;
    QList<Place> m_places;
};

} // namespace

IconTheme parseIconTheme(QByteArrayView index)
{
    const QHash<QByteArray, Group> groups = parseGroups(index);
    const Group header = groups.value("Icon Theme");
    IconTheme theme;
    theme.parents = list(header, "Inherits", mostParents);
    for (const QByteArray &key : {"Directories"_ba, "ScaledDirectories"_ba}) {
        for (const QString &path : list(header, key, mostFolders)) {
            const auto group = groups.constFind(path.toUtf8());
            if (group != groups.cend() && number(*group, "Size", 0) > 0)
                theme.folders.append(folder(path, *group));
        }
    }
    return theme;
}

QStringList iconRoots()
{
    QStringList roots{QDir::homePath() + u"/.icons"_s};
    const QStringList data = QStandardPaths::standardLocations(QStandardPaths::GenericDataLocation);
    for (const QString &folder : data)
        roots.append(folder + u"/icons"_s);
    for (const QString &folder : data)
        roots.append(folder + u"/pixmaps"_s);
    return roots;
}

QString findIcon(const QString &name, const QStringList &themes, int pixels,
                 const QStringList &roots)
{
    if (name.isEmpty() || name.contains(u'/') || name.contains(QChar::Null))
        return {};
    const Search search(themes, pixels, roots);
    QString path = search.find(name);
    // "mail-unread-new" is a kind of "mail-unread" (freedesktop.org icon naming).
    for (qsizetype dash = name.lastIndexOf(u'-'); path.isEmpty() && dash > 0;
         dash = name.lastIndexOf(u'-', dash - 1))
        path = search.find(name.first(dash));
    return path;
}

} // namespace tovel
