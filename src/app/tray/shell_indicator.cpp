#include "app/tray/shell_indicator.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

#include <utility>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

const QString extension = QStringLiteral("org.tovel.Shell1");

} // namespace

ShellIndicator::ShellIndicator(const QDBusConnection &bus)
    : m_owner(extension, bus, QDBusServiceWatcher::WatchForOwnerChange)
{
    connect(&m_owner, &QDBusServiceWatcher::serviceOwnerChanged, this,
            [this](const QString &, const QString &, const QString &owner) {
                setThere(!owner.isEmpty());
            });
    QDBusMessage question
        = QDBusMessage::createMethodCall(u"org.freedesktop.DBus"_s, u"/org/freedesktop/DBus"_s,
                                         u"org.freedesktop.DBus"_s, u"NameHasOwner"_s);
    question << extension;
    auto *call = new QDBusPendingCallWatcher(bus.asyncCall(question), this);
    connect(call, &QDBusPendingCallWatcher::finished, this, [this, call] {
        call->deleteLater();
        const QDBusPendingReply<bool> answer = *call;
        setThere(answer.isValid() && answer.value());
    });
}

void ShellIndicator::setThere(bool isThere)
{
    if (std::exchange(m_isThere, isThere) != isThere)
        Q_EMIT changed();
}

} // namespace tovel
