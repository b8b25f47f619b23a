#include "Plugins/ModbusTcp/Blocks/MapFingerprintBlock.h"
#include "Plugins/ModbusTcp/Blocks/LayoutFacts.h"
#include "Plugins/ModbusTcp/ModbusMetrics.h"
#include "Plugins/ModbusTcp/RegisterImage.h"
#include "Plugins/ModbusTcp/ResultEncoder.h"
#include "Support/Refusal.h"
#include "Support/TestFrames.h"
#include "Tests/Plugins/ModbusTcp/BlockFixture.h"
#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultBlockFields.h"
#include "ZuControl/ControlProtocol/Fingerprint.h"
#include "ZuControl/ControlProtocol/LayoutCopy.h"

#include <atomic>
#include <memory>
#include <thread>
#include <vector>

namespace ModbusTcp
{

using ZuTest::RefusalOf;
using ZuTest::TestBatch;
using ZuTest::TestFrame;
using namespace ZuControl::ControlProtocol;

using Registers = std::vector<uint16>;

class MapFingerprintBlockTest : public BlockFixture
{
protected:
    void Install()
    {
        encoder.Install(RegisterLayout::Take(assembly));
    }

    Registers Read(uint16 first, std::size_t count)
    {
        Registers registers(count, 0xAAAA);
        image->Read(first, registers);
        return registers;
    }

    void Move(uint16 from, uint16 to)
    {
        UpdateBlockParams params;
        params.outputId.Set(from);
        params.newParams.outputId.Set(to);
        assembly.Update(params);
    }

    /// The registers of the present fingerprint, the most significant first.
    Registers Fingerprinted()
    {
        uint32 const fingerprint = Fingerprint::Of({ReadLayout(assembly)});
        return {static_cast<uint16>(fingerprint >> 16), static_cast<uint16>(fingerprint)};
    }

    std::unique_ptr<RegisterImage> image = std::make_unique<RegisterImage>();
    ModbusCounters counters;
    ResultEncoder encoder{*image, counters};
};

TEST_F(MapFingerprintBlockTest, ShowsTheFingerprintOfThePresentLayout)
{
    Place("MapFingerprint", 300);
    Place("Decision", 400, "m");
    Install();
    Registers const before = Read(300, 2);
    EXPECT_EQ(before, Fingerprinted());

    Move(400, 401);
    Install();
    EXPECT_EQ(Read(300, 2), Fingerprinted());
    EXPECT_NE(Read(300, 2), before);

    Move(401, 400);
    Install();
    EXPECT_EQ(Read(300, 2), before);
}

TEST_F(MapFingerprintBlockTest, ShowsItInTheOrderOfTheBlock)
{
    Place("MapFingerprint", 300);
    Place("MapFingerprint", 310, "", "DCBA");
    Install();

    Registers const number = Fingerprinted();
    EXPECT_EQ(Read(300, 2), number);
    EXPECT_EQ(Read(310, 2), (Registers{__builtin_bswap16(number[1]), __builtin_bswap16(number[0])}));
}

TEST_F(MapFingerprintBlockTest, StaysWhenTheResultsAreBlanked)
{
    Place("MapFingerprint", 300);
    Install();

    encoder.Blank();

    EXPECT_EQ(Read(300, 2), Fingerprinted());
}

TEST_F(MapFingerprintBlockTest, HidesWhileAnotherMapIsInstalled)
{
    Place("MapFingerprint", 300);
    Install();
    encoder.HideFingerprint(*RegisterLayout::Take(assembly));
    EXPECT_EQ(Read(300, 2), Fingerprinted()) << "of the same map";

    Place("Decision", 400, "m");
    encoder.HideFingerprint(*RegisterLayout::Take(assembly));
    EXPECT_EQ(Read(300, 2), (Registers{0, 0}));
    Install();
    EXPECT_EQ(Read(300, 2), Fingerprinted());
}

TEST_F(MapFingerprintBlockTest, EncodesInTheOrderOfTheInstalledMap)
{
    Place("MeasurementValue", 302, "m");
    Install();
    SetOrder(302, "DCBA"); // not yet installed

    TestBatch batch;
    batch.Add(TestFrame().Measurement("m", 0.007));
    encoder.Process(batch.List());

    EXPECT_EQ(Read(302, 2), (Registers{0, 7}));
}

TEST_F(MapFingerprintBlockTest, HidesFromAPauseToItsEnd)
{
    Place("MapFingerprint", 300);
    Place("MeasurementValue", 302, "m");
    Install();

    encoder.Pause();
    EXPECT_EQ(Read(300, 4), Registers(4, 0));
    assembly.ChangeBigEndianSupportedBlocks(false);
    Install();
    EXPECT_EQ(Read(300, 4), Registers(4, 0)) << "a layout of a pause shows at its end";
    encoder.Resume();

    Registers const number = Fingerprinted();
    EXPECT_EQ(Read(300, 4), (Registers{number[1], number[0], 0, 0x8000}));
}

TEST_F(MapFingerprintBlockTest, CostsALayoutWithoutItNothing)
{
    Place("Decision", 400, "m");
    EXPECT_EQ(RegisterLayout::Take(assembly)->facts.fingerprint, 0u);
    Place("MapFingerprint", 300);
    EXPECT_NE(RegisterLayout::Take(assembly)->facts.fingerprint, 0u);
}

TEST_F(MapFingerprintBlockTest, RefusesWrongSizes)
{
    auto const block = Place("MapFingerprint", 300);
    uint8 bytes[4] = {};
    LayoutFacts const facts;
    auto const status = [&](void* destination, std::size_t size, void const* source, std::size_t sourceSize) {
        return RefusalOf([&] { block->Serialize(destination, size, source, sourceSize); }).status;
    };
    EXPECT_EQ(status(bytes, 3, &facts, sizeof facts), Zu::Status::WRONG_BUFFER_SIZE);
    EXPECT_EQ(status(nullptr, 4, &facts, sizeof facts), Zu::Status::WRONG_BUFFER_SIZE);
    EXPECT_EQ(status(bytes, 4, nullptr, sizeof facts), Zu::Status::WRONG_BUFFER_SIZE);
    EXPECT_EQ(status(bytes, 4, &facts, 3), Zu::Status::WRONG_BUFFER_SIZE);
}

TEST_F(MapFingerprintBlockTest, TellsItsRoleInPlcFiles)
{
    std::vector<RegisterField> const fields = FieldsOf(*Place("MapFingerprint", 300, "", "CDAB"));

    ASSERT_EQ(fields.size(), 1u);
    EXPECT_EQ(fields[0].name, "fingerprint");
    EXPECT_EQ(fields[0].type, FieldType::UDINT);
    EXPECT_EQ(fields[0].count, 2);
    EXPECT_EQ(fields[0].role, FieldRole::FINGERPRINT);
    EXPECT_EQ(fields[0].order, BlockOrder::CDAB);
}

TEST_F(MapFingerprintBlockTest, BelongsToTheRegistersOfTheSameRead)
{
    Place("MapFingerprint", 300);
    Place("MeasurementValue", 310, "m");
    Install();
    Registers const at310 = Fingerprinted();
    std::atomic<bool> done{false};
    std::thread changes([&] {
        for (int i = 0; i < 300; ++i)
        {
            TestBatch batch;
            batch.Add(TestFrame().Measurement("m", 0.007));
            encoder.Process(batch.List());
            Move(static_cast<uint16>(i % 2 == 0 ? 310 : 320), static_cast<uint16>(i % 2 == 0 ? 320 : 310));
            Install();
        }
        done = true;
    });

    uint64 wrong = 0;
    while (!done)
    {
        Registers const seen = Read(300, 22);
        bool const isAt310 = seen[10] != 0 || seen[11] != 0;
        wrong += (Registers{seen[0], seen[1]} == at310) == isAt310 ? 0 : 1;
    }
    changes.join();

    EXPECT_EQ(wrong, 0u);
}

} // namespace ModbusTcp
