#include "app/commands/carry_out.h"

#include "app/commands/answers.h"
#include "app/commands/lookup.h"
#include "model/texts.h"
#include "platform/user_defaults.h"

#include <QJsonArray>
#include <QPointer>

#include <algorithm>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype longestName = 1000;

// Whether the request makes sense where there is no session.
bool worksWithoutSession(const Request &request)
{
    return request.command == Request::Command::FlockAdd
        || request.command == Request::Command::FlockRemove;
}

QJsonObject refuseWithoutSession(const Request &request, const Surroundings &surroundings)
{
    QJsonObject answer = refusal(u"there is no desktop session: "_s + surroundings.missingSession);
    if (request.command == Request::Command::Status) {
        answer.insert(u"trusted"_s, false);
        answer.insert(u"available"_s, false);
    }
    return answer;
}

// A choice that did not reach the disk would be gone with this process.
QJsonObject concludedChange(const QJsonObject &answer)
{
    const QString error = currentPlatform().userDefaults().standardUserDefaults().errorString();
    if (error.isEmpty())
        return concluded(answer, AnswerStatus::Done);
    return concluded(answer, AnswerStatus::Incomplete,
                     {u"the choice could not be stored: "_s + error});
}

QJsonObject changeFlock(TovelModel &model, const Request &request)
{
    QList<RunningApp> apps;
    for (const QString &word : request.applications) {
        const auto found = findApplication(model, word);
        if (!found.record)
            return refusal(found.error);
        apps.append(*found.record);
    }
    for (const RunningApp &app : std::as_const(apps))
        model.select(app, request.command == Request::Command::FlockAdd);
    return concludedChange(flockAnswer(model));
}

QJsonObject renameDesktop(TovelModel &model, const Request &request)
{
    const auto found = findDesktop(model, request.desktop);
    if (!found.record)
        return refusal(found.error);
    if (request.name.size() > longestName)
        return refusal(u"a name has at most %1 characters"_s.arg(longestName));
    model.rename(*found.record, request.name);
    return concludedChange({{u"desktop"_s, desktopObject(model, *found.record)}});
}

QString accessNeeded(const Surroundings &surroundings)
{
    return (QStringList{ModelTexts::accessNeeded()} + surroundings.limits).join(u' ');
}

QJsonObject tellStatus(const TovelModel &model, const Surroundings &surroundings)
{
    const QJsonObject answer = statusAnswer(model, surroundings.limits);
    if (model.trusted() && model.available())
        return concluded(answer, AnswerStatus::Done);
    return concluded(answer, AnswerStatus::NothingTried, {accessNeeded(surroundings)});
}

// Whether every window that can move, or could when the run began and still exists, has arrived.
bool isComplete(const TovelModel &model, const Desktop &target, const QSet<std::uint32_t> &tried)
{
    const QList<TravelWindow> &windows = model.windows();
    return model.trusted() && model.available()
        && std::all_of(windows.cbegin(), windows.cend(), [&](const TravelWindow &window) {
               const bool isDue = !window.skipReason || tried.contains(window.id);
               return !isDue || window.spaces == QList<std::uint64_t>{target.id};
           });
}

// What a run has seen, once it began to move windows.
struct Run
{
    bool began = false;
    QSet<std::uint32_t> tried;
};

QJsonObject tellMove(const TovelModel &model, const Desktop &target, const Run &run)
{
    QString summary
        = run.began ? model.message() : u"The flock is already on %1."_s.arg(model.name(target));
    if (model.untriedWindows() > 0)
        summary += u" · %1 not tried"_s.arg(model.untriedWindows());
    const bool complete = isComplete(model, target, run.tried);
    const bool followFailed = model.issues().contains(ModelTexts::couldNotSwitch());
    return concluded({{u"desktop"_s, desktopObject(model, target)},
                      {u"summary"_s, summary},
                      {u"issues"_s, QJsonArray::fromStringList(model.issues())},
                      {u"complete"_s, complete},
                      {u"untried"_s, model.untriedWindows()}},
                     complete && !followFailed ? AnswerStatus::Done : AnswerStatus::Incomplete,
                     model.issues());
}

QCoro::Task<QJsonObject> move(TovelModel &model, Request request, Surroundings surroundings)
{
    if (model.busy())
        co_return refusal(u"another move is running"_s);
    const auto found = findDesktop(model, request.desktop);
    if (!found.record) {
        const bool canMove = model.trusted() && model.available();
        co_return refusal(canMove ? found.error : accessNeeded(surroundings));
    }
    const Desktop target = *found.record;
    const QPointer<TovelModel> guard(&model);
    Run run;
    const QObject scope;
    QObject::connect(&model, &TovelModel::didChange, &scope, [&](TovelModel::Property property) {
        if (property != TovelModel::Property::busy || !model.busy())
            return;
        run.began = true;
        for (const TravelWindow &window : model.traveling())
            run.tried.insert(window.id);
    });
    co_await model.migrate(target, request.follow);
    if (!guard)
        co_return refusal(u"Tovel has ended"_s);

    if (!run.began && !model.issues().isEmpty()) {
        const QString issue = model.issues().first();
        co_return refusal(issue == ModelTexts::accessNeeded() ? accessNeeded(surroundings) : issue);
    }
    co_return tellMove(model, target, run);
}

} // namespace

QCoro::Task<QJsonObject> carryOut(TovelModel &model, Request request, Surroundings surroundings)
{
    if (!surroundings.missingSession.isEmpty() && !worksWithoutSession(request))
        co_return refuseWithoutSession(request, surroundings);
    switch (request.command) {
    case Request::Command::Status:
        co_return tellStatus(model, surroundings);
    case Request::Command::Apps:
        co_return concluded(appsAnswer(model), AnswerStatus::Done);
    case Request::Command::FlockAdd:
    case Request::Command::FlockRemove:
        co_return changeFlock(model, request);
    case Request::Command::Rename:
        co_return renameDesktop(model, request);
    case Request::Command::Move:
        co_return co_await move(model, request, surroundings);
    }
    Q_UNREACHABLE();
}

} // namespace tovel
