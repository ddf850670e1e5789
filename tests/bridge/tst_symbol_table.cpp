#include "bridge/symbol_table.h"
#include "platform/simulated/mach_o_image.h"
#include "support/test.h"

#include <array>

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
};

QTEST_GUILESS_MAIN(TestSymbolTable)
#include "tst_symbol_table.moc"
