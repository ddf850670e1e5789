#include "app/tovelctl/running_application.h"

#include "app/commands/answers.h"
#include "app/service/bus_names.h"
#include "app/service/running_tovel.h"

#include <QCoroDBusPendingCall>
#include <QDBusMessage>
#include <QJsonDocument>

#include <limits>
#include <utility>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

constexpr int patience = 10000; // milliseconds
constexpr int unlimited = std::numeric_limits<int>::max(); // a move may take its time

QDBusMessage callFor(const Request &request)
{
    const auto call = [](const QString &method, const QVariantList &arguments = {}) {
        return callOfRunningTovel(BusNames::Interface, method, arguments);
    };
    switch (request.command) {
    case Request::Command::Status:
        return call(u"Status"_s);
    case Request::Command::Apps:
        return call(u"Apps"_s);
    case Request::Command::FlockAdd:
        return call(u"AddToFlock"_s, {request.applications});
    case Request::Command::FlockRemove:
        return call(u"RemoveFromFlock"_s, {request.applications});
    case Request::Command::Rename:
        return call(u"Rename"_s, {request.desktop, request.name});
    case Request::Command::Move: {
        QVariantMap options;
        if (request.follow)
            options.insert(u"follow"_s, *request.follow);
        return call(u"Move"_s, {request.desktop, options});
    }
    }
    Q_UNREACHABLE();
}

QJsonObject lost(const QString &reason)
{
    return concluded({{u"error"_s, reason}}, AnswerStatus::Incomplete, {reason});
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

QCoro::Task<QJsonObject> RunningApplication::carryOut(Request request)
{
    const bool moves = request.command == Request::Command::Move;
    const QDBusPendingCall call = m_bus.asyncCall(callFor(request), moves ? unlimited : patience);
    const QDBusMessage reply = co_await call;
    if (reply.type() != QDBusMessage::ReplyMessage) {
        if (reply.errorName() == "org.freedesktop.DBus.Error.NoReply"_L1)
            co_return lost(u"the running Tovel gave no answer"_s);
        co_return refusal(reply.errorMessage());
    }
    const QByteArray text = reply.arguments().value(0).toString().toUtf8();
    const QJsonObject answer = QJsonDocument::fromJson(text).object();
    if (!answer.contains(u"status"_s))
        co_return lost(u"the running Tovel gave an answer that makes no sense"_s);
    co_return answer;
}

void RunningApplication::stopMove()
{
    m_bus.send(callOfRunningTovel(BusNames::Interface, u"StopMove"_s, {}));
}

} // namespace tovel
