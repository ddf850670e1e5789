#include "platform/session/kwin/shortcuts.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusMetaType>

#include <algorithm>

namespace tovel::kwin {

using namespace Qt::StringLiterals;

// A QKeySequence as it goes over the bus: up to four keys that follow each other.
struct KeySequence
{
    QList<int> keys;
};

QDBusArgument &operator<<(QDBusArgument &argument, const KeySequence &sequence)
{
    argument.beginStructure();
    argument << sequence.keys;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, KeySequence &sequence)
{
    argument.beginStructure();
    argument >> sequence.keys;
    argument.endStructure();
    return argument;
}

} // namespace tovel::kwin

Q_DECLARE_METATYPE(tovel::kwin::KeySequence)

namespace tovel::kwin {

namespace {

// Flags of setShortcutKeys: the key counts from now on, whatever was stored for the action.
constexpr uint SetPresent = 2;
constexpr uint NoAutoloading = 4;

const QString Service = u"org.kde.kglobalaccel"_s;
const QString Keyboards = u"org.kde.keyboard"_s;
const QString Layouts = u"org.kde.KeyboardLayouts"_s;
const QString Component = u"org.tovel.Tovel"_s;

QString nameOf(int number) { return u"shortcut-%1"_s.arg(number); }

// What the service knows an action by, and what it shows of it.
QStringList identifierOf(int number)
{
    return {Component, nameOf(number), u"Tovel"_s, u"Keyboard shortcut"_s};
}

QDBusMessage callOf(const QString &method, const QVariantList &arguments)
{
    auto call = QDBusMessage::createMethodCall(Service, u"/kglobalaccel"_s,
                                               u"org.kde.KGlobalAccel"_s, method);
    call.setArguments(arguments);
    return call;
}

QDBusMessage unregistering(int number)
{
    return callOf(u"unregister"_s, {Component, nameOf(number)});
}

// What was registered; 0 for nothing, or another kind of answer.
int registeredKey(const QDBusMessage &reply)
{
    if (reply.signature() != u"a(ai)")
        return 0;
    const auto sequences = qdbus_cast<QList<KeySequence>>(reply.arguments().value(0));
    return sequences.isEmpty() ? 0 : sequences.first().keys.value(0);
}

} // namespace

Shortcuts::Shortcuts(BusCalls &calls)
    : m_calls(calls)
{
    qDBusRegisterMetaType<KeySequence>();
    qDBusRegisterMetaType<QList<KeySequence>>();
    if (!isPossible())
        return;
    QDBusConnection &bus = m_calls.bus();
    const QString interface = u"org.kde.kglobalaccel.Component"_s;
    bus.connect(Service, QString(), interface, u"globalShortcutPressed"_s, this,
                SLOT(press(QString, QString)));
    bus.connect(Service, QString(), interface, u"globalShortcutReleased"_s, this,
                SLOT(letGo(QString, QString)));
    bus.connect(Keyboards, u"/Layouts"_s, Layouts, u"layoutChanged"_s, this, SLOT(setLayout(uint)));
    // Only there where the user has several.
    m_layout = m_calls
                   .ask(QDBusMessage::createMethodCall(Keyboards, u"/Layouts"_s, Layouts,
                                                       u"getLayout"_s))
                   .arguments()
                   .value(0)
                   .toUInt();
    m_watcher.setConnection(bus);
    m_watcher.setWatchMode(QDBusServiceWatcher::WatchForRegistration);
    m_watcher.addWatchedService(Service);
    QObject::connect(&m_watcher, &QDBusServiceWatcher::serviceRegistered, this,
                     &Shortcuts::enrollAll);
}

// What is only told may get lost where the program ends next.
Shortcuts::~Shortcuts()
{
    for (const Action &action : m_actions)
        m_calls.demand(unregistering(action.number));
}

KeyGrab Shortcuts::grab(const SessionKey &key)
{
    if (!isPossible())
        return KeyGrab::Impossible;
    Action action{.number = 1, .key = key};
    while (std::ranges::count(m_actions, action.number, &Action::number) > 0)
        ++action.number;
    const KeyGrab outcome = enroll(action);
    if (outcome == KeyGrab::Granted)
        m_actions.push_back(action);
    else
        m_calls.tell(unregistering(action.number));
    return outcome;
}

void Shortcuts::release(const SessionKey &key)
{
    const auto found = std::ranges::find(m_actions, key, &Action::key);
    if (found == m_actions.end())
        return;
    m_calls.tell(unregistering(found->number));
    m_actions.erase(found);
}

KeyGrab Shortcuts::enroll(Action &action)
{
    action.isHeld = false;
    action.combination = m_meanings.combination(action.key, m_layout);
    if (action.combination == 0)
        return KeyGrab::Impossible;
    const QStringList identifier = identifierOf(action.number);
    m_calls.tell(callOf(u"doRegister"_s, {identifier}));
    const QList<KeySequence> keys{{{action.combination, 0, 0, 0}}};
    const QDBusMessage reply = m_calls.demand(callOf(
        u"setShortcutKeys"_s, {identifier, QVariant::fromValue(keys), SetPresent | NoAutoloading}));
    if (registeredKey(reply) == action.combination)
        return KeyGrab::Granted;
    return reply.type() == QDBusMessage::ReplyMessage ? KeyGrab::Taken : KeyGrab::Impossible;
}

// A key that another program has in the other layout is lost until that changes again. A service
// that is silent now has been told all, and may follow later.
void Shortcuts::enrollAll()
{
    // All are given up first: one may get what was another's.
    for (const Action &action : m_actions)
        m_calls.tell(unregistering(action.number));
    for (Action &action : m_actions) {
        if (enroll(action) == KeyGrab::Taken)
            m_calls.tell(unregistering(action.number));
    }
}

void Shortcuts::setHandler(std::function<void(const SessionKey &key)> handler)
{
    m_handler = std::move(handler);
}

void Shortcuts::setKeymap(const QByteArray &keymap)
{
    if (std::exchange(m_keymap, keymap) == keymap)
        return;
    m_meanings = KeyMeanings(keymap);
    enrollAll();
}

void Shortcuts::setLayout(uint layout)
{
    if (std::exchange(m_layout, layout) != layout)
        enrollAll();
}

void Shortcuts::press(const QString &component, const QString &action)
{
    Action *found = find(component, action);
    // A key that is held is told again and again.
    if (!found || std::exchange(found->isHeld, true) || !m_handler)
        return;
    const SessionKey key = found->key;
    m_handler(key);
}

void Shortcuts::letGo(const QString &component, const QString &action)
{
    if (Action *found = find(component, action))
        found->isHeld = false;
}

Shortcuts::Action *Shortcuts::find(const QString &component, const QString &action)
{
    const auto found = std::ranges::find_if(m_actions, [&](const Action &candidate) {
        return component == Component && nameOf(candidate.number) == action;
    });
    return found == m_actions.end() ? nullptr : &*found;
}

} // namespace tovel::kwin
