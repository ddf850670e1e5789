#include "app/tray/shell_indicator.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>

#include <limits>
#include <utility>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

const QString extension = QStringLiteral("org.tovel.Shell1");

} // namespace

ShellIndicator::ShellIndicator(const QDBusConnection &bus)
    : m_bus(bus)
    , m_owner(extension, bus, QDBusServiceWatcher::WatchForOwnerChange)
{
    connect(&m_owner, &QDBusServiceWatcher::serviceOwnerChanged, this, &ShellIndicator::ask);
    ask();
}

// It shows the icon of those programs alone that it serves.
void ShellIndicator::ask()
{
    setThere(false);
    auto question = QDBusMessage::createMethodCall(extension, u"/org/tovel/Shell1"_s, extension,
                                                   u"CursorPosition"_s);
    question.setAutoStartService(false);
    // A Shell that is busy at its start answers late; when it goes, the bus answers for it.
    constexpr int forever = std::numeric_limits<int>::max();
    m_question = std::make_unique<QDBusPendingCallWatcher>(m_bus.asyncCall(question, forever));
    connect(m_question.get(), &QDBusPendingCallWatcher::finished, this,
            [this](const QDBusPendingCallWatcher *answer) { setThere(!answer->isError()); });
}

void ShellIndicator::setThere(bool isThere)
{
    if (std::exchange(m_isThere, isThere) != isThere)
        Q_EMIT changed();
}

} // namespace tovel
