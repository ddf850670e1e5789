#pragma once

#include <QString>

#include <cstdint>
#include <memory>
#include <vector>

struct org_kde_plasma_virtual_desktop;
struct org_kde_plasma_virtual_desktop_management;

namespace tovel::kwin {

class Connection;

struct Desktop
{
    QString uuid;
    QString name;
};

// More than KWin offers.
inline constexpr std::size_t MaximumDesktops = 256;

// KWin's virtual desktops, kept by events (org_kde_plasma_virtual_desktop_management).
class Desktops final
{
public:
    static constexpr std::uint32_t Version = 2;

    // The changes are counted in the number, which outlives this.
    Desktops(Connection &connection, org_kde_plasma_virtual_desktop_management *management,
             std::uint64_t &changes);
    ~Desktops();

    Desktops(const Desktops &) = delete;
    Desktops &operator=(const Desktops &) = delete;

    // In their order.
    std::vector<Desktop> list() const;
    bool contains(const QString &uuid) const;

    // The uuid; of a desktop that is gone where KWin has not told which one it shows instead.
    const QString &shown() const { return m_shown; }
    void setShown(const QString &uuid);

    // False for one that is not there.
    bool show(const QString &uuid);

    // For the library's callbacks.
    struct Entry
    {
        Desktops *owner = nullptr;
        org_kde_plasma_virtual_desktop *proxy = nullptr;
        Desktop desktop{};
    };
    void add(const char *uuid, std::uint32_t position);
    void remove(const char *uuid);
    void rename(Entry &entry, const char *name);

private:
    Entry *find(const QString &uuid) const;

    Connection &m_connection;
    org_kde_plasma_virtual_desktop_management *m_management;
    std::uint64_t &m_changes;
    std::vector<std::unique_ptr<Entry>> m_entries;
    QString m_shown;
};

} // namespace tovel::kwin
