#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace tovel {

// A loaded program image in the 64-bit little-endian Mach-O format.
struct Image
{
    std::string_view name;
    std::span<const std::byte> memory; // all that may be read of it
    std::uint64_t memoryAddress = 0; // where the memory's first byte stands
    std::uint64_t headerAddress = 0; // where the Mach-O header stands; need not be aligned
    std::int64_t slide = 0; // distance from the addresses written in the image to the real ones
};

// The address of a symbol that an image may keep to itself, from the image's own symbol table.
// Looks through the images whose name contains the given part, in order; the first match wins.
// Trusts nothing it reads: a malformed matching image, or one that refers outside its memory, ends
// the search without a result. Work is linear in the memory of the images.
std::optional<std::uint64_t> findLocalSymbol(std::span<const Image> images,
                                             std::string_view imageNamePart,
                                             std::string_view symbol);

} // namespace tovel
