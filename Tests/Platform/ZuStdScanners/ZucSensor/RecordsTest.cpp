#include "Support/Refusal.h"
#include "ZuApi/JsonSerializer.h"
#include "ZuStdScanners/ZucSensor/AnalogOutputRecords.h"
#include "ZuStdScanners/ZucSensor/DigitalRecords.h"
#include "ZuStdScanners/ZucSensor/IoRecords.h"
#include "ZuStdScanners/ZucSensor/SerialOutputRecords.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace ZuStdScanners::ZucSensor
{

namespace
{

struct Member
{
    char const* key;
    char const* title;
    uint32 sortOrder;
    char const* type;
    char const* initial;
};

struct RecordCase
{
    char const* name;
    std::shared_ptr<Zu::Params::Group> (*make)();
    std::vector<Member> members;
};

template <typename Record>
std::shared_ptr<Zu::Params::Group> Make()
{
    return std::make_shared<Record>();
}

RecordCase const RECORDS[] = {
    {"AnalogOutputEnqueueOutputParams",
     &Make<AnalogOutputEnqueueOutputParams>,
     {{"index", "Index", 0, "integer", "0"}, {"current", "Current", 100, "number", "0.0"}}},
    {"AnalogOutputQueryConstraintResult",
     &Make<AnalogOutputQueryConstraintResult>,
     {{"absoluteMin", "AbsoluteMin", 0, "number", "0.0"}, {"absoluteMax", "AbsoluteMax", 100, "number", "0.0"}}},
    {"AnalogOutputSetControlIdParams",
     &Make<AnalogOutputSetControlIdParams>,
     {{"index", "Index", 0, "integer", "0"}, {"controlId", "ControlId", 100, "integer", "0"}}},
    {"AnalogOutputSetControlTypeParams",
     &Make<AnalogOutputSetControlTypeParams>,
     {{"index", "Index", 0, "integer", "0"}, {"controlType", "ControlType", 100, "integer", "0"}}},
    {"DigitalInputEnableEventsParams",
     &Make<DigitalInputEnableEventsParams>,
     {{"index", "Index", 0, "integer", "0"},
      {"pin", "Pin", 100, "integer", "0"},
      {"enable", "Enable", 200, "boolean", "false"}}},
    {"DigitalInputSetPinTypeParams",
     &Make<DigitalInputSetPinTypeParams>,
     {{"index", "Index", 0, "integer", "0"}, {"pin", "Pin", 100, "integer", "0"}}},
    {"DigitalOutputSetControlIdParams",
     &Make<DigitalOutputSetControlIdParams>,
     {{"index", "Index", 0, "integer", "0"}, {"controlId", "ControlId", 100, "integer", "0"}}},
    {"DigitalOutputSetControlTypeParams",
     &Make<DigitalOutputSetControlTypeParams>,
     {{"index", "Index", 0, "integer", "0"}, {"controlType", "ControlType", 100, "integer", "0"}}},
    {"DigitalOutputSetExposureParams",
     &Make<DigitalOutputSetExposureParams>,
     {{"index", "Index", 0, "integer", "0"}, {"exposure", "Exposure", 100, "integer", "0"}}},
    {"DigitalOutputSetPolarityParams",
     &Make<DigitalOutputSetPolarityParams>,
     {{"index", "Index", 0, "integer", "0"}, {"isActiveHigh", "IsActiveHigh", 100, "boolean", "false"}}},
    {"DigitalOutputSetStateParams",
     &Make<DigitalOutputSetStateParams>,
     {{"index", "Index", 0, "integer", "0"}, {"state", "State", 100, "boolean", "false"}}},
    {"EnableIoOutputAtParams",
     &Make<EnableIoOutputAtParams>,
     {{"index", "Index", 0, "integer", "0"},
      {"ioType", "IoType", 100, "integer", "0"},
      {"enable", "Enable", 200, "boolean", "false"}}},
    {"IoIndexParams", &Make<IoIndexParams>, {{"index", "Index", 0, "integer", "0"}}},
    {"QueryIoOutputCountParams", &Make<QueryIoOutputCountParams>, {{"ioType", "IoType", 0, "integer", "0"}}},
    {"QueryIoOutputCountResult", &Make<QueryIoOutputCountResult>, {{"count", "Count", 0, "integer", "0"}}},
    {"QueryIoOutputEnabledParams",
     &Make<QueryIoOutputEnabledParams>,
     {{"index", "Index", 0, "integer", "0"}, {"ioType", "IoType", 100, "integer", "0"}}},
    {"QueryIoOutputEnabledResult", &Make<QueryIoOutputEnabledResult>, {{"enabled", "Enabled", 0, "boolean", "false"}}},
    {"SerialOutputSetBitRateParams",
     &Make<SerialOutputSetBitRateParams>,
     {{"index", "Index", 0, "integer", "0"}, {"bitRate", "BitRate", 100, "integer", "0"}}},
    {"SerialOutputSetControlIdParams",
     &Make<SerialOutputSetControlIdParams>,
     {{"index", "Index", 0, "integer", "0"}, {"controlId", "ControlId", 100, "integer", "0"}}},
    {"SerialOutputSetControlTypeParams",
     &Make<SerialOutputSetControlTypeParams>,
     {{"index", "Index", 0, "integer", "0"}, {"controlType", "ControlType", 100, "integer", "0"}}},
    {"SerialOutputSetModeParams",
     &Make<SerialOutputSetModeParams>,
     {{"index", "Index", 0, "integer", "0"}, {"controlMode", "ControlMode", 100, "integer", "0"}}},
    {"SerialOutputWriteParams",
     &Make<SerialOutputWriteParams>,
     {{"index", "Index", 0, "integer", "0"},
      {"size", "Size", 100, "integer", "0"},
      {"buffer", "Buffer", 200, "string", "\"\""}}},
};

} // namespace

class SensorRecord : public testing::TestWithParam<RecordCase>
{
};

TEST_P(SensorRecord, HasItsMembersInOrder)
{
    std::shared_ptr<Zu::Params::Group> const record = GetParam().make();
    auto const schema = Zu::Properties::JsonSerializer::SerializeSchema(*record);
    auto const values = Zu::Properties::JsonSerializer::Serialize(*record);

    ASSERT_EQ(record->Count(), GetParam().members.size());
    for (uint64 i = 0; i < record->Count(); ++i)
    {
        Member const& member = GetParam().members[i];
        EXPECT_EQ(record->KeyAt(i), member.key);
        auto const& described = schema.at("properties").at(member.key);
        EXPECT_EQ(described.at("title"), member.title) << member.key;
        EXPECT_EQ(described.at("sortOrder"), member.sortOrder) << member.key;
        EXPECT_EQ(described.at("type"), member.type) << member.key;
        EXPECT_EQ(values.at(member.key).dump(), member.initial) << member.key;
    }
    EXPECT_FALSE(schema.contains("extendedType"));
}

INSTANTIATE_TEST_SUITE_P(Each, SensorRecord, testing::ValuesIn(RECORDS),
                         [](auto const& tested) { return std::string(tested.param.name); });

TEST(SensorRecords, TakeAKindThatTheProgramSetsAndNoneFromOutside)
{
    QueryIoOutputCountParams params;
    EXPECT_TRUE(params.ioType.enumValues.Get().empty());

    params.ioType.Set(IoType{9}); // an unknown value is passed on unchanged

    EXPECT_EQ(params.ioType.Get(), IoType{9});
    EXPECT_EQ(ZuTest::RefusalOf([&] {
                  Zu::Properties::JsonSerializer::Validate(params, {{"ioType", 1}});
              }).status,
              -997);
}

TEST(SensorRecords, CountNothingBelowZero)
{
    IoIndexParams params;

    EXPECT_EQ(params.index.GetMinimum().Get(), 0u);
    EXPECT_EQ(ZuTest::RefusalOf([&] {
                  Zu::Properties::JsonSerializer::Validate(params, {{"index", -1}});
              }).status,
              -997);
}

} // namespace ZuStdScanners::ZucSensor
