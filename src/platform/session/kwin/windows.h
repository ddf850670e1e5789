#pragma once

#include <QByteArray>
#include <QRectF>
#include <QString>
#include <QStringList>

#include <cstdint>
#include <memory>

#include <vector>

struct org_kde_plasma_stacking_order;
struct org_kde_plasma_window;
struct org_kde_plasma_window_management;

namespace tovel::kwin {

class Connection;

struct Window
{
    std::uint32_t id = 0; // unlike KWin's number, not that of another window of an earlier KWin
    QString title;
    QString application;
    std::uint32_t states = 0; // org_kde_plasma_window_management.state
    QStringList desktops; // uuids; none for a window on all
    std::uint32_t parent = 0; // its id; 0: none
    QRectF frame; // with its border, global pixels
    std::int32_t process = 0;

    bool isActive() const;
    bool isMinimized() const;
    bool isFullScreen() const;
    bool isOnAllDesktops() const;
    bool skipsTaskBar() const;

    bool operator==(const Window &) const = default;
};

// More than anybody opens.
inline constexpr std::size_t MaximumWindows = 8192;

// The windows that KWin manages, kept by events (org_kde_plasma_window_management).
class Windows final
{
public:
    // The version to take of those that are offered. From 12 to 16 the stacking order is told by
    // one message that cannot take the names of more than 104 windows: KWin 5.27 drops the client
    // that asked for them. KWin 6, which has later ones, ends a window at once that is asked for by
    // its number, as is done before 12.
    static std::uint32_t versionOf(std::uint32_t offered);

    // The changes are counted in the number; the ids begin after the other, the highest so far.
    // Every program that knew no earlier KWin gives the same ids. Both numbers outlive this.
    Windows(Connection &connection, org_kde_plasma_window_management *management,
            std::uint64_t &changes, std::uint32_t &lastId);
    ~Windows();

    Windows(const Windows &) = delete;
    Windows &operator=(const Windows &) = delete;

    // Those of which everything is known, oldest first. Each holds until the next event.
    std::vector<const Window *> list() const;
    const Window *find(std::uint32_t id) const;
    // Ids, front to back.
    std::vector<std::uint32_t> stackingOrder() const;
    bool hasMore() const { return m_hasMore; } // than MaximumWindows

    // KWin tells of no parent that it was not asked for yet, which may be one that came after its
    // child: windows without are asked for again, once all are known, and the copies let go. False
    // where there is none to ask for.
    bool askForParents();
    void forgetCopies();

    // Requests; the window has to be there.
    void enterDesktop(std::uint32_t window, const QString &uuid);
    void leaveDesktop(std::uint32_t window, const QString &uuid);
    void activate(std::uint32_t window);
    void setAbove(std::uint32_t window, bool on);

    // For the library's callbacks.
    struct Entry
    {
        Windows *owner = nullptr;
        org_kde_plasma_window *proxy = nullptr;
        org_kde_plasma_window *copy = nullptr;
        std::uint32_t counter = 0; // KWin's number
        QByteArray key{}; // its uuid where KWin tells that, else the number
        bool isKnown = false; // its first state has been told
        bool isParentSure = false;
        Window window{};
    };
    void add(std::uint32_t counter, const char *uuid);
    void restack(std::vector<QByteArray> keys);
    void askForOrder();
    void takeOrder(org_kde_plasma_stacking_order *proxy);
    void nextInOrder(org_kde_plasma_stacking_order *proxy, const char *uuid);
    void remove(Entry &entry);
    void changed(bool isDifferent) { m_changes += isDifferent; }
    void adopt(Entry &entry, org_kde_plasma_window *proxy, org_kde_plasma_window *parent);

private:
    // The order as it is being told, bottom to top.
    struct Order
    {
        org_kde_plasma_stacking_order *proxy = nullptr;
        std::vector<QByteArray> keys;
    };

    Entry *entry(std::uint32_t id) const;
    org_kde_plasma_window *ask(Entry &entry);
    void setState(std::uint32_t window, std::uint32_t state, bool on);
    void destroyProxies(Entry &entry);

    Connection &m_connection;
    org_kde_plasma_window_management *m_management;
    std::uint64_t &m_changes;
    std::uint32_t &m_lastId;
    std::uint32_t m_before; // the highest id of earlier ones
    std::vector<std::unique_ptr<Entry>> m_entries;
    std::vector<QByteArray> m_stacking; // keys, bottom to top
    std::vector<Order> m_orders; // that were asked for
    bool m_hasMore = false;
};

} // namespace tovel::kwin
