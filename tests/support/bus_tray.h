#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QHash>
#include <QString>
#include <QVariantMap>

namespace tovel {

// A tray for items on the bus, with the watcher that they register with; in the test's own process.
// It is there as long as this object, and answers while the event loop turns.
class BusTray final : public QDBusVirtualObject
{
public:
    enum class Manner { Regular, Silent, Mistyped, Refusing };

    explicit BusTray(const QString &busAddress, Manner manner = Manner::Regular);
    ~BusTray() override;

    // Whether exactly one item has registered, and what it says of itself.
    bool hasItem() const { return m_items.size() == 1; }
    QVariantMap itemProperties() const;
    void activateItem() const;
    // What the item's menu shows now, down to its first submenu; a check mark leads its label.
    QStringList menu() const;
    // Clicks the line of the menu that was read last; false when there is none.
    bool choose(const QString &label) const;
    // How often it was asked for anything.
    int questions() const { return m_questions; }

    QString introspect(const QString &) const override { return {}; }
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override;

private:
    QDBusMessage toMenu(const QString &method) const;

    QDBusConnection m_bus;
    Manner m_manner;
    QStringList m_items;
    mutable QHash<QString, int> m_lines;
    int m_questions = 0;
};

} // namespace tovel
