#pragma once

#include <QString>
#include <QStringList>

#include <optional>
#include <variant>

namespace tovel {

struct StatusContent;
struct AppsContent;
struct FlockContent;
struct RenameContent;
struct MoveContent;

// What another program, or a command line, asks of Tovel; Content is what the answer then holds,
// unless the request is refused.

struct StatusRequest
{
    using Content = StatusContent;

    bool operator==(const StatusRequest &) const = default;
};

struct AppsRequest
{
    using Content = AppsContent;

    bool operator==(const AppsRequest &) const = default;
};

struct FlockRequest
{
    using Content = FlockContent;

    bool joins = true; // false removes
    QStringList applications{}; // at least one

    bool operator==(const FlockRequest &) const = default;
};

struct RenameRequest
{
    using Content = RenameContent;

    QString desktop{};
    QString name{};

    bool operator==(const RenameRequest &) const = default;
};

struct MoveRequest
{
    using Content = MoveContent;

    QString desktop{};
    std::optional<bool> follow{}; // for this run alone
    // The desktop is made for it, with that name; an empty one is that of the lowest free number.
    bool isNew = false;

    bool operator==(const MoveRequest &) const = default;
};

using Request = std::variant<StatusRequest, AppsRequest, FlockRequest, RenameRequest, MoveRequest>;

} // namespace tovel
