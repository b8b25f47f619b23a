#include "ZuControl/Control/StateDocuments.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <limits>

namespace ZuControl
{

struct ScannerInfoCase
{
    char const* name;
    char const* document;
    bool laserEnabled;
    int64 encoder;
    uint64 syncTime;
};

class ScannerInfoDocumentCases : public testing::TestWithParam<ScannerInfoCase>
{
};

TEST_P(ScannerInfoDocumentCases, FillsTheRecord)
{
    IControlScanEngineInterface::ScannerStateInfo info;

    ScannerInfoDocument::Read(nlohmann::json::parse(GetParam().document), info);

    EXPECT_EQ(info.laserEnabled, GetParam().laserEnabled);
    EXPECT_EQ(info.currentEncoderValue, GetParam().encoder);
    EXPECT_EQ(info.currentSyncTime, GetParam().syncTime);
}

constexpr int64 LOWEST = std::numeric_limits<int64>::min();
constexpr uint64 ALL_ONES = 18446744073709551615u;

INSTANTIATE_TEST_SUITE_P(
    Every, ScannerInfoDocumentCases,
    testing::Values(
        ScannerInfoCase{"Missing", "{}", true, LOWEST, ALL_ONES},
        ScannerInfoCase{"NoObject", "null", true, LOWEST, ALL_ONES},
        ScannerInfoCase{"Null", R"({"laserEnabled": null, "currentEncoderValue": null, "currentSyncTime": null})", true,
                        LOWEST, ALL_ONES},
        ScannerInfoCase{"Values", R"({"laserEnabled": false, "currentEncoderValue": -7, "currentSyncTime": 1024})",
                        false, -7, 1000},
        ScannerInfoCase{"SmallTime", R"({"currentSyncTime": 1})", true, LOWEST, 0},
        ScannerInfoCase{"Fractions", R"({"currentEncoderValue": -7.9, "currentSyncTime": 2048.5})", true, -7, 2000},
        // 2^63 times 1000 wraps to 0, and (2^63 + 1) times 1000 wraps to 1000.
        ScannerInfoCase{"WrappedTime", R"({"currentSyncTime": 9223372036854776832})", true, LOWEST, 1000}),
    [](auto const& tested) { return std::string(tested.param.name); });

TEST(ScannerInfoDocument, RaisesTheJsonLibrarysTypeError)
{
    IControlScanEngineInterface::ScannerStateInfo info;
    auto const expect = [&info](char const* document, char const* text) {
        try
        {
            ScannerInfoDocument::Read(nlohmann::json::parse(document), info);
            ADD_FAILURE() << document;
        }
        catch (nlohmann::json::type_error const& exception)
        {
            EXPECT_EQ(exception.id, 302);
            EXPECT_TRUE(std::string(exception.what()).ends_with(text)) << exception.what();
        }
    };

    expect(R"({"laserEnabled": 1})", "type must be boolean, but is number");
    expect(R"({"currentEncoderValue": "1"})", "type must be number, but is string");
    expect(R"({"currentSyncTime": true})", "type must be number, but is boolean");
}

} // namespace ZuControl
