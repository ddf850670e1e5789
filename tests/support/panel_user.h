#pragma once

#include "platform/user_defaults.h"
#include "support/private_session.h"

#include <QList>
#include <QRect>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <optional>

namespace tovel {

// One object of the panel, as an assistive program finds it.
struct SeenObject
{
    QString name{};
    QString role{};
    QString description{};
    QString text{}; // of a field
    QString group{}; // the name of the nearest named object around it
    QStringList states{};
    QRect place{}; // on the screen

    bool is(QLatin1StringView state) const { return states.contains(state); }
};

// A mouse and a keyboard.
struct Hands
{
    std::function<void(const QString &keys)> press{};
    std::function<void(QPoint place, int button)> click{}; // from the panel's corner
};

// Someone at the panel: runs the program in an assistive session, sees what an assistive program
// sees of it, and works with the mouse and the keys of that session. What is looked for is waited
// for; a false result means that it did not come in good time.
class PanelUser final
{
public:
    // The session must be an assistive one and live longer. Without hands, those of its X server
    // are used.
    explicit PanelUser(PrivateSession &session, Hands hands = {});
    ~PanelUser();

    PanelUser(const PanelUser &) = delete;
    PanelUser &operator=(const PanelUser &) = delete;

    // Until its window has the keyboard.
    bool start(const QProcessEnvironment &changes = {});
    bool isRunning() const;
    // Whether the panel has the keyboard, or is there at all, now.
    bool isActive();
    bool isShown();
    // By a signal.
    void stop();
    // Waits for the end that the keys or the menu asked for.
    Outcome outcome();

    // All that is showing now, from the application down; the popups last.
    QList<SeenObject> look();
    // Once it is there, and stays where it is.
    std::optional<SeenObject> find(const QString &name, const QString &role = {});
    bool isGone(const QString &name);
    // Now.
    bool sees(const QString &name);
    // The names of the buttons that begin so, without that beginning.
    QStringList buttons(const QString &beginning);
    // The control that has the keyboard now.
    QString focused();
    bool isFocused(const QString &name);

    bool click(const QString &name, int button = 1);
    bool point(const QString &name);
    void press(const QStringList &keys);
    void type(const QString &text);
    // Of a field, once it is so.
    bool textIs(const QString &field, const QString &text);

    // What the program has stored.
    DefaultsReading stored() const;

private:
    PrivateSession &m_session;
    Hands m_hands;
    std::unique_ptr<QProcess> m_reader;
    std::unique_ptr<QProcess> m_program;
};

} // namespace tovel
