#include "Support/Refusal.h"
#include "Support/RegisterBlocks.h"
#include "ZuApi/JsonSerializer.h"
#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultScannerStateRegisterBlock.h"
#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultSystemStateRegisterBlock.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterAssemblyBase.h"
#include "ZuControl/ControlProtocol/RegisterBlockParams.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cstring>

namespace ZuControl::ControlProtocol
{

using ZuTest::Bytes;
using ZuTest::Refusal;
using ZuTest::RefusalOf;

namespace
{

template <typename Block>
struct Fixture
{
    Fixture(uint16 registers, uint8 bytesPerRegister, bool isBigEndian)
        : type(ZuTest::MakeType<Block>(registers, bytesPerRegister, isBigEndian)), block(RegisterBlockParams(), *type)
    {
    }

    template <typename Data>
    Bytes Write(Data const& data)
    {
        return ZuTest::Written(block, type->SerializedOutputSize(), &data, sizeof data);
    }

    std::unique_ptr<ProtocolRegisterBlockInfo> type;
    Block block;
};

using System = Fixture<DefaultSystemStateRegisterBlock>;
using SystemData = DefaultSystemStateRegisterBlock::DefaultSystemStateData;
using Scanner = Fixture<DefaultScannerStateRegisterBlock>;
using ScannerData = DefaultScannerStateRegisterBlock::DefaultScannerStateData;

SystemData StateWith(std::string const& name)
{
    SystemData data{};
    data.stateByte0 = 0xB0;
    data.stateByte2 = 0xB2;
    data.stateByte3 = 0xB3;
    data.value64 = 0x0102030405060708;
    data.jobFileNameLength = static_cast<uint8>(name.size());
    std::memcpy(data.jobFileName, name.data(), std::min<size_t>(name.size(), 64));
    return data;
}

Bytes Part(Bytes const& bytes, size_t from, size_t to)
{
    return Bytes(bytes.begin() + static_cast<std::ptrdiff_t>(from), bytes.begin() + static_cast<std::ptrdiff_t>(to));
}

bool IsMarkedUnused(ProtocolRegisterBlock const& block)
{
    nlohmann::json const schema =
        Zu::Properties::JsonSerializer::SerializeSchema(block).at("properties").at("scannerId");
    return schema.contains("used") && schema.at("used") == false;
}

} // namespace

TEST(DefaultSystemStateRegisterBlock, WritesItsFieldsInTheOrderOfTheProtocol)
{
    Bytes const big = System(76, 1, true).Write(StateWith("abc"));
    EXPECT_EQ(Part(big, 0, 14), (Bytes{1, 2, 3, 4, 5, 6, 7, 8, 0xB0, 3, 'a', 'b', 'c', 0}));
    EXPECT_EQ(Part(big, 13, 74), Bytes(61, 0)); // clears the rest of an earlier, longer name
    EXPECT_EQ(Part(big, 74, 76), (Bytes{0xB2, 0xB3}));

    Bytes const little = System(76, 1, false).Write(StateWith("abc"));
    EXPECT_EQ(Part(little, 0, 14), (Bytes{8, 7, 6, 5, 4, 3, 2, 1, 0xB0, 3, 'a', 'b', 'c', 0}));
}

TEST(DefaultSystemStateRegisterBlock, TakesAFullNameAndAnEmptyOne)
{
    Bytes const full = System(76, 1, true).Write(StateWith(std::string(64, 'x')));
    EXPECT_EQ(Part(full, 9, 75), [] {
        Bytes expected{64};
        expected.resize(65, 'x');
        expected.push_back(0xB2);
        return expected;
    }());

    EXPECT_EQ(Part(System(76, 1, true).Write(StateWith("")), 9, 74), Bytes(65, 0));
}

TEST(DefaultSystemStateRegisterBlock, LetsTheLaterFieldWinInRegistersOfTwo)
{
    Bytes const written = System(76, 2, true).Write(StateWith("a\xE9"));

    EXPECT_EQ(Part(written, 0, 16), (Bytes{2, 1, 4, 3, 6, 5, 8, 7, 0xB0, 2, 'a', 0x00, 0xE9, 0xFF, 0, 0}));
    EXPECT_EQ(Part(written, 16, 138), Bytes(122, 0)); // the last two state bytes are cleared with the name
    EXPECT_EQ(Part(written, 138, 152), Bytes(14, 0xAA));
}

TEST(DefaultSystemStateRegisterBlock, FollowsTheOffsetsOfADerivedLayout)
{
    System system(72, 2, true);
    system.block.jobFileNameLength = 10;
    system.block.jobFileName = 12;
    system.block.stateByte2 = 140;
    system.block.stateByte3 = 142;

    Bytes const written = system.Write(StateWith("ab"));

    EXPECT_EQ(Part(written, 8, 16), (Bytes{0xB0, 0, 2, 0, 'a', 0, 'b', 0}));
    EXPECT_EQ(Part(written, 140, 144), (Bytes{0xB2, 0, 0xB3, 0}));
}

TEST(DefaultSystemStateRegisterBlock, RefusesInOrderAndWritesNothing)
{
    System system(76, 1, true);
    SystemData data = StateWith("abc");
    data.jobFileNameLength = 65;
    Bytes registers(77, 0xAA);
    auto const serialize = [&](size_t destinationSize, size_t sourceSize) {
        return RefusalOf([&] { system.block.Serialize(registers.data(), destinationSize, &data, sourceSize); });
    };

    EXPECT_EQ(serialize(77, 79), (Refusal{-992, "Insufficient source buffer size available for data serialization."}));
    EXPECT_EQ(serialize(77, 80),
              (Refusal{-992, "Insufficient destination buffer size available for data serialization output."}));
    EXPECT_EQ(serialize(76, 80), (Refusal{-997, "The job filename length specified [65] is too long."}));
    EXPECT_EQ(registers, Bytes(77, 0xAA));
}

TEST(DefaultSystemStateRegisterBlock, RefusesATypeWithTooFewRegisters)
{
    EXPECT_EQ(RefusalOf([] { System(75, 1, true).Write(StateWith("")); }),
              (Refusal{-992, "Insufficient destination buffer size available for data serialization output."}));
    EXPECT_EQ(RefusalOf([] { System(76, 3, true).Write(StateWith("")); }),
              (Refusal{-997, "Invalid bytes per register found (3)"}));
}

TEST(DefaultStateRegisterBlocks, NeedALeastNumberOfRegistersOfTwo)
{
    EXPECT_NO_THROW(System(69, 2, true).Write(StateWith("")));
    EXPECT_EQ(RefusalOf([] { System(68, 2, true).Write(StateWith("")); }),
              (Refusal{-992, "Insufficient destination buffer size available for data serialization output."}));
    EXPECT_NO_THROW(Scanner(10, 2, true).Write(ScannerData{}));
    EXPECT_EQ(RefusalOf([] { Scanner(9, 2, true).Write(ScannerData{}); }),
              (Refusal{-992, "Insufficient destination buffer sizes available for data serialization output."}));
}

TEST(DefaultScannerStateRegisterBlock, WritesItsFields)
{
    ScannerData const data{0xA0, 0xA1, -1, 0x0102030405060708};

    EXPECT_EQ(Scanner(18, 1, true).Write(data),
              (Bytes{0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 1, 2, 3, 4, 5, 6, 7, 8, 0xA0, 0xA1}));
    EXPECT_EQ(Part(Scanner(18, 1, false).Write(data), 8, 18), (Bytes{8, 7, 6, 5, 4, 3, 2, 1, 0xA0, 0xA1}));
    EXPECT_EQ(Part(Scanner(10, 2, true).Write(data), 8, 20), (Bytes{2, 1, 4, 3, 6, 5, 8, 7, 0xA0, 0xA1, 0x00, 0xAA}));
}

TEST(DefaultScannerStateRegisterBlock, RefusesInOrderAndWritesNothing)
{
    Scanner scanner(18, 1, true);
    ScannerData const data{};
    Bytes registers(19, 0xAA);

    EXPECT_EQ(RefusalOf([&] { scanner.block.Serialize(registers.data(), 19, &data, 23); }),
              (Refusal{-992, "Insufficient source buffer size available for data serialization."}));
    EXPECT_EQ(RefusalOf([&] { scanner.block.Serialize(registers.data(), 19, &data, 24); }),
              (Refusal{-992, "Insufficient destination buffer sizes available for data serialization output."}));
    EXPECT_EQ(registers, Bytes(19, 0xAA));
    EXPECT_EQ(RefusalOf([&] { Scanner(17, 1, true).Write(data); }),
              (Refusal{-992, "Insufficient destination buffer sizes available for data serialization output."}));
}

TEST(DefaultScannerStateRegisterBlockInfo, GivesItsBlockUpOnlyWhereItMayBeLeftOut)
{
    for (bool const mayBeLeftOut : {true, false})
    {
        ProtocolRegisterAssemblyBase assembly(true);
        assembly.AddSupportedBlockType(std::make_unique<DefaultScannerStateRegisterBlockInfo>(mayBeLeftOut));
        AddBlockParams added;
        added.blocks.Add().type.Set("Scanner");
        assembly.Add(added);
        RemoveBlockParams removed;
        removed.outputIdList.Add().outputId.Set(0);

        Refusal const refusal = RefusalOf([&] { assembly.Remove(removed); });

        EXPECT_EQ(refusal, mayBeLeftOut ? (Refusal{1, ""}) : (Refusal{0, "No register blocks were removed."}));
        EXPECT_EQ(assembly.FindAddedBlocksOfTypes({"Scanner"}).size(), mayBeLeftOut ? 0u : 1u);
    }
}

TEST(DefaultStateRegisterBlocks, MarkTheScannerIdAsUnusedInTheSystemBlockAlone)
{
    EXPECT_TRUE(IsMarkedUnused(System(76, 1, true).block));
    EXPECT_FALSE(IsMarkedUnused(Scanner(18, 1, true).block));
}

} // namespace ZuControl::ControlProtocol
