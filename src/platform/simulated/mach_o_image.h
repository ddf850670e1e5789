#pragma once

#include <QByteArray>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

namespace tovel {

// What is wrong with an image. Unless said otherwise, the symbol cannot be resolved.
enum class MachOFault {
    None, // resolves
    RepeatedCommands, // resolves: useless commands come before the good ones
    WrongMagic,
    NoCommands, // ncmds is 0
    ShortCommand, // a cmdsize of 4
    NoSymbolTable,
    NoLinkEdit,
    NoSymbols, // nsyms is 0
    NameOutsideStrings, // the symbol's n_strx is strsize
    NoTarget,
    CommandsOutsideImage, // ncmds and cmdsize lead past the end
    SymbolsOutsideImage, // symoff leads past the end
    StringsOutsideImage, // stroff leads past the end
    LinkEditOutsideImage, // vmaddr leads far below the image
    UnterminatedName, // the name ends with the image, without its NUL
};

// A 64-bit little-endian Mach-O image as the dynamic loader maps it: a __TEXT segment, a __LINKEDIT
// segment with the symbol table and its strings, at a slide other than 0 and with a file offset
// other than the offset in memory. Pages that may not be read lie before and behind it, so that a
// reader who leaves it does not go unnoticed.
class MachOImage final
{
public:
    // An image whose symbol table has the symbol at the address in this process, after others:
    // among them the symbol without its last character, and with a "v" at its end.
    MachOImage(const QByteArray &symbol, std::uint64_t address,
               MachOFault fault = MachOFault::None);

    // The image's first byte is its header.
    std::span<const std::byte> memory() const;
    std::intptr_t slide() const;

private:
    struct Unmap
    {
        std::size_t size = 0;

        void operator()(std::byte *mapping) const;
    };

    std::unique_ptr<std::byte, Unmap> m_mapping;
};

} // namespace tovel
