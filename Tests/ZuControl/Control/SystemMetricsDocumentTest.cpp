#include "ZuControl/Control/StateDocuments.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace ZuControl
{

namespace
{

constexpr uint64 NOT_TOLD = 18446744073709551615u;

using Links = std::vector<uint32>;
using Capacities = std::vector<uint64>;

IControlSystemInterface::SystemStats Read(char const* text)
{
    IControlSystemInterface::SystemStats stats;
    SystemMetricsDocument::Read(nlohmann::json::parse(text), stats);
    return stats;
}

} // namespace

struct MetricsCase
{
    char const* name;
    char const* document;
    uint64 upTime;
    uint64 appUpTime;
    Links linkStatus;
    Capacities linkCapacity;
};

class SystemMetricsDocumentCases : public testing::TestWithParam<MetricsCase>
{
};

TEST_P(SystemMetricsDocumentCases, FillsTheRecord)
{
    auto const stats = Read(GetParam().document);

    EXPECT_EQ(stats.upTime, GetParam().upTime);
    EXPECT_EQ(stats.appUpTime, GetParam().appUpTime);
    EXPECT_EQ(stats.linkStatus, GetParam().linkStatus);
    EXPECT_EQ(stats.linkCapacity, GetParam().linkCapacity);
}

INSTANTIATE_TEST_SUITE_P(
    Every, SystemMetricsDocumentCases,
    testing::Values(
        MetricsCase{"Times", R"({"upTime": 5, "appUpTime": 18446744073709551615})", 5, NOT_TOLD, {}, {}},
        MetricsCase{"Fractions", R"({"upTime": 2.9, "appUpTime": 1e19})", 2, 10000000000000000000u, {}, {}},
        MetricsCase{"Negative", R"({"upTime": -1.5, "appUpTime": -2})", NOT_TOLD, NOT_TOLD - 1, {}, {}},
        MetricsCase{"BeyondTheRange", R"({"upTime": 1e300, "appUpTime": -1e300})", NOT_TOLD, 1ull << 63, {}, {}},
        MetricsCase{"Null", R"({"upTime": null, "networkIfs": null})", NOT_TOLD, NOT_TOLD, {}, {}},
        MetricsCase{"NoObject", "[1]", NOT_TOLD, NOT_TOLD, {}, {}},
        MetricsCase{"InterfacesInAnArray", R"({"networkIfs": [1]})", NOT_TOLD, NOT_TOLD, {}, {}},
        MetricsCase{"InterfacesInANumber", R"({"networkIfs": 1})", NOT_TOLD, NOT_TOLD, {}, {}},
        MetricsCase{"LinkStatus",
                    R"({"networkIfs": {"linkStatus": [true, 4294967297, -1, 2.9]}})",
                    NOT_TOLD,
                    NOT_TOLD,
                    {1, 1, 4294967295u, 2},
                    {}},
        MetricsCase{"LinkStatusInAnEmptyObject",
                    R"({"networkIfs": {"linkStatus": {}, "linkCapacity": [1]}})",
                    NOT_TOLD,
                    NOT_TOLD,
                    {},
                    {}},
        MetricsCase{"CapacityWithoutStatus", R"({"networkIfs": {"linkCapacity": [1, 2]}})", NOT_TOLD, NOT_TOLD, {}, {}},
        MetricsCase{"MoreCapacities",
                    R"({"networkIfs": {"linkStatus": [1, 0, 1], "linkCapacity": [10, 20, 30, 40, 50]}})",
                    NOT_TOLD,
                    NOT_TOLD,
                    {1, 0, 1},
                    {10, 20, 30}}),
    [](auto const& tested) { return std::string(tested.param.name); });

struct BadMetricsCase
{
    char const* name;
    char const* document;
    int id;
    char const* text; // the end of the text of the exception
};

class SystemMetricsDocumentRefusals : public testing::TestWithParam<BadMetricsCase>
{
};

TEST_P(SystemMetricsDocumentRefusals, RaisesTheJsonLibrarysException)
{
    try
    {
        Read(GetParam().document);
        ADD_FAILURE();
    }
    catch (nlohmann::json::exception const& exception)
    {
        EXPECT_EQ(exception.id, GetParam().id);
        EXPECT_TRUE(std::string(exception.what()).ends_with(GetParam().text)) << exception.what();
    }
}

INSTANTIATE_TEST_SUITE_P(
    Every, SystemMetricsDocumentRefusals,
    testing::Values(
        BadMetricsCase{"BooleanTime", R"({"upTime": true})", 302, "type must be number, but is boolean"},
        BadMetricsCase{"TextTime", R"({"appUpTime": "1"})", 302, "type must be number, but is string"},
        BadMetricsCase{"TextStatus", R"({"networkIfs": {"linkStatus": ["1"]}})", 302,
                       "type must be number, but is string"},
        BadMetricsCase{"BooleanCapacity", R"({"networkIfs": {"linkStatus": [1], "linkCapacity": [true]}})", 302,
                       "type must be number, but is boolean"},
        BadMetricsCase{"StatusInANumber", R"({"networkIfs": {"linkStatus": 5}})", 304, "cannot use at() with number"},
        BadMetricsCase{"CapacityInAText", R"({"networkIfs": {"linkStatus": [1], "linkCapacity": "x"}})", 304,
                       "cannot use at() with string"},
        BadMetricsCase{"FewerCapacities", R"({"networkIfs": {"linkStatus": [1, 1, 1], "linkCapacity": [1, 2]}})", 401,
                       "array index 2 is out of range"}),
    [](auto const& tested) { return std::string(tested.param.name); });

TEST(SystemMetricsDocument, KeepsWhatWasFilledBeforeAFailure)
{
    IControlSystemInterface::SystemStats stats;
    stats.linkStatus = {7};

    auto const bad = nlohmann::json::parse(R"({"upTime": true})");
    EXPECT_THROW(SystemMetricsDocument::Read(bad, stats), nlohmann::json::type_error);
    EXPECT_EQ(stats.linkStatus, (Links{7})); // unchanged: the read fails before it
    auto const late =
        nlohmann::json::parse(R"({"upTime": 3, "networkIfs": {"linkStatus": [1, 1, 1], "linkCapacity": [1, 2]}})");
    EXPECT_THROW(SystemMetricsDocument::Read(late, stats), nlohmann::json::out_of_range);

    EXPECT_EQ(stats.upTime, 3u);
    EXPECT_EQ(stats.linkStatus, (Links{1, 1, 1}));
    EXPECT_EQ(stats.linkCapacity, (Capacities{1, 2}));
}

TEST(SystemMetricsDocument, LeavesNoStaleInterfaces)
{
    IControlSystemInterface::SystemStats stats;
    SystemMetricsDocument::Read(
        nlohmann::json::parse(R"({"networkIfs": {"linkStatus": [1, 1], "linkCapacity": [1, 2]}})"), stats);

    SystemMetricsDocument::Read(nlohmann::json::parse(R"({"networkIfs": {"linkStatus": [0]}})"), stats);

    EXPECT_EQ(stats.linkStatus, (Links{0}));
    EXPECT_TRUE(stats.linkCapacity.empty());
}

} // namespace ZuControl
