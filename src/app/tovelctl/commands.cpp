#include "app/tovelctl/commands.h"

#include "app/console.h"
#include "app/tovelctl/lookup.h"
#include "app/tovelctl/report.h"
#include "model/texts.h"
#include "platform/user_defaults.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

void printObject(const CommandContext &context, const QJsonObject &object)
{
    // JSON leaves the controls of ISO 6429 as they are; terminals may obey them.
    const QString json = QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Indented));
    QString text;
    for (const QChar character : json) {
        const bool isControl = character >= QChar(0x7F) && character <= QChar(0x9F);
        text += isControl ? u"\\u%1"_s.arg(character.unicode(), 4, 16, QChar(u'0'))
                          : QString(character);
    }
    context.print(text);
}

void answer(const Arguments &arguments, const CommandContext &context, const QJsonObject &object,
            const QString &text)
{
    if (arguments.json)
        printObject(context, object);
    else
        context.print(text);
}

int refuse(const Arguments &arguments, const CommandContext &context, const QString &reason)
{
    if (arguments.json)
        printObject(context, withSchema({{u"error"_s, reason}}));
    context.complain(printable(reason));
    return ExitStatus::NothingTried;
}

// A choice that did not reach the disk would be gone with this process.
int storedStatus(const CommandContext &context)
{
    const QString error = currentPlatform().userDefaults().standardUserDefaults().errorString();
    if (error.isEmpty())
        return ExitStatus::Done;
    context.complain(u"the choice could not be stored: "_s + printable(error));
    return ExitStatus::Incomplete;
}

int changeFlock(TovelModel &model, const Arguments &arguments, const CommandContext &context)
{
    QList<RunningApp> apps;
    for (const QString &word : arguments.applications) {
        const auto found = findApplication(model, word);
        if (!found.record)
            return refuse(arguments, context, found.error);
        apps.append(*found.record);
    }
    for (const RunningApp &app : std::as_const(apps))
        model.select(app, arguments.command == Arguments::Command::FlockAdd);
    answer(arguments, context, flockObject(model), flockText(model));
    return storedStatus(context);
}

int renameDesktop(TovelModel &model, const Arguments &arguments, const CommandContext &context)
{
    const auto found = findDesktop(model, arguments.desktop);
    if (!found.record)
        return refuse(arguments, context, found.error);
    model.rename(*found.record, arguments.name);
    answer(arguments, context, withSchema({{u"desktop"_s, desktopObject(model, *found.record)}}),
           u"Desktop %1 is now “%2”.\n"_s.arg(found.record->index)
               .arg(printable(model.name(*found.record))));
    return storedStatus(context);
}

QString accessNeeded(const CommandContext &context)
{
    return (QStringList{ModelTexts::accessNeeded()} + context.limits).join(u' ');
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

QJsonObject moveObject(const TovelModel &model, const Desktop &target, const QString &summary,
                       bool complete)
{
    return withSchema({{u"desktop"_s, desktopObject(model, target)},
                       {u"summary"_s, summary},
                       {u"issues"_s, QJsonArray::fromStringList(model.issues())},
                       {u"complete"_s, complete},
                       {u"untried"_s, model.untriedWindows()}});
}

QCoro::Task<int> move(TovelModel &model, Arguments arguments, CommandContext context)
{
    const auto found = findDesktop(model, arguments.desktop);
    if (!found.record) {
        const bool canMove = model.trusted() && model.available();
        co_return refuse(arguments, context, canMove ? found.error : accessNeeded(context));
    }
    const Desktop target = *found.record;
    bool ran = false;
    QSet<std::uint32_t> tried;
    model.onMigrationFinished([&ran] { ran = true; });
    const auto connection = QObject::connect(
        &model, &TovelModel::didChange, &model, [&](TovelModel::Property property) {
            if (property == TovelModel::Property::busy && model.busy()) {
                for (const TravelWindow &window : model.traveling())
                    tried.insert(window.id);
            }
            if (property == TovelModel::Property::message && model.busy() && context.progress)
                context.progress(model.message());
        });
    co_await model.migrate(target, arguments.follow);
    QObject::disconnect(connection);
    model.onMigrationFinished({});

    if (!ran && !model.issues().isEmpty()) {
        const QString issue = model.issues().first();
        co_return refuse(arguments, context,
                         issue == ModelTexts::accessNeeded() ? accessNeeded(context) : issue);
    }
    QString summary
        = ran ? model.message() : u"The flock is already on %1."_s.arg(model.name(target));
    if (model.untriedWindows() > 0)
        summary += u" · %1 not tried"_s.arg(model.untriedWindows());
    const bool complete = isComplete(model, target, tried);
    answer(arguments, context, moveObject(model, target, summary, complete),
           printable(summary) + u'\n');
    for (const QString &issue : model.issues())
        context.complain(printable(issue));
    if (context.interrupted && *context.interrupted != 0)
        co_return ExitStatus::Signalled + *context.interrupted;
    const bool followFailed = model.issues().contains(ModelTexts::couldNotSwitch());
    co_return complete && !followFailed ? ExitStatus::Done : ExitStatus::Incomplete;
}

} // namespace

QCoro::Task<int> runCommand(TovelModel &model, Arguments arguments, CommandContext context)
{
    using enum Arguments::Command;
    switch (arguments.command) {
    case Status:
        if (arguments.json)
            printObject(context, statusObject(model, context.limits));
        else
            context.print(statusText(model, context.limits));
        if (!model.trusted() || !model.available()) {
            context.complain(printable(accessNeeded(context)));
            co_return ExitStatus::NothingTried;
        }
        co_return ExitStatus::Done;
    case Apps:
        answer(arguments, context, appsObject(model), appsText(model));
        co_return ExitStatus::Done;
    case FlockAdd:
    case FlockRemove:
        co_return changeFlock(model, arguments, context);
    case Rename:
        co_return renameDesktop(model, arguments, context);
    case Move:
        co_return co_await move(model, arguments, context);
    case Help:
    case Version:
        break;
    }
    co_return ExitStatus::Usage;
}

bool worksWithoutSession(const Arguments &arguments)
{
    return arguments.command == Arguments::Command::FlockAdd
        || arguments.command == Arguments::Command::FlockRemove;
}

int refuseWithoutSession(const Arguments &arguments, const CommandContext &context)
{
    const QString reason = u"there is no desktop session: "_s + context.missingSession;
    if (arguments.command == Arguments::Command::Status && !arguments.json) {
        context.print(u"Access to windows: not allowed\nMoving windows:    missing\n"
                      "\nNo desktops found\n"_s);
    }
    return refuse(arguments, context, reason);
}

} // namespace tovel
