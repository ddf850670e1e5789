#include "bridge/symbol_table.h"
#include "platform/simulated/mach_o_image.h"

#include <QtGlobal>

#include <cstring>
#include <memory>

using namespace tovel;

namespace {

constexpr char Symbol[] = "__ZL6submitv";
constexpr std::uint64_t Address = 0x1234567800;

std::optional<std::uint64_t> find(std::span<const std::byte> memory, std::int64_t slide)
{
    const auto address = reinterpret_cast<std::uintptr_t>(memory.data());
    const Image image{"/fuzzed", memory, address, address, slide};
    return findLocalSymbol({&image, 1}, "fuzzed", Symbol);
}

// Bytes of a true image, changed in the places that the input names: three bytes a change.
void walkChangedImage(std::span<const std::uint8_t> input)
{
    static const MachOImage original(Symbol, Address);
    const auto memory = original.memory();
    // An allocation of its own size, so that a read beyond it is noticed.
    const std::unique_ptr<std::byte[]> copy(new std::byte[memory.size()]);
    std::memcpy(copy.get(), memory.data(), memory.size());
    for (std::size_t i = 0; i + 2 < input.size(); i += 3) {
        const std::size_t offset = (input[i] | input[i + 1] << 8) % memory.size();
        copy[offset] = std::byte(input[i + 2]);
    }
    const auto moved = reinterpret_cast<std::intptr_t>(copy.get())
        - reinterpret_cast<std::intptr_t>(memory.data());
    const auto found = find({copy.get(), memory.size()}, original.slide() + moved);
    const std::uint64_t unchanged = Address + static_cast<std::uint64_t>(moved);
    if (input.size() < 3 && found != unchanged)
        qFatal("an unchanged image must give its symbol");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    if (size == 0)
        return 0;
    const std::span input(data + 1, size - 1);
    if (data[0] & 1) {
        walkChangedImage(input);
    } else {
        const std::unique_ptr<std::byte[]> copy(new std::byte[input.size()]);
        std::memcpy(copy.get(), input.data(), input.size());
        find({copy.get(), input.size()}, 0);
    }
    return 0;
}
