#pragma once

#include "platform/session/session_records.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

#include <cstdint>
#include <optional>

// Readings of what i3 and sway answer. Each takes whatever JSON came: a member that is missing, of
// another kind or out of range counts as not said, and what is no JSON of the wanted kind at all
// gives nothing.
namespace tovel::i3 {

enum class Compositor { I3, Sway };

struct Version
{
    Compositor compositor = Compositor::I3;
    QString text; // "4.22"

    bool operator==(const Version &) const = default;
};

std::optional<Version> readVersion(const QByteArray &json);

struct TreeWindow
{
    std::uint64_t container = 0; // its con_id
    std::uint32_t x11Window = 0; // 0: it is none of X11
    QString output; // empty in the scratchpad
    QString workspace; // empty where it is on none: in the scratchpad, or beside the workspaces
    bool isOnAll = false; // of its output's workspaces
    bool isFocused = false;
    SessionWindow facts; // without id and workspaces; transientFor is a window of X11

    bool operator==(const TreeWindow &) const = default;
};

struct TreeOutput
{
    QString name;
    QRectF bounds;
    QStringList workspaces; // names
    QString shown; // the name of one of them; empty: unknown

    bool operator==(const TreeOutput &) const = default;
};

struct Tree
{
    QList<TreeOutput> outputs;
    QList<TreeWindow> windows; // those that had the keyboard last first
    // Names, likewise: a workspace that nobody has placed comes up on the first one.
    QStringList outputsByFocus;

    bool operator==(const Tree &) const = default;
};

// More than anybody opens; counts are cut to them.
inline constexpr qsizetype MaximumWindows = 8192;
inline constexpr qsizetype MaximumWorkspaces = 256; // of all outputs together
inline constexpr qsizetype MaximumOutputs = 64;
inline constexpr qsizetype MaximumNameLength = 512; // of a workspace, in UTF-16

std::optional<Tree> readTree(const QByteArray &json);

// Whether every command of a message was carried out.
bool readSuccess(const QByteArray &json);

// The text of the configuration, with the texts that it includes where they are told.
QString readConfiguration(const QByteArray &json);

// Whether a workspace's event tells that the configuration was read again.
bool readsReload(const QByteArray &json);

// The command of the key that a binding's event tells of; empty for anything else.
QString readPressedCommand(const QByteArray &json);

} // namespace tovel::i3
