#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include <cstdint>
#include <optional>
#include <variant>

namespace tovel {

// How a request ended.
enum class AnswerStatus {
    Done = 0,
    Incomplete = 1,
    NothingTried = 3,
};

// Why nothing was tried, or nothing is known.
enum class RefusalCause {
    Other,
    NoSession,
    NotReady,
    Busy, // another move runs
    NotFound, // no such desktop or application, or several
    NameTooLong,
    NoAccess,
    DesktopGone,
    NothingToMove,
    ChoicesUnreadable, // so that nothing tells what there is in the flock, or what has that name
    NotMade, // no new desktop, or none of that name
    NotStored, // the change that was asked for, which nothing goes on with either
    NoAnswer, // whoever carried it out ended before it was done
};

// What became of one window; the same as the outcomes of the model, but for the last.
enum class MoveOutcome { Untried, Moved, Already, Skipped, Failed, PutBack };

struct DisplayInfo
{
    QString id{};
    QString name{};
    bool builtIn = false;

    bool operator==(const DisplayInfo &) const = default;
};

struct DesktopInfo
{
    std::int64_t number = 0;
    QString name{};
    QString display{}; // the id of its display
    bool shown = false;
    int flockWindows = 0; // that can move

    bool operator==(const DesktopInfo &) const = default;
};

struct AppInfo
{
    QString id{}; // bundle identifier
    QString name{};
    bool running = false;
    bool inFlock = false;

    bool operator==(const AppInfo &) const = default;
};

struct WindowInfo
{
    std::uint32_t id = 0;
    QString app{}; // bundle identifier
    QString appName{};
    QString title{};
    QList<std::int64_t> desktops{}; // numbers
    std::optional<QString> reason{}; // why it cannot move

    bool operator==(const WindowInfo &) const = default;
};

struct MovedWindowInfo
{
    std::uint32_t id = 0;
    QString app{}; // bundle identifier
    QString title{};
    MoveOutcome outcome = MoveOutcome::Untried;
    std::optional<QString> reason{}; // for the outcome, in words

    bool operator==(const MovedWindowInfo &) const = default;
};

struct Refusal
{
    RefusalCause cause = RefusalCause::Other;
    QString error{};

    bool operator==(const Refusal &) const = default;
};

struct StatusContent
{
    bool trusted = false;
    bool available = false;
    bool follow = false;
    QList<DisplayInfo> displays{};
    QList<DesktopInfo> desktops{};
    QList<AppInfo> flock{};
    std::optional<std::int64_t> flockDesktop{}; // number of the one that holds every movable window
    QList<WindowInfo> windows{};
    QStringList limits{}; // what the session cannot do, a sentence each
    QString session{}; // its name and version, as far as known
    bool choicesKnown = true; // false: nothing tells what the flock and the given names are

    bool operator==(const StatusContent &) const = default;
};

struct AppsContent
{
    QList<AppInfo> apps{};

    bool operator==(const AppsContent &) const = default;
};

struct FlockContent
{
    QList<AppInfo> flock{};

    bool operator==(const FlockContent &) const = default;
};

struct RenameContent
{
    DesktopInfo desktop{};

    bool operator==(const RenameContent &) const = default;
};

struct MoveContent
{
    DesktopInfo desktop{}; // the target, after the move
    QString summary{};
    QStringList issues{};
    bool complete = false; // whether every movable window is on the target
    int untried = 0; // windows that were not tried because of an interruption
    QList<MovedWindowInfo> windows{};

    bool operator==(const MoveContent &) const = default;
};

struct Answer
{
    AnswerStatus status = AnswerStatus::Done;
    QStringList problems{}; // to be told besides, a sentence each
    std::variant<Refusal, StatusContent, AppsContent, FlockContent, RenameContent, MoveContent>
        content{};

    bool operator==(const Answer &) const = default;
};

Answer refusal(RefusalCause cause, const QString &error);

} // namespace tovel
