#include "bridge/symbol_table.h"

#include <QtEndian>

namespace tovel {

namespace {

constexpr std::uint32_t magic64 = 0xFEEDFACF;
constexpr std::uint64_t headerSize = 32;
constexpr std::uint32_t symtabCommand = 0x2;
constexpr std::uint32_t segment64Command = 0x19;
constexpr std::uint64_t segmentNameSize = 16;
constexpr std::string_view linkeditName = "__LINKEDIT";
constexpr std::uint64_t symbolSize = 16;

// Checked reads by address. Addresses below the memory wrap round to offsets far above it.
class Memory
{
public:
    explicit Memory(const Image &image)
        : m_bytes(image.memory)
        , m_address(image.memoryAddress)
    { }

    template <typename Number>
    std::optional<Number> read(std::uint64_t address) const
    {
        const std::uint64_t offset = address - m_address;
        if (offset > m_bytes.size() || m_bytes.size() - offset < sizeof(Number))
            return std::nullopt;
        return qFromLittleEndian<Number>(m_bytes.data() + offset);
    }

    // Whether the NUL-terminated text at the address is the given one. Reads no further than the
    // first difference; nothing when the memory ends before one.
    std::optional<bool> textEquals(std::uint64_t address, std::string_view expected) const
    {
        for (std::size_t i = 0; i <= expected.size(); ++i) {
            const auto byte = read<std::uint8_t>(address + i);
            if (!byte)
                return std::nullopt;
            const char wanted = i < expected.size() ? expected[i] : '\0';
            if (static_cast<char>(*byte) != wanted)
                return false;
        }
        return true;
    }

private:
    std::span<const std::byte> m_bytes;
    std::uint64_t m_address;
};

struct LoadCommands
{
    std::uint64_t symtab = 0;
    std::uint64_t linkedit = 0;
};

// Addresses of the two commands that lead to the symbols; nothing when either is missing or the
// commands are malformed.
std::optional<LoadCommands> findCommands(const Memory &memory, std::uint64_t header)
{
    const auto magic = memory.read<std::uint32_t>(header);
    if (!magic || *magic != magic64)
        return std::nullopt;
    const auto count = memory.read<std::uint32_t>(header + 16);
    if (!count || *count == 0)
        return std::nullopt;

    std::optional<std::uint64_t> symtab;
    std::optional<std::uint64_t> linkedit;
    std::uint64_t address = header + headerSize;
    for (std::uint32_t i = 0; i < *count; ++i) {
        const auto command = memory.read<std::uint32_t>(address);
        const auto size = memory.read<std::uint32_t>(address + 4);
        if (!command || !size || *size < 8)
            return std::nullopt;
        if (*command == symtabCommand) {
            symtab = address;
        } else if (*command == segment64Command) {
            if (!memory.read<std::uint8_t>(address + 8 + segmentNameSize - 1))
                return std::nullopt;
            const auto matches = memory.textEquals(address + 8, linkeditName);
            if (!matches)
                return std::nullopt;
            if (*matches)
                linkedit = address;
        }
        address += *size;
    }
    if (!symtab || !linkedit)
        return std::nullopt;
    return LoadCommands{*symtab, *linkedit};
}

struct SymbolTable
{
    std::uint64_t symbols = 0;
    std::uint32_t symbolCount = 0;
    std::uint64_t strings = 0;
    std::uint32_t stringsSize = 0;
};

std::optional<SymbolTable> readTable(const Memory &memory, const LoadCommands &commands,
                                     std::int64_t slide)
{
    const auto symoff = memory.read<std::uint32_t>(commands.symtab + 8);
    const auto nsyms = memory.read<std::uint32_t>(commands.symtab + 12);
    const auto stroff = memory.read<std::uint32_t>(commands.symtab + 16);
    const auto strsize = memory.read<std::uint32_t>(commands.symtab + 20);
    if (!symoff || !nsyms || !stroff || !strsize)
        return std::nullopt;
    if (*nsyms == 0)
        return SymbolTable{};

    const auto vmaddr = memory.read<std::uint64_t>(commands.linkedit + 24);
    const auto fileoff = memory.read<std::uint64_t>(commands.linkedit + 40);
    if (!vmaddr || !fileoff)
        return std::nullopt;
    const std::uint64_t base = *vmaddr + static_cast<std::uint64_t>(slide) - *fileoff;
    return SymbolTable{base + *symoff, *nsyms, base + *stroff, *strsize};
}

struct Search
{
    bool mayContinue = false; // whether the next image may be looked at when there is no match
    std::optional<std::uint64_t> address;
};

Search searchImage(const Image &image, std::string_view symbol)
{
    const Memory memory(image);
    const auto commands = findCommands(memory, image.headerAddress);
    if (!commands)
        return {};
    const auto table = readTable(memory, *commands, image.slide);
    if (!table)
        return {};
    for (std::uint32_t i = 0; i < table->symbolCount; ++i) {
        const std::uint64_t entry = table->symbols + i * symbolSize;
        const auto string = memory.read<std::uint32_t>(entry);
        const auto value = memory.read<std::uint64_t>(entry + 8);
        if (!string || !value)
            return {};
        if (*string >= table->stringsSize)
            continue;
        const auto matches = memory.textEquals(table->strings + *string, symbol);
        if (!matches)
            return {};
        if (*matches)
            return {true, *value + static_cast<std::uint64_t>(image.slide)};
    }
    return {true, std::nullopt};
}

} // namespace

std::optional<std::uint64_t> findLocalSymbol(std::span<const Image> images,
                                             std::string_view imageNamePart,
                                             std::string_view symbol)
{
    for (const Image &image : images) {
        if (image.name.find(imageNamePart) == std::string_view::npos)
            continue;
        const Search search = searchImage(image, symbol);
        if (search.address || !search.mayContinue)
            return search.address;
    }
    return std::nullopt;
}

} // namespace tovel
