#include "platform/simulated/mach_o_image.h"

#include <QtEndian>

#include <array>
#include <cstring>

#include <sys/mman.h>
#include <unistd.h>

namespace tovel {

namespace {

constexpr std::uint32_t magic64 = 0xFEEDFACF;
constexpr std::uint32_t cpuTypeX8664 = 0x01000007;
constexpr std::uint32_t fileTypeDylib = 6;
constexpr std::uint32_t loadCommandSymtab = 0x2;
constexpr std::uint32_t loadCommandSegment64 = 0x19;
constexpr std::uint32_t headerSize = 32;
constexpr std::uint32_t segmentSize = 72;
constexpr std::uint32_t symtabSize = 24;
constexpr std::uint32_t symbolSize = 16;

// The address that the image was linked for, and where its parts are in the file and in memory.
constexpr std::uint64_t linkedAddress = 0x180000000;
constexpr std::uint32_t textSize = 0x1000;
constexpr std::uint32_t linkEditFileOffset = 0x1000;
constexpr std::uint32_t linkEditMemoryOffset = 0x2000;
constexpr std::uint32_t symbolsInLinkEdit = 0x40;

class Writer
{
public:
    explicit Writer(std::span<std::byte> memory)
        : m_memory(memory)
    { }

    void put32(std::size_t offset, std::uint32_t value)
    {
        qToLittleEndian(value, m_memory.subspan(offset, sizeof value).data());
    }
    void put64(std::size_t offset, std::uint64_t value)
    {
        qToLittleEndian(value, m_memory.subspan(offset, sizeof value).data());
    }
    void putBytes(std::size_t offset, const QByteArray &bytes)
    {
        const auto size = static_cast<std::size_t>(bytes.size());
        std::memcpy(m_memory.subspan(offset, size).data(), bytes.constData(), size);
    }

private:
    std::span<std::byte> m_memory;
};

// Appends load commands behind the header and counts them there.
class CommandWriter
{
public:
    explicit CommandWriter(Writer &writer)
        : m_writer(writer)
    { }

    void segment(const QByteArray &name, std::uint64_t address, std::uint64_t memorySize,
                 std::uint64_t fileOffset, std::uint64_t fileSize)
    {
        const auto at = begin(loadCommandSegment64, segmentSize);
        m_writer.putBytes(at + 8, name);
        m_writer.put64(at + 24, address);
        m_writer.put64(at + 32, memorySize);
        m_writer.put64(at + 40, fileOffset);
        m_writer.put64(at + 48, fileSize);
    }

    // Returns where the command is.
    std::uint32_t symtab(std::uint32_t symbols, std::uint32_t count, std::uint32_t strings,
                         std::uint32_t stringsSize)
    {
        const auto at = begin(loadCommandSymtab, symtabSize);
        m_writer.put32(at + 8, symbols);
        m_writer.put32(at + 12, count);
        m_writer.put32(at + 16, strings);
        m_writer.put32(at + 20, stringsSize);
        return at;
    }

private:
    std::uint32_t begin(std::uint32_t command, std::uint32_t size)
    {
        const auto at = m_end;
        m_writer.put32(at, command);
        m_writer.put32(at + 4, size);
        m_end += size;
        m_writer.put32(16, ++m_count);
        m_writer.put32(20, m_end - headerSize);
        return at;
    }

    Writer &m_writer;
    std::uint32_t m_end = headerSize;
    std::uint32_t m_count = 0;
};

std::size_t pageSize() { return static_cast<std::size_t>(sysconf(_SC_PAGESIZE)); }

std::size_t imageSize() { return linkEditMemoryOffset + pageSize(); }

std::byte *reserve(std::size_t size)
{
    void *mapping = mmap(nullptr, size, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mapping == MAP_FAILED)
        qBadAlloc();
    return static_cast<std::byte *>(mapping);
}

} // namespace

void MachOImage::Unmap::operator()(std::byte *mapping) const { munmap(mapping, size); }

MachOImage::MachOImage(const QByteArray &symbol, std::uint64_t address, MachOFault fault)
    : m_mapping(reserve(imageSize() + 2 * pageSize()), Unmap{imageSize() + 2 * pageSize()})
{
    const std::size_t page = pageSize();
    const std::size_t size = imageSize();
    std::byte *const start = m_mapping.get() + page;
    if (mprotect(start, size, PROT_READ | PROT_WRITE) != 0)
        qBadAlloc();

    Writer writer({start, size});
    writer.put32(0, fault == MachOFault::WrongMagic ? 0xCEFAEDFE : magic64);
    writer.put32(4, cpuTypeX8664);
    writer.put32(12, fileTypeDylib);

    // Strings at the end of the image, after names that a careless comparison takes for the symbol.
    const bool unterminated = fault == MachOFault::UnterminatedName;
    const QByteArray nul(1, '\0');
    QByteArray strings = nul;
    std::array<std::uint32_t, 4> names{};
    const std::array<QByteArray, 4> texts{
        QByteArrayLiteral("_main"), symbol.chopped(1), symbol + "v",
        fault == MachOFault::NoTarget ? QByteArrayLiteral("_other") : symbol};
    for (std::size_t i = 0; i < texts.size(); ++i) {
        names[i] = static_cast<std::uint32_t>(strings.size());
        strings += texts[i];
        if (i + 1 < texts.size() || !unterminated)
            strings += nul;
    }
    const auto stringsSize = static_cast<std::uint32_t>(strings.size());
    const auto stringsAt = static_cast<std::uint32_t>(size) - stringsSize;
    writer.putBytes(stringsAt, strings);
    if (fault == MachOFault::NameOutsideStrings)
        names.back() = stringsSize;

    const auto symbolsAt = linkEditMemoryOffset + symbolsInLinkEdit;
    for (std::uint32_t i = 0; i < names.size(); ++i) {
        const auto isTarget = i + 1 == names.size();
        const auto value
            = isTarget ? address - static_cast<std::uint64_t>(slide()) : linkedAddress + 0x100 * i;
        writer.put32(symbolsAt + i * symbolSize, names[i]);
        writer.put32(symbolsAt + i * symbolSize + 4, 0x0000010E); // defined in section 1
        writer.put64(symbolsAt + i * symbolSize + 8, value);
    }

    constexpr auto memoryToFile = linkEditMemoryOffset - linkEditFileOffset;
    constexpr std::uint32_t farAway = 0x40000000;
    const auto linkEditSize = static_cast<std::uint32_t>(size) - linkEditMemoryOffset;
    CommandWriter commands(writer);
    if (fault == MachOFault::RepeatedCommands) {
        commands.segment("__LINKEDIT", linkedAddress, 0, 0, 0);
        commands.symtab(0, 1, 0, 0);
    }
    commands.segment("__TEXT", linkedAddress, textSize, 0, textSize);
    if (fault != MachOFault::NoLinkEdit) {
        const auto linkEdit = fault == MachOFault::LinkEditOutsideImage
            ? linkedAddress - farAway
            : linkedAddress + linkEditMemoryOffset;
        commands.segment("__LINKEDIT", linkEdit, linkEditSize, linkEditFileOffset, linkEditSize);
    }
    if (fault != MachOFault::NoSymbolTable) {
        const auto at = commands.symtab(
            fault == MachOFault::SymbolsOutsideImage ? farAway : symbolsAt - memoryToFile,
            fault == MachOFault::NoSymbols ? 0 : static_cast<std::uint32_t>(names.size()),
            fault == MachOFault::StringsOutsideImage ? farAway : stringsAt - memoryToFile,
            stringsSize);
        if (fault == MachOFault::ShortCommand)
            writer.put32(at + 4, 4);
        if (fault == MachOFault::CommandsOutsideImage) {
            writer.put32(16, 0xFFFF);
            writer.put32(at + 4, farAway);
        }
    }
    if (fault == MachOFault::NoCommands)
        writer.put32(16, 0);
    mprotect(start, size, PROT_READ);
}

std::span<const std::byte> MachOImage::memory() const
{
    const std::size_t page = pageSize();
    return {m_mapping.get() + page, m_mapping.get_deleter().size - 2 * page};
}

std::intptr_t MachOImage::slide() const
{
    const auto start = reinterpret_cast<std::uintptr_t>(m_mapping.get() + pageSize());
    return static_cast<std::intptr_t>(start - linkedAddress);
}

} // namespace tovel
