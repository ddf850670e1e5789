#include "app/tovelctl/running_application.h"

#include "app/commands/answer_json.h"
#include "app/service/bus_names.h"
#include "app/service/running_tovel.h"

#include <QCoroSignal>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>

#include <chrono>
#include <limits>
#include <utility>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

constexpr std::chrono::seconds patience{10};
constexpr std::chrono::seconds patienceForMove{60}; // for the next that is heard of it
constexpr int unlimited = std::numeric_limits<int>::max(); // the limits are those above

QDBusMessage methodCall(const QString &method, const QVariantList &arguments = {})
{
    return callOfRunningTovel(BusNames::Interface, method, arguments);
}

QDBusMessage callFor(const StatusRequest &) { return methodCall(u"Status"_s); }

QDBusMessage callFor(const AppsRequest &) { return methodCall(u"Apps"_s); }

QDBusMessage callFor(const FlockRequest &request)
{
    return methodCall(request.joins ? u"AddToFlock"_s : u"RemoveFromFlock"_s,
                      {request.applications});
}

QDBusMessage callFor(const RenameRequest &request)
{
    return methodCall(u"Rename"_s, {request.desktop, request.name});
}

QDBusMessage callFor(const MoveRequest &request)
{
    QVariantMap options;
    if (request.follow)
        options.insert(u"follow"_s, *request.follow);
    if (request.isNew)
        options.insert(u"new"_s, true);
    return methodCall(u"Move"_s, {request.desktop, options});
}

} // namespace

RunningApplication::RunningApplication(const QDBusConnection &bus,
                                       std::function<void(QString)> progress)
    : m_bus(bus)
    , m_progress(std::move(progress))
{
    m_bus.connect(BusNames::Service, BusNames::Path, BusNames::Interface, u"Progress"_s, this,
                  SLOT(tell(QString)));
}

QCoro::Task<Answer> RunningApplication::carryOut(Request request)
{
    const bool moves = std::holds_alternative<MoveRequest>(request);
    const QDBusMessage message
        = std::visit([](const auto &asked) { return callFor(asked); }, request);
    QDBusPendingCallWatcher watcher(m_bus.asyncCall(message, unlimited));
    do {
        m_isHeardOf = false;
        co_await qCoro(&watcher, &QDBusPendingCallWatcher::finished,
                       moves ? patienceForMove : patience);
    } while (!watcher.isFinished() && m_isHeardOf);
    if (!watcher.isFinished())
        co_return refusal(RefusalCause::NoAnswer, u"the running Tovel gave no answer"_s);
    const QDBusMessage reply = watcher.reply();
    if (reply.type() != QDBusMessage::ReplyMessage) {
        // The bus says so when whoever was asked has gone.
        if (reply.errorName() == "org.freedesktop.DBus.Error.NoReply"_L1) {
            co_return refusal(RefusalCause::NoAnswer,
                              moves ? u"Tovel ended in the middle of the move"_s
                                    : u"Tovel ended before it had answered"_s);
        }
        co_return refusal(reply.errorName() == BusNames::BusyError ? RefusalCause::Busy
                                                                   : RefusalCause::Other,
                          reply.errorMessage());
    }
    const QByteArray text = reply.arguments().value(0).toString().toUtf8();
    const auto answer = answerFromJson(request, text);
    co_return answer.value_or(
        refusal(RefusalCause::NoAnswer, u"the running Tovel gave an answer that makes no sense"_s));
}

void RunningApplication::stopMove()
{
    m_bus.send(callOfRunningTovel(BusNames::Interface, u"StopMove"_s, {}));
}

} // namespace tovel
