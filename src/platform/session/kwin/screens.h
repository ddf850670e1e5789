#pragma once

#include "platform/session/session_records.h"

#include <QHash>
#include <QStringList>

#include <cstdint>
#include <memory>
#include <vector>

struct kde_output_order_v1;
struct wl_output;
struct zxdg_output_manager_v1;
struct zxdg_output_v1;

namespace tovel::kwin {

class Connection;
struct Global;

// The screens, kept by events: their names and logical geometry (xdg-output), and which is first
// (kde-output-order).
class Screens final
{
public:
    // The changes are counted in the number; the screens keep their numbers by their names. Both
    // outlive this.
    Screens(Connection &connection, std::uint64_t &changes, QHash<QString, std::uint32_t> &numbers);
    ~Screens();

    Screens(const Screens &) = delete;
    Screens &operator=(const Screens &) = delete;

    // Takes what is of use here of the compositor's.
    void appear(const Global &global);
    void vanish(std::uint32_t name);

    // The primary screen first.
    QList<SessionScreen> list() const;

    // For the library's callbacks.
    struct Entry
    {
        Screens *owner = nullptr;
        std::uint32_t global = 0;
        wl_output *output = nullptr;
        zxdg_output_v1 *logical = nullptr;
        QString name{};
        QRectF bounds{};
    };
    void changed() { ++m_changes; }
    void order(const char *name);
    void ordered();

private:
    void describe(Entry &entry);
    static void destroyProxies(Entry &entry);

    Connection &m_connection;
    std::uint64_t &m_changes;
    QHash<QString, std::uint32_t> &m_numbers;
    zxdg_output_manager_v1 *m_manager = nullptr;
    kde_output_order_v1 *m_orderProxy = nullptr;
    std::vector<std::unique_ptr<Entry>> m_entries;
    QStringList m_order; // of names, the first one is primary
    QStringList m_nextOrder; // being told
};

} // namespace tovel::kwin
