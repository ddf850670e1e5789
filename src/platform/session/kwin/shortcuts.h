#pragma once

#include "platform/session/kwin/bus_calls.h"
#include "platform/session/kwin/key_meanings.h"
#include "platform/session/session_records.h"

#include <QDBusServiceWatcher>
#include <QObject>
#include <QString>

#include <cstdint>
#include <functional>
#include <vector>

namespace tovel::kwin {

// Global keys by org.kde.kglobalaccel, which is KWin itself. It knows keys by their symbols: when
// the layout changes, they are registered anew. A key of a program that died stays taken until the
// same action is registered again; actions are numbered from 1, so that the next run takes over.
class Shortcuts final : public QObject
{
    Q_OBJECT

public:
    // The calls have to outlive it.
    explicit Shortcuts(BusCalls &calls);
    // Gives up every key.
    ~Shortcuts() override;

    bool isPossible() const { return m_calls.bus().isConnected(); }

    KeyGrab grab(const SessionKey &key);
    void release(const SessionKey &key);

    // Called from the event loop, once for each press.
    void setHandler(std::function<void(const SessionKey &key)> handler);

    // What the keys mean now, in the text format of XKB.
    void setKeymap(const QByteArray &keymap);

public Q_SLOTS:
    void press(const QString &component, const QString &action);
    void letGo(const QString &component, const QString &action);
    void setLayout(uint layout);

private:
    struct Action
    {
        int number = 0;
        SessionKey key{};
        int combination = 0; // that is registered; 0: none
        bool isHeld = false;
    };

    KeyGrab enroll(Action &action);
    void enrollAll();
    Action *find(const QString &component, const QString &action);

    BusCalls &m_calls;
    QDBusServiceWatcher m_watcher;
    KeyMeanings m_meanings{QByteArray()};
    QByteArray m_keymap;
    std::uint32_t m_layout = 0;
    std::vector<Action> m_actions;
    std::function<void(const SessionKey &key)> m_handler;
};

} // namespace tovel::kwin
