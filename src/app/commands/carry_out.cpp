#include "app/commands/carry_out.h"

#include "app/commands/content.h"
#include "app/commands/lookup.h"
#include "model/texts.h"
#include "texts/one_line.h"

#include <QPointer>

#include <algorithm>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype longestName = 1000;

template <typename Content>
Answer done(const Content &content)
{
    return {AnswerStatus::Done, {}, content};
}

// A choice that did not reach the disk is gone with this process.
template <typename Content>
Answer concludedChange(const QString &what, const Content &content, const DefaultsOutcome &outcome,
                       bool goesOn)
{
    if (outcome.isStored()) {
        Answer answer = done(content);
        if (!outcome.notice.isEmpty())
            answer.problems.append(outcome.notice);
        return answer;
    }
    const QString failure = u"%1 could not be stored: "_s.arg(what) + outcome.failure;
    if (!goesOn)
        return refusal(RefusalCause::NotStored, failure);
    return {AnswerStatus::Incomplete, {failure}, content};
}

Answer changeFlock(TovelModel &model, const FlockRequest &request, bool goesOn)
{
    QList<RunningApp> apps;
    for (const QString &word : request.applications) {
        const auto found = findApplication(model, word);
        if (!found.record)
            return refusal(RefusalCause::NotFound, found.error);
        apps.append(*found.record);
    }
    const DefaultsOutcome outcome = model.selectAll(apps, request.joins);
    return concludedChange(u"the flock"_s, flockContent(model), outcome, goesOn);
}

Answer renameDesktop(TovelModel &model, const RenameRequest &request, bool goesOn)
{
    const auto found = findDesktop(model, request.desktop);
    if (!found.record)
        return refusal(RefusalCause::NotFound, found.error);
    if (request.name.size() > longestName) {
        return refusal(RefusalCause::NameTooLong,
                       u"a name has at most %1 characters"_s.arg(longestName));
    }
    if (std::ranges::any_of(request.name, breaksLine))
        return refusal(RefusalCause::Other, u"a name has no control characters"_s);
    const DefaultsOutcome outcome = model.rename(*found.record, request.name);
    const RenameContent content{desktopInfo(model, *found.record)};
    return concludedChange(u"the name"_s, content, outcome, goesOn);
}

QString accessNeeded(const Surroundings &surroundings)
{
    return (QStringList{ModelTexts::accessNeeded()} + surroundings.limits).join(u' ');
}

Answer tellStatus(const TovelModel &model, const Surroundings &surroundings)
{
    StatusContent content = statusContent(model, surroundings.limits);
    content.session = surroundings.session;
    if (content.trusted && content.available)
        return done(content);
    return {AnswerStatus::NothingTried, {accessNeeded(surroundings)}, content};
}

Answer tellMove(const TovelModel &model, const Desktop &target, const Surroundings &surroundings)
{
    const MigrationRecord &run = model.latestMigration();
    const QStringList issues = ModelTexts::issues(run);
    if (run.obstacle == MigrationObstacle::noAccess)
        return refusal(RefusalCause::NoAccess, accessNeeded(surroundings));
    if (run.obstacle == MigrationObstacle::desktopGone)
        return refusal(RefusalCause::DesktopGone, issues.first());
    if (run.obstacle == MigrationObstacle::nothingToMove)
        return refusal(RefusalCause::NothingToMove, issues.first());
    const bool isDone = run.complete && !hasFailedToFollow(run);
    return {isDone ? AnswerStatus::Done : AnswerStatus::Incomplete,
            issues + ModelTexts::laterProblems(run), moveContent(model, target)};
}

// Not where it would stay without windows, nor by a name that a desktop is called here.
std::variant<Desktop, Answer> newDesktop(TovelModel &model, const QString &name)
{
    if (model.traveling().isEmpty())
        return refusal(RefusalCause::NothingToMove, ModelTexts::nothingToMove());
    for (const Desktop &desktop : model.desktops()) {
        if (model.name(desktop).compare(name, Qt::CaseInsensitive) == 0)
            return refusal(RefusalCause::NotMade, u"there is a desktop “%1” already"_s.arg(name));
    }
    const NewDesktop made = model.makeDesktop(name);
    if (!made.desktop)
        return refusal(RefusalCause::NotMade, made.refusal);
    return *made.desktop;
}

std::variant<Desktop, Answer> targetOf(TovelModel &model, const MoveRequest &request,
                                       const Surroundings &surroundings)
{
    if (!model.trusted() || !model.available())
        return refusal(RefusalCause::NoAccess, accessNeeded(surroundings));
    if (request.isNew)
        return newDesktop(model, request.desktop);
    const auto found = findDesktop(model, request.desktop);
    if (!found.record)
        return refusal(RefusalCause::NotFound, found.error);
    return *found.record;
}

QCoro::Task<Answer> move(TovelModel &model, MoveRequest request, Surroundings surroundings)
{
    if (model.busy())
        co_return refusal(RefusalCause::Busy, u"another move is running"_s);
    const auto found = targetOf(model, request, surroundings);
    if (const auto *refused = std::get_if<Answer>(&found))
        co_return *refused;
    const Desktop target = std::get<Desktop>(found);
    const QPointer<TovelModel> guard(&model);
    co_await model.migrate(target, request.follow);
    if (!guard)
        co_return refusal(RefusalCause::NoAnswer, u"Tovel has ended"_s);
    co_return tellMove(model, target, surroundings);
}

QCoro::Task<Answer> answerTo(TovelModel &model, Request request, Surroundings surroundings)
{
    if (const auto *flock = std::get_if<FlockRequest>(&request))
        co_return changeFlock(model, *flock, surroundings.goesOn);
    if (!surroundings.missingSession.isEmpty()) {
        co_return refusal(RefusalCause::NoSession,
                          u"there is no desktop session: "_s + surroundings.missingSession);
    }
    if (const auto *name = std::get_if<RenameRequest>(&request))
        co_return renameDesktop(model, *name, surroundings.goesOn);
    if (const auto *toMove = std::get_if<MoveRequest>(&request))
        co_return co_await move(model, *toMove, surroundings);
    if (std::holds_alternative<StatusRequest>(request))
        co_return tellStatus(model, surroundings);
    co_return done(appsContent(model));
}

// Choices that were never read are not empty: neither a flock without windows nor a name that
// nothing has is what the user chose.
Answer withoutChoices(const Answer &answer, const QString &problem)
{
    const auto *refused = std::get_if<Refusal>(&answer.content);
    if (refused
        && (refused->cause == RefusalCause::NotFound
            || refused->cause == RefusalCause::NothingToMove))
        return refusal(RefusalCause::ChoicesUnreadable, problem);
    Answer result = answer;
    if (result.status == AnswerStatus::Done)
        result.status = AnswerStatus::Incomplete;
    return result;
}

// What became of a change tells of the store already.
bool changesChoices(const Request &request)
{
    return std::holds_alternative<FlockRequest>(request)
        || std::holds_alternative<RenameRequest>(request);
}

} // namespace

QCoro::Task<Answer> carryOut(TovelModel &model, Request request, Surroundings surroundings)
{
    const QPointer<TovelModel> guard(&model);
    Answer answer = co_await answerTo(model, request, surroundings);
    if (!guard)
        co_return answer;
    const QString problem = model.choicesProblem();
    if (!model.choicesKnown())
        answer = withoutChoices(answer, problem);
    if (!changesChoices(request) && !problem.isEmpty() && !answer.problems.contains(problem))
        answer.problems.append(problem);
    co_return answer;
}

} // namespace tovel
