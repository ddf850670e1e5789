#include "app/tovelctl/arguments.h"

#include <utility>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

ParsedArguments failure(const QString &error) { return {{}, error}; }

// The words of the line that are no options, and the options.
struct Words
{
    QStringList words;
    bool json = false;
    std::optional<bool> follow;
    bool isNew = false;
    QString error;
};

Words splitOptions(const QStringList &line)
{
    Words result;
    bool onlyWords = false;
    for (const QString &word : line) {
        if (onlyWords || !word.startsWith(u'-') || word == "-"_L1) {
            result.words.append(word);
        } else if (word == "--"_L1) {
            onlyWords = true;
        } else if (word == "--json"_L1) {
            result.json = true;
        } else if (word == "--new"_L1) {
            result.isNew = true;
        } else if (word == "--follow"_L1 || word == "--no-follow"_L1) {
            const bool follow = word == "--follow"_L1;
            if (result.follow.value_or(follow) != follow) {
                result.error = u"--follow and --no-follow exclude each other"_s;
                return result;
            }
            result.follow = follow;
        } else {
            result.error = u"there is no option %1"_s.arg(word);
            return result;
        }
    }
    return result;
}

} // namespace

ParsedArguments parseArguments(const QStringList &line)
{
    const qsizetype optionsEnd = line.indexOf(u"--"_s);
    const QStringList options = optionsEnd < 0 ? line : line.first(optionsEnd);
    if (options.contains(u"--help"_s) || options.contains(u"-h"_s))
        return {{.purpose = Arguments::Purpose::Help}, {}};
    if (options.contains(u"--version"_s))
        return {{.purpose = Arguments::Purpose::Version}, {}};

    Words split = splitOptions(line);
    if (!split.error.isEmpty())
        return failure(split.error);
    Arguments arguments{.json = split.json};
    Request &request = arguments.request;
    QStringList words = split.words;
    if (words.isEmpty())
        return failure(u"no command was given"_s);
    const QString command = words.takeFirst();

    if (command == "access"_L1) {
        arguments.purpose = Arguments::Purpose::Access;
        if (split.json)
            return failure(u"--json does not go with “access”"_s);
    } else if (command == "status"_L1) {
        request = StatusRequest();
    } else if (command == "apps"_L1) {
        request = AppsRequest();
    } else if (command == "flock"_L1) {
        const QString action = words.isEmpty() ? QString() : words.takeFirst();
        if (action != "add"_L1 && action != "remove"_L1)
            return failure(u"after “flock” comes “add” or “remove”"_s);
        if (words.isEmpty())
            return failure(u"“flock %1” needs an application"_s.arg(action));
        request = FlockRequest{action == "add"_L1, std::exchange(words, {})};
    } else if (command == "rename"_L1) {
        if (words.size() < 2)
            return failure(u"“rename” needs a desktop and a name"_s);
        const QString desktop = words.takeFirst();
        request = RenameRequest{desktop, words.takeFirst()};
    } else if (command == "move"_L1) {
        if (words.isEmpty() && !split.isNew)
            return failure(u"“move” needs a desktop"_s);
        const QString desktop = words.isEmpty() ? QString() : words.takeFirst();
        if (desktop.isEmpty() && !desktop.isNull())
            return failure(u"no desktop has an empty name"_s);
        request = MoveRequest{desktop, split.follow, split.isNew};
    } else {
        return failure(u"there is no command “%1”"_s.arg(command));
    }
    if (!words.isEmpty())
        return failure(u"“%1” was not expected"_s.arg(words.first()));
    if (split.follow && !std::holds_alternative<MoveRequest>(request))
        return failure(u"--follow and --no-follow go with “move”"_s);
    if (split.isNew && !std::holds_alternative<MoveRequest>(request))
        return failure(u"--new goes with “move”"_s);
    return {arguments, {}};
}

QString helpText()
{
    return uR"(Usage: tovelctl COMMAND [--json]

Gathers the windows of your flock, the applications you chose, on one desktop.

Commands:
  status                   access, desktops, the flock and its windows
  access                   allow Tovel to see and move windows, where that has
                           to be allowed and can be at once
  apps                     the applications that can join the flock
  flock add APP…           add applications, by bundle identifier or name
  flock remove APP…        remove applications
  rename DESKTOP NAME      give a desktop a name; an empty one takes it away
  move DESKTOP             move the flock to a desktop, by number or name
  move --new [NAME]        make a desktop for it, where the session can do that
    --follow, --no-follow  show that desktop afterwards, or do not, this once

Options:
  --json                   print one JSON object
  -h, --help               print this text
  --version                print the version

Exit status: 0 done; 1 some windows are not on the desktop, or it could not be
shown, or the choices could not be read or stored; 2 wrong usage; 3 nothing
could be tried; 129, 130, 143 interrupted by SIGHUP, SIGINT, SIGTERM; 141 nobody
reads the output.
)"_s;
}

} // namespace tovel
