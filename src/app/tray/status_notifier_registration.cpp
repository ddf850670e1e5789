#include "app/tray/status_notifier_registration.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusVariant>

#include <limits>
#include <utility>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

// The name of the watcher and of its interface.
const QString watcher = QStringLiteral("org.kde.StatusNotifierWatcher");
const QString watcherPath = QStringLiteral("/StatusNotifierWatcher");

// A watcher that is busy at its start answers late; when it goes, the bus answers for it.
constexpr int forever = std::numeric_limits<int>::max();

// As Qt reads the answer, which asks the same before its first icon.
bool isTrue(const QDBusMessage &answer)
{
    const QVariant value = answer.arguments().value(0);
    return answer.type() == QDBusMessage::ReplyMessage && value.canConvert<QDBusVariant>()
        && value.value<QDBusVariant>().variant().toBool();
}

} // namespace

StatusNotifierRegistration::StatusNotifierRegistration(const QDBusConnection &bus,
                                                       const QString &service)
    : m_bus(bus)
    , m_service(service)
    , m_owner(watcher, bus, QDBusServiceWatcher::WatchForOwnerChange)
{
    connect(&m_owner, &QDBusServiceWatcher::serviceOwnerChanged, this, [this] {
        setState(State::Undecided);
        ask();
    });
    // For a named sender the library would wait for the bus to say who that is.
    for (const QString &change :
         {u"StatusNotifierHostRegistered"_s, u"StatusNotifierHostUnregistered"_s})
        m_bus.connect(QString(), watcherPath, watcher, change, this, SLOT(ask()));
    // The bus itself may go.
    m_bus.connect(QString(), u"/org/freedesktop/DBus/Local"_s, u"org.freedesktop.DBus.Local"_s,
                  u"Disconnected"_s, this, SLOT(ask()));
    ask();
}

StatusNotifierRegistration::~StatusNotifierRegistration() = default;

void StatusNotifierRegistration::ask()
{
    QDBusMessage question = QDBusMessage::createMethodCall(
        watcher, watcherPath, u"org.freedesktop.DBus.Properties"_s, u"Get"_s);
    question << watcher << u"IsStatusNotifierHostRegistered"_s;
    call(question, &StatusNotifierRegistration::takeAnswer);
}

void StatusNotifierRegistration::takeAnswer(const QDBusMessage &answer)
{
    if (!isTrue(answer)) {
        call(QDBusMessage::createMethodCall(
                 watcher, watcherPath, u"org.freedesktop.DBus.Introspectable"_s, u"Introspect"_s),
             &StatusNotifierRegistration::takeDescription);
        return;
    }
    QDBusMessage registration = QDBusMessage::createMethodCall(watcher, watcherPath, watcher,
                                                               u"RegisterStatusNotifierItem"_s);
    registration << m_service;
    call(registration, &StatusNotifierRegistration::takeReceipt);
}

// Others in this process ask for the description too, and wait for it.
void StatusNotifierRegistration::takeDescription(const QDBusMessage &) { setState(State::NoTray); }

void StatusNotifierRegistration::takeReceipt(const QDBusMessage &receipt)
{
    setState(receipt.type() == QDBusMessage::ReplyMessage ? State::Registered : State::Undecided);
}

void StatusNotifierRegistration::call(
    const QDBusMessage &message, void (StatusNotifierRegistration::*take)(const QDBusMessage &))
{
    QDBusMessage request = message;
    request.setAutoStartService(false);
    // Whatever the call before it finds no longer counts.
    m_call = std::make_unique<QDBusPendingCallWatcher>(m_bus.asyncCall(request, forever));
    connect(m_call.get(), &QDBusPendingCallWatcher::finished, this, [this, take] {
        const auto finished = std::exchange(m_call, nullptr);
        (this->*take)(finished->reply());
    });
}

void StatusNotifierRegistration::setState(State state)
{
    if (std::exchange(m_state, state) != state)
        Q_EMIT stateChanged();
}

} // namespace tovel
