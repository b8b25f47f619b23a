#include "ZuControl/ControlProtocol/Fingerprint.h"

#include "Support/RandomDraws.h"

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <set>

namespace ZuControl::ControlProtocol::Fingerprint
{

namespace
{

LayoutEntry Block()
{
    LayoutEntry entry;
    entry.outputId = 170;
    entry.registers = 3;
    entry.bytesPerRegister = 2;
    entry.isBigEndian = true;
    entry.type = "Measurement";
    entry.source = "profile/zMax";
    entry.scannerId = "scanner-0";
    return entry;
}

LayoutEntry Number(uint16 id, char const* source)
{
    LayoutEntry entry;
    entry.outputId = id;
    entry.source = source;
    return entry;
}

LayoutEntry Text(char const* id, char const* source)
{
    LayoutEntry entry;
    entry.textId = id;
    entry.source = source;
    return entry;
}

Layout Make(Layout::Kind kind, std::vector<LayoutEntry> entries)
{
    Layout layout;
    layout.kind = kind;
    layout.entries = std::move(entries);
    return layout;
}

Layout Assembly(std::vector<LayoutEntry> entries)
{
    Layout layout = Make(Layout::Kind::BLOCKS, std::move(entries));
    layout.id = "registerAssembly-0";
    layout.isAddressed = true;
    return layout;
}

Layout Registers()
{
    LayoutEntry entry = Number(100, "a");
    entry.registers = 2;
    entry.outputSize = 3;
    entry.dataOffset = 1;
    entry.dataLength = 4;
    Layout layout = Make(Layout::Kind::REGISTERS, {entry});
    layout.isAddressed = true;
    layout.itemSize = 2;
    return layout;
}

} // namespace

TEST(Fingerprint, IsTheCrcOfZip)
{
    EXPECT_EQ(Crc32("123456789"), 0xCBF43926);
    EXPECT_EQ(Crc32(""), 0u);
    EXPECT_EQ(Crc32("The quick brown fox jumps over the lazy dog"), 0x414FA339);
    EXPECT_EQ(Crc32(std::string(32, '\0')), 0x190A55AD);
    EXPECT_EQ(Crc32(std::string(32, '\xFF')), 0xFF6CAB0B);
    EXPECT_EQ(Crc32("12345678"), 0x9AE0DAAF);
}

TEST(Fingerprint, OfKnownLayoutsIsTheSameForEver)
{
    Layout const texts = Make(Layout::Kind::TEXTS, {Text("width", "profile/width")});

    EXPECT_EQ(Of({}), 0xFB42DEAD);
    EXPECT_EQ(Of({Assembly({})}), 0x05431F0F);
    EXPECT_EQ(Of({Assembly({Block()})}), 0x6AF4A8B1);
    EXPECT_EQ(Of({Make(Layout::Kind::NUMBERS, {Number(3, "a"), Number(7, "gr\xC3\xB6\xC3\x9F"
                                                                         "e")})}),
              0x71C51561);
    EXPECT_EQ(Of({Registers()}), 0xDB2B4F21);
    EXPECT_EQ(Of({texts}), 0x161D733B);
    EXPECT_EQ(Of({Assembly({Block()}), texts}), 0x7F71E206);
}

TEST(Fingerprint, TakesTheseBytes)
{
    static constexpr char EXPECTED[] = "\x01\x01\x00\x00\x00"         // version, layouts
                                       "\x03\x00\x00\x00\x00"         // kind, id
                                       "\x01\x02\x00\x01\x00\x00\x00" // addresses, item size, entries
                                       "\x00\x00\x00\x00"             // id as text
                                       "\x64\x00\x02\x00\x00\x00"     // id, registers, bytes per register, order
                                       "\x03\x00\x01\x00\x04\x00"     // size, offset, length
                                       "\x00\x00\x00\x00\x01\x00\x00\x00\x61\x00\x00\x00\x00"; // type, source, scanner
    EXPECT_EQ(CanonicalBytes({Registers()}), std::string(EXPECTED, sizeof(EXPECTED) - 1));
}

TEST(Fingerprint, CoversNeitherNamesNorTheOrderOfTheList)
{
    LayoutEntry renamed = Block();
    renamed.displayName = "Height";
    renamed.origin = 4;
    EXPECT_EQ(Of({Assembly({renamed})}), Of({Assembly({Block()})}));
    EXPECT_EQ(Of({Make(Layout::Kind::NUMBERS, {Number(7, "b"), Number(3, "a")})}),
              Of({Make(Layout::Kind::NUMBERS, {Number(3, "a"), Number(7, "b")})}));
}

namespace
{

Layout SomeLayout(ZuTest::RandomDraws& draws)
{
    Layout layout = Assembly({});
    uint16 id = 0;
    for (uint32 i = 1 + draws.Below(20); i > 0; --i)
    {
        LayoutEntry entry = Block();
        entry.outputId = id = static_cast<uint16>(id + 1 + draws.Below(5));
        entry.textId = draws.OneIn(2) ? "" : "id" + std::to_string(draws.Below(100));
        entry.registers = static_cast<uint16>(draws.Below(20));
        entry.bytesPerRegister = static_cast<uint8>(1 + draws.Below(2));
        entry.isBigEndian = draws.OneIn(2);
        entry.type = "Type" + std::to_string(draws.Below(30));
        entry.source = draws.OneIn(4) ? "" : "profile/" + std::to_string(draws.Below(1000));
        entry.scannerId = draws.OneIn(4) ? "scanner-1" : "";
        layout.entries.push_back(entry);
    }
    return layout;
}

using Change = std::function<void(Layout&, LayoutEntry&, ZuTest::RandomDraws&)>;

uint16 Other(uint16 value, ZuTest::RandomDraws& draws)
{
    return static_cast<uint16>(value + 1 + draws.Below(65535));
}

std::map<std::string, Change> const SINGLE_CHANGES = {
    {"address", [](Layout&, LayoutEntry& entry, auto& draws) { entry.outputId = Other(entry.outputId, draws); }},
    {"id as text",
     [](Layout&, LayoutEntry& entry, auto& draws) { entry.textId += static_cast<char>('a' + draws.Below(26)); }},
    {"registers", [](Layout&, LayoutEntry& entry, auto& draws) { entry.registers = Other(entry.registers, draws); }},
    {"bytes per register", [](Layout&, LayoutEntry& entry, auto&) { entry.bytesPerRegister ^= 3; }},
    {"order of registers", [](Layout&, LayoutEntry& entry, auto&) { entry.isBigEndian = !entry.isBigEndian; }},
    {"order of bytes", [](Layout&, LayoutEntry& entry, auto&) { entry.areBytesSwapped = !entry.areBytesSwapped; }},
    {"size", [](Layout&, LayoutEntry& entry, auto& draws) { entry.outputSize = Other(entry.outputSize, draws); }},
    {"offset", [](Layout&, LayoutEntry& entry, auto& draws) { entry.dataOffset = Other(entry.dataOffset, draws); }},
    {"length", [](Layout&, LayoutEntry& entry, auto& draws) { entry.dataLength = Other(entry.dataLength, draws); }},
    {"type", [](Layout&, LayoutEntry& entry, auto& draws) { entry.type += std::to_string(draws.Below(1000)); }},
    {"source",
     [](Layout&, LayoutEntry& entry, auto& draws) { entry.source = "other/" + std::to_string(draws.Below(1000)); }},
    {"scanner", [](Layout&, LayoutEntry& entry, auto& draws) { entry.scannerId += std::to_string(draws.Below(1000)); }},
    {"a letter goes to the next text",
     [](Layout&, LayoutEntry& entry, auto&) {
         entry.source.insert(entry.source.begin(), entry.type.back());
         entry.type.pop_back();
     }},
    {"one entry more", [](Layout& layout, LayoutEntry&, auto&) { layout.entries.push_back(Block()); }},
    {"one entry less", [](Layout& layout, LayoutEntry&, auto&) { layout.entries.pop_back(); }},
    {"two sources exchanged",
     [](Layout& layout, LayoutEntry&, auto&) {
         layout.entries.push_back(Number(60000, "left"));
         std::swap(layout.entries.front().source, layout.entries.back().source);
     }},
    {"kind", [](Layout& layout, LayoutEntry&, auto&) { layout.kind = Layout::Kind::NUMBERS; }},
    {"id of the assembly", [](Layout& layout, LayoutEntry&, auto&) { layout.id += "x"; }},
    {"model of addresses", [](Layout& layout, LayoutEntry&, auto&) { layout.isAddressed = false; }},
    {"size of an item", [](Layout& layout, LayoutEntry&, auto&) { layout.itemSize ^= 2; }},
};

} // namespace

TEST(Fingerprint, IsAnotherOneAfterEachSingleChange)
{
    ZuTest::RandomDraws draws(20261122);
    for (int i = 0; i < ZuTest::OperationsOf(200'000); ++i)
    {
        Layout const layout = SomeLayout(draws);
        uint32 const before = Of({layout});
        for (auto const& [name, change] : SINGLE_CHANGES)
        {
            Layout changed = layout;
            change(changed, changed.entries[draws.IndexOf(changed.entries)], draws);
            ASSERT_NE(Of({changed}), before) << name << ", " << draws;
        }
    }
}

TEST(Fingerprint, TellsTheNeighboursOfOneLayoutApart)
{
    std::set<uint32> numbers;
    std::size_t count = 0;
    for (uint32 id = 0; id < 65535; id += 7)
    {
        LayoutEntry block = Block();
        block.outputId = static_cast<uint16>(id);
        for (char const* const source : {"profile/zMax", "profile/zMin"})
        {
            block.source = source;
            numbers.insert(Of({Assembly({block})}));
            ++count;
        }
    }
    EXPECT_EQ(numbers.size(), count);
}

} // namespace ZuControl::ControlProtocol::Fingerprint
