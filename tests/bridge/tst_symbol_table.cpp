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
constexpr char name[] = "/System/Some.framework/Some";
constexpr char part[] = "/Some.framework/";

Image imageOf(const MachOImage &image)
{
    Image result;
    result.name = name;
    result.memory = image.memory();
    result.memoryAddress = reinterpret_cast<std::uintptr_t>(image.memory().data());
    result.headerAddress = result.memoryAddress;
    result.slide = image.slide();
    return result;
}

// The image's bytes on a heap block of exactly their size, where leaving them is noticed.
class Copy
{
public:
    Copy(const Image &image, std::size_t size, std::size_t offset = 0)
        : m_bytes(std::make_unique<std::byte[]>(size + offset))
    {
        std::copy_n(image.memory.begin(), size, m_bytes.get() + offset);
        m_image = image;
        m_image.memory = {m_bytes.get(), size + offset};
        m_image.memoryAddress -= offset;
    }

    std::byte &operator[](std::size_t i) { return m_bytes[i]; }

    std::optional<std::uint64_t> find() const
    {
        return findLocalSymbol({&m_image, 1}, part, symbol.constData());
    }

private:
    std::unique_ptr<std::byte[]> m_bytes;
    Image m_image;
};

} // namespace

class TestSymbolTable : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void faultyImage_data();
    void faultyImage();
    void firstMatchingImageWins();
    void headerMayStandAnywhere();
    void addressesMayReachTheEndsOfMemory();
    void comparesWholeNames();
    void truncatedImageGivesNothingWrong();
    void corruptImageIsNotLeft();
};

void TestSymbolTable::faultyImage_data()
{
    QTest::addColumn<MachOFault>("fault");
    QTest::addColumn<bool>("resolves");
    QTest::addColumn<bool>("nextIsTried");

    QTest::newRow("sound") << MachOFault::None << true << false;
    QTest::newRow("repeated commands") << MachOFault::RepeatedCommands << true << false;
    QTest::newRow("no symbols") << MachOFault::NoSymbols << false << true;
    QTest::newRow("name outside strings") << MachOFault::NameOutsideStrings << false << true;
    QTest::newRow("symbol missing") << MachOFault::NoTarget << false << true;
    QTest::newRow("wrong magic") << MachOFault::WrongMagic << false << false;
    QTest::newRow("no commands") << MachOFault::NoCommands << false << false;
    QTest::newRow("short command") << MachOFault::ShortCommand << false << false;
    QTest::newRow("no symbol table") << MachOFault::NoSymbolTable << false << false;
    QTest::newRow("no link-edit segment") << MachOFault::NoLinkEdit << false << false;
    QTest::newRow("commands outside") << MachOFault::CommandsOutsideImage << false << false;
    QTest::newRow("symbols outside") << MachOFault::SymbolsOutsideImage << false << false;
    QTest::newRow("strings outside") << MachOFault::StringsOutsideImage << false << false;
    QTest::newRow("link-edit outside") << MachOFault::LinkEditOutsideImage << false << false;
    QTest::newRow("unterminated name") << MachOFault::UnterminatedName << false << false;
}

void TestSymbolTable::faultyImage()
{
    QFETCH(MachOFault, fault);
    QFETCH(bool, resolves);
    QFETCH(bool, nextIsTried);

    const MachOImage first(symbol, address, fault);
    const MachOImage second(symbol, address + 1);
    const std::array images{imageOf(first), imageOf(second)};
    const auto found = findLocalSymbol(images, part, symbol.constData());
    QCOMPARE(found.has_value(), resolves || nextIsTried);
    if (found)
        QCOMPARE(*found, resolves ? address : address + 1);
}

void TestSymbolTable::firstMatchingImageWins()
{
    const MachOImage broken(symbol, address, MachOFault::WrongMagic);
    const MachOImage sound(symbol, address);
    std::array images{imageOf(broken), imageOf(sound)};
    images[0].name = "/usr/lib/Some.framework.dylib";
    QVERIFY(findLocalSymbol(images, part, symbol.constData()) == address);
    QVERIFY(!findLocalSymbol(images, "/Other.framework/", symbol.constData()));
    QVERIFY(!findLocalSymbol({}, part, symbol.constData()));
}

void TestSymbolTable::headerMayStandAnywhere()
{
    const MachOImage image(symbol, address);
    for (const std::size_t offset : {1, 3, 4096}) {
        const Copy copy(imageOf(image), image.memory().size(), offset);
        QVERIFY(copy.find() == address);
    }
    Image outside = imageOf(image);
    outside.headerAddress = 0;
    QVERIFY(!findLocalSymbol({&outside, 1}, part, symbol.constData()));
}

void TestSymbolTable::addressesMayReachTheEndsOfMemory()
{
    const MachOImage image(symbol, address);
    const Image true_ = imageOf(image);
    for (const std::uint64_t start : {std::uint64_t(0), 0 - std::uint64_t(true_.memory.size())}) {
        const std::uint64_t distance = start - true_.memoryAddress;
        Image moved = true_;
        moved.memoryAddress += distance;
        moved.headerAddress += distance;
        moved.slide = static_cast<std::int64_t>(static_cast<std::uint64_t>(moved.slide) + distance);
        QVERIFY(findLocalSymbol({&moved, 1}, part, symbol.constData()) == address + distance);
    }
}

void TestSymbolTable::comparesWholeNames()
{
    const MachOImage image(symbol, address);
    const Image whole = imageOf(image);
    const QByteArray longer = symbol + 'x';
    for (const QByteArray &other : {longer, symbol.chopped(1), symbol.toUpper()})
        QVERIFY(!findLocalSymbol({&whole, 1}, part, other.constData()));
}

void TestSymbolTable::truncatedImageGivesNothingWrong()
{
    const MachOImage image(symbol, address);
    const Image whole = imageOf(image);
    for (std::size_t size = 0; size < whole.memory.size(); ++size) {
        const auto found = Copy(whole, size).find();
        QVERIFY(!found || *found == address);
    }
}

void TestSymbolTable::corruptImageIsNotLeft()
{
    const MachOImage image(symbol, address);
    const Image whole = imageOf(image);
    Copy copy(whole, whole.memory.size());
    for (std::size_t i = 0; i < whole.memory.size(); ++i) {
        const std::byte before = copy[i];
        for (const int value : {0x00, 0x01, 0x7F, 0x80, 0xFF}) {
            copy[i] = std::byte(value);
            copy.find(); // any answer will do
        }
        copy[i] = before;
    }
    QVERIFY(copy.find() == address);
}

QTEST_GUILESS_MAIN(TestSymbolTable)
#include "tst_symbol_table.moc"
