#pragma once

#include "platform/accessibility.h"

#include <QByteArray>
#include <QVariantList>

#include <cstdint>
#include <optional>

namespace tovel {
class Object;
}

// Signatures of the private entry points that DynamicLoader::dlsym finds by name. A null reply of
// the window server is an absent value. Errors are 0 for success, anything else for failure.
namespace tovel::windowserver {

// "SLSMainConnectionID": the id of this process's connection.
using MainConnectionID = std::int32_t (*)();

// "SLSCopyManagedDisplaySpaces": one dictionary per display: "Display Identifier" (text),
// "Spaces" (array of space dictionaries), "Current Space" (a space dictionary). A space has
// "ManagedSpaceID" (number), "type" (number; 0 is a regular desktop) and may have "uuid" (text) and
// "name" (text, never empty: that its user chose in the session).
using CopyManagedDisplaySpaces = std::optional<QVariantList> (*)(std::int32_t connection);

// "SLSCopySpacesForWindows": ids of the spaces that the windows are on; mask 7 asks for all kinds.
// A window that is nowhere adds none. Always answers from the present moment.
using CopySpacesForWindows
    = std::optional<QVariantList> (*)(std::int32_t connection, std::int32_t mask,
                                      const QVariantList &windows);

// "SLSSpaceSetCompatID": marks a space with a tag; tag 0 clears it.
using SpaceSetCompatID
    = std::int32_t (*)(std::int32_t connection, std::uint64_t space, std::uint32_t tag);

// "SLSSetWindowListWorkspace": asks for the windows to be put on the space that carries the tag.
// Success means that the request was sent, not that it was granted.
using SetWindowListWorkspace
    = std::int32_t (*)(std::int32_t connection, const std::uint32_t *windows, std::int32_t count,
                       std::uint32_t tag);

// "SLSWindowIsOrderedIn": writes 1 or 0 through the pointer on success and nothing on failure.
using WindowIsOrderedIn
    = std::int32_t (*)(std::int32_t connection, std::uint32_t window, std::uint8_t *orderedIn);

// "SLSCopyWindowsWithOptionsAndTags": numbers of the windows on the spaces; options 7 lists all,
// options 2 leaves out minimized ones. Owner 0 means any. The tag masks are in and out.
using CopyWindowsWithOptionsAndTags
    = std::optional<QVariantList> (*)(std::int32_t connection, std::uint32_t owner,
                                      const QVariantList &spaces, std::uint32_t options,
                                      std::uint64_t *setTags, std::uint64_t *clearTags);

// "_AXUIElementGetWindow": writes the window number of a window element on success.
using GetWindow = AXError (*)(const AXUIElementRef &element, std::uint32_t *window);

// "_AXUIElementCreateWithRemoteToken": the element that a 20-byte token names, or null.
using CreateWithRemoteToken = AXUIElementRef (*)(const QByteArray &token);

// The unexported submit function: takes an instance of the move operation class.
using SubmitMove = void (*)(const Object &operation);

} // namespace tovel::windowserver
