#include "app/service/command_adaptor.h"

#include "app/commands/answer_json.h"
#include "app/service/bus_names.h"

#include <QDBusError>

#include <utility>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

bool isKnown(const QVariantMap &options)
{
    for (auto option = options.cbegin(); option != options.cend(); ++option) {
        const bool isOne = option.key() == "follow"_L1 || option.key() == "new"_L1;
        if (!isOne || option->typeId() != QMetaType::Bool)
            return false;
    }
    return true;
}

} // namespace

CommandAdaptor::CommandAdaptor(QObject *parent, const QDBusConnection &bus)
    : QDBusAbstractAdaptor(parent)
    , m_bus(bus)
{ }

void CommandAdaptor::serve(TovelModel &model, std::function<Surroundings()> surroundings)
{
    m_model = &model;
    m_surroundings = std::move(surroundings);
    connect(&model, &TovelModel::didChange, this, [this](TovelModel::Property property) {
        if (property == TovelModel::Property::message && isBusy())
            Q_EMIT Progress(m_model->message());
    });
}

QString CommandAdaptor::display() const { return ownDisplay(); }

QString CommandAdaptor::Status() { return answer(StatusRequest()); }

QString CommandAdaptor::Apps() { return answer(AppsRequest()); }

QString CommandAdaptor::AddToFlock(const QStringList &applications)
{
    return answer(FlockRequest{true, applications});
}

QString CommandAdaptor::RemoveFromFlock(const QStringList &applications)
{
    return answer(FlockRequest{false, applications});
}

QString CommandAdaptor::Rename(const QString &desktop, const QString &name)
{
    return answer(RenameRequest{desktop, name});
}

QString CommandAdaptor::Move(const QString &desktop, const QVariantMap &options,
                             const QDBusMessage &message)
{
    message.setDelayedReply(true);
    if (!isKnown(options)) {
        m_bus.send(message.createErrorReply(QDBusError::InvalidArgs,
                                            u"the options of Move are follow and new, booleans"_s));
        return {};
    }
    MoveRequest request{.desktop = desktop, .isNew = options.value(u"new"_s).toBool()};
    if (options.contains(u"follow"_s))
        request.follow = options[u"follow"_s].toBool();
    answerLater(request, message);
    return {};
}

void CommandAdaptor::StopMove()
{
    if (m_model)
        m_model->stopMigration();
}

// For requests that are carried out without waiting for anything.
QString CommandAdaptor::answer(Request request)
{
    QString text;
    carry(request).then([&text](const Answer &result) { text = compactJson(result); });
    Q_ASSERT(!text.isEmpty());
    return text;
}

QCoro::Task<> CommandAdaptor::answerLater(Request request, QDBusMessage message)
{
    const QPointer<CommandAdaptor> self(this);
    const Answer result = co_await carry(request);
    if (!self)
        co_return;
    const auto *refused = std::get_if<Refusal>(&result.content);
    m_bus.send(refused && refused->cause == RefusalCause::Busy
                   ? message.createErrorReply(BusNames::BusyError, refused->error)
                   : message.createReply(compactJson(result)));
}

QCoro::Task<Answer> CommandAdaptor::carry(Request request)
{
    if (!m_model)
        co_return refusal(RefusalCause::NotReady, u"Tovel is not ready"_s);
    m_model->refresh();
    co_return co_await carryOut(*m_model, request, m_surroundings());
}

} // namespace tovel
