#include "bridge/symbol_table.h"
#include "platform/simulated/mach_o_image.h"

#include <QTest>

#include <algorithm>
#include <array>
#include <memory>

using namespace tovel;

namespace {

const QByteArray symbol = QByteArrayLiteral("__ZL6hiddenv");
constexpr std::uint64_t address = 0x1234'5678;
constexpr char part[] = "/Some.framework/";

Image imageOf(const MachOImage &image)
{
    Image result;
    result.name = "/System/Some.framework/Some";
    result.memory = image.memory();
    result.memoryAddress = reinterpret_cast<std::uintptr_t>(image.memory().data());
    result.headerAddress = result.memoryAddress;
    result.slide = image.slide();
    return result;
}

std::optional<std::uint64_t> find(const Image &image)
{
    return findLocalSymbol({&image, 1}, part, symbol.constData());
}

// Part of an image on a heap block of exactly its size, where leaving it is noticed.
struct Copy
{
    Copy(const Image &whole, std::size_t size)
        : bytes(std::make_unique<std::byte[]>(size))
        , image(whole)
    {
        std::copy_n(whole.memory.begin(), size, bytes.get());
        image.memory = {bytes.get(), size};
    }

    std::unique_ptr<std::byte[]> bytes;
    Image image;
};

} // namespace

class TestSymbolTable : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void searchesPastFaults()
    {
        // In the faulty image, in the sound one after it, or in none.
        const auto found = [](MachOFault fault) {
            const MachOImage first(symbol, address + 1, fault);
            const MachOImage second(symbol, address + 2);
            const MachOImage elsewhere(symbol, address + 3, MachOFault::WrongMagic);
            std::array images{imageOf(elsewhere), imageOf(first), imageOf(second)};
            images[0].name = "/usr/lib/Some.framework.dylib";
            return findLocalSymbol(images, part, symbol.constData()).value_or(address) - address;
        };
        using enum MachOFault;
        for (const MachOFault fault : {None, RepeatedCommands})
            QCOMPARE(found(fault), 1U);
        for (const MachOFault fault : {NoSymbols, NameOutsideStrings, NoTarget})
            QCOMPARE(found(fault), 2U);
        for (const MachOFault fault :
             {WrongMagic, NoCommands, ShortCommand, NoSymbolTable, NoLinkEdit, CommandsOutsideImage,
              SymbolsOutsideImage, StringsOutsideImage, LinkEditOutsideImage, UnterminatedName})
            QCOMPARE(found(fault), 0U);
    }

    void neverLeavesADamagedImage()
    {
        const MachOImage image(symbol, address);
        const Image whole = imageOf(image);
        for (std::size_t size = 0; size < whole.memory.size(); ++size)
            QCOMPARE(find(Copy(whole, size).image).value_or(address), address);

        QVERIFY(find(Copy(whole, whole.memory.size()).image) == address);
        QVERIFY(findLocalSymbol({&whole, 1}, part, "_main")); // the first of the table
    }
};

QTEST_GUILESS_MAIN(TestSymbolTable)
#include "tst_symbol_table.moc"
