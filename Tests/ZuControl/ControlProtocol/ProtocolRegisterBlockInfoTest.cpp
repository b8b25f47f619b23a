#include "ZuControl/ControlProtocol/ProtocolRegisterBlockInfo.h"

#include "Support/Refusal.h"
#include "Support/RegisterBlocks.h"
#include "ZuApi/JsonSerializer.h"
#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultControlRegisterBlocks.h"
#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultMeasurementRegisterBlocks.h"
#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultScannerStateRegisterBlock.h"
#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultStampRegisterBlock.h"
#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultSystemStateRegisterBlock.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace ZuControl::ControlProtocol
{

using ZuTest::Refusal;
using ZuTest::RefusalOf;
using ZuTest::TypeParams;

namespace
{

RegisterBlockInfoParams Limited(uint16 least, uint16 most)
{
    auto params = TypeParams("Test", 4);
    params.minInstanceCount = least;
    params.maxInstanceCount = most;
    return params;
}

/// The attributes of a block type.
struct Shown
{
    std::string type;
    std::string displayName;
    int category;
    int registers;
    int deserializedInputSize;
    int least;
    int most;
    bool hasDataSource;

    bool operator==(Shown const&) const = default;
};

std::ostream& operator<<(std::ostream& stream, Shown const& shown)
{
    return stream << shown.type << ", " << shown.displayName << ", " << shown.category << ", " << shown.registers
                  << ", " << shown.deserializedInputSize << ", " << shown.least << ", " << shown.most << ", "
                  << shown.hasDataSource;
}

Shown ShownBy(ProtocolRegisterBlockInfo const& info)
{
    EXPECT_EQ(info.BytesPerRegister(), 1);
    EXPECT_TRUE(info.IsProtocolBigEndian());
    EXPECT_FALSE(info.IsGlobalAddressSpaceUsed());
    nlohmann::json const document = Zu::Properties::JsonSerializer::Serialize(info);
    return {info.Type(),
            info.DisplayName(),
            document.at("category").get<int>(),
            info.RegisterCount(),
            info.DeserializedInputSize(),
            info.MinInstanceCount(),
            info.MaxInstanceCount(),
            info.HasDataSource()};
}

} // namespace

TEST(ProtocolRegisterBlockInfo, RefusesALeastCountAboveTheGreatest)
{
    EXPECT_EQ(RefusalOf([] { ProtocolRegisterBlockInfo(Limited(2, 1)); }), (Refusal{-997, ""}));
    EXPECT_EQ(RefusalOf([] { ProtocolRegisterBlockInfo(Limited(2, 2)); }), (Refusal{1, ""}));
}

TEST(ProtocolRegisterBlockInfo, IsAtItsLimitsByTheCountOfInstances)
{
    ProtocolRegisterBlockInfo info(Limited(1, 1));
    EXPECT_TRUE(info.AtMinInstance());
    EXPECT_FALSE(info.AtMaxInstance());

    info.IncrementInstanceCount();

    EXPECT_TRUE(info.AtMinInstance());
    EXPECT_TRUE(info.AtMaxInstance());
}

TEST(ProtocolRegisterBlockInfo, IsAtBothLimitsAtOnceWhenNoneMayExist)
{
    ProtocolRegisterBlockInfo const info(Limited(0, 0));

    EXPECT_TRUE(info.AtMinInstance());
    EXPECT_TRUE(info.AtMaxInstance());
}

TEST(ProtocolRegisterBlockInfo, CountsDownBelowZeroWithoutValidation)
{
    ProtocolRegisterBlockInfo info(Limited(0, 1));

    info.DecrementInstanceCount();

    EXPECT_EQ(Zu::Properties::JsonSerializer::Serialize(info).at("instanceCount"), 65535);
    info.ResetInstanceCount();
    EXPECT_EQ(Zu::Properties::JsonSerializer::Serialize(info).at("instanceCount"), 0);
}

TEST(ProtocolRegisterBlockInfo, RefusesToMakeABlockWithoutAFactory)
{
    auto params = TypeParams("Test", 4);
    params.factory = nullptr;
    ProtocolRegisterBlockInfo info(params);

    EXPECT_EQ(RefusalOf([&] { info.ConstructBlock(RegisterBlockParams()); }), (Refusal{-1000, ""}));
}

TEST(ProtocolRegisterBlockInfo, RefusesAFactoryThatMakesNoBlock)
{
    class NullFactory final : public IProtocolRegisterBlockFactory
    {
    public:
        std::shared_ptr<ProtocolRegisterBlock> Construct(RegisterBlockParams const&,
                                                         ProtocolRegisterBlockInfo&) override
        {
            return nullptr;
        }
    };
    auto params = TypeParams("Test", 4);
    params.factory = std::make_shared<NullFactory>();
    ProtocolRegisterBlockInfo info(params);

    EXPECT_EQ(RefusalOf([&] { info.ConstructBlock(RegisterBlockParams()); }), (Refusal{-1000, ""}));
}

TEST(ProtocolRegisterBlockInfo, TakesUpBytesTimesRegistersInSixteenBits)
{
    auto params = TypeParams("System", 76);
    EXPECT_EQ(ProtocolRegisterBlockInfo(params).SerializedOutputSize(), 76);
    params.bytesPerRegister = 2;
    EXPECT_EQ(ProtocolRegisterBlockInfo(params).SerializedOutputSize(), 152);
    params.registerCount = 40000;
    params.deserializedInputSize = 67;
    EXPECT_EQ(ProtocolRegisterBlockInfo(params).SerializedOutputSize(), 14464);
    EXPECT_EQ(ProtocolRegisterBlockInfo(params).DeserializedInputSize(), 67); // does not scale
}

TEST(ProtocolRegisterBlockInfo, ShowsEightReadOnlyMembersInOrder)
{
    ProtocolRegisterBlockInfo const info(Limited(1, 3));

    nlohmann::json const document = Zu::Properties::JsonSerializer::Serialize(info);
    nlohmann::json const schema = Zu::Properties::JsonSerializer::SerializeSchema(info).at("properties");

    EXPECT_EQ(document, (nlohmann::json{{"type", "Test"},
                                        {"displayName", "Test name"},
                                        {"category", 0},
                                        {"registerCount", 4},
                                        {"instanceCount", 0},
                                        {"minInstanceCount", 1},
                                        {"maxInstanceCount", 3},
                                        {"hasDataSource", false}}));
    std::vector<std::pair<char const*, char const*>> const titles = {
        {"type", "Type"},
        {"displayName", "Display Name"},
        {"category", "Block Category"},
        {"registerCount", "Number of Registers"},
        {"instanceCount", "Number of Instances"},
        {"minInstanceCount", "Minimum Number of Instances"},
        {"maxInstanceCount", "Maximum Number of Instances"},
        {"hasDataSource", "Register Block Has Scan Output Data Source"}};
    for (std::size_t i = 0; i < titles.size(); ++i)
    {
        nlohmann::json const& member = schema.at(titles[i].first);
        EXPECT_EQ(member.at("title"), titles[i].second);
        EXPECT_EQ(member.at("sortOrder"), 100 * i) << titles[i].first;
        EXPECT_EQ(member.at("readOnly"), true) << titles[i].first;
    }
    for (char const* const number : {"registerCount", "instanceCount", "minInstanceCount", "maxInstanceCount"})
    {
        EXPECT_EQ(schema.at(number).at("minimum"), 0) << number;
    }
    EXPECT_EQ(schema.at("category").at("enum"), (nlohmann::json{0, 1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(schema.at("category").at("enumText"), (nlohmann::json{"Unknown", "Control Input", "Control Output",
                                                                    "System", "Scanner", "Stamp", "Measurement"}));
}

TEST(ProtocolRegisterBlockInfo, DescribesTheDefaultTypes)
{
    EXPECT_EQ(ShownBy(DefaultControlInputRegisterBlockInfo()),
              (Shown{"ControlInput", "Control Input", 1, 67, 67, 1, 1, false}));
    EXPECT_EQ(ShownBy(DefaultControlOutputRegisterBlockInfo()),
              (Shown{"ControlOutput", "Control Output", 2, 3, 0, 1, 1, false}));
    EXPECT_EQ(ShownBy(DefaultSystemStateRegisterBlockInfo()), (Shown{"System", "System State", 3, 76, 0, 1, 1, false}));
    EXPECT_EQ(ShownBy(DefaultScannerStateRegisterBlockInfo(false)),
              (Shown{"Scanner", "Sensor Group State", 4, 18, 0, 1, 1, false}));
    EXPECT_EQ(ShownBy(DefaultScannerStateRegisterBlockInfo(true)),
              (Shown{"Scanner", "Sensor Group State", 4, 18, 0, 0, 1, false}));
    EXPECT_EQ(ShownBy(DefaultStampRegisterBlockInfo()), (Shown{"Stamp", "Stamp", 5, 36, 0, 0, 65534, true}));
    EXPECT_EQ(ShownBy(DefaultMeasurementDecisionRegisterBlockInfo()),
              (Shown{"Decision", "Decision", 6, 1, 0, 0, 65534, true}));
    EXPECT_EQ(ShownBy(DefaultMeasurementValueRegisterBlockInfo()),
              (Shown{"MeasurementValue", "Measurement", 6, 4, 0, 0, 65534, true}));
    EXPECT_EQ(ShownBy(DefaultMeasurementValueAndDecisionRegisterBlockInfo()),
              (Shown{"Measurement", "Measurement and Decision", 6, 5, 0, 0, 65534, true}));
}

TEST(ProtocolRegisterBlockInfo, ConstructsBlocksOfTheDefaultTypes)
{
    RegisterBlockParams params;
    params.dataSource.Set("source");
    DefaultMeasurementValueAndDecisionRegisterBlockInfo info;

    auto const block = info.ConstructBlock(params);

    EXPECT_EQ(block->Type(), "Measurement");
    EXPECT_EQ(block->DataSource(), "source");
}

TEST(ProtocolRegisterBlockInfo, RefusesToConstructWithoutAFactory)
{
    auto params = TypeParams("Test", 4);
    params.factory = nullptr;
    ProtocolRegisterBlockInfo info(params);

    EXPECT_EQ(RefusalOf([&] { info.ConstructBlock(RegisterBlockParams()); }), (Refusal{-1000, ""}));
}

} // namespace ZuControl::ControlProtocol
