#include "Plugins/AsciiTcp/AsciiParams.h"
#include "Support/Refusal.h"
#include "ZuApi/JsonSerializer.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <string>

namespace AsciiTcp
{

using nlohmann::json;
using Zu::Properties::JsonSerializer;

TEST(AsciiParams, AreBornWithTheirDefaults)
{
    AsciiParams const params;

    EXPECT_EQ(JsonSerializer::Serialize(params), json::parse(R"({
        "port": 5025, "address": "127.0.0.1", "maxClients": 16, "decimals": 3, "idleTimeout": 60, "makeRoomAfter": 10,
        "allowedClients": "", "writers": "", "readOnly": false,
        "security": 0, "certificateFile": "", "keyFile": "", "authorityFile": "", "revocationFile": "", "roles": ""})"));
}

struct RefusedParams
{
    char const* name;
    char const* document;
    char const* text;
};

class RefusedAsciiParams : public testing::TestWithParam<RefusedParams>
{
};

TEST_P(RefusedAsciiParams, AreNamedAndChangeNothing)
{
    AsciiParams params;

    ZuTest::Refusal const refusal =
        ZuTest::RefusalOf([&] { JsonSerializer::Validate(params, json::parse(GetParam().document)); });

    EXPECT_EQ(refusal.status, -997);
    EXPECT_NE(refusal.text.find(GetParam().text), std::string::npos) << refusal.text;
    EXPECT_EQ(JsonSerializer::Serialize(params), JsonSerializer::Serialize(AsciiParams()));
}

INSTANTIATE_TEST_SUITE_P(
    EveryBound, RefusedAsciiParams,
    testing::Values(RefusedParams{"NoClients", R"({"maxClients": 0})", "Maximum Number of Clients"},
                    RefusedParams{"TooManyClients", R"({"maxClients": 513})", "Maximum Number of Clients"},
                    RefusedParams{"TooManyDecimals", R"({"decimals": 10})", "Digits Behind the Point"},
                    RefusedParams{"NoTime", R"({"idleTimeout": 0})", "Idle Timeout"},
                    RefusedParams{"TooMuchTime", R"({"idleTimeout": 86401})", "Idle Timeout"},
                    RefusedParams{"NoTimeToMakeRoom", R"({"makeRoomAfter": 0})", "Makes Room"},
                    RefusedParams{"TooMuchTimeToMakeRoom", R"({"makeRoomAfter": 86401})", "Makes Room"},
                    RefusedParams{"UnknownSecurity", R"({"security": 3})", "Security"},
                    RefusedParams{"NegativeSecurity", R"({"security": -1})", "Security"}),
    [](auto const& tested) { return std::string(tested.param.name); });

TEST(AsciiParams, TakeTheEndsOfTheirBounds)
{
    AsciiParams params;
    json const document = json::parse(R"({
        "port": 65535, "address": "::1", "maxClients": 512, "decimals": 9, "idleTimeout": 86400, "makeRoomAfter": 86400,
        "allowedClients": "10.0.0.0/8", "writers": "10.0.0.7", "readOnly": true,
        "security": 2, "certificateFile": "a", "keyFile": "b", "authorityFile": "c", "revocationFile": "e", "roles": "d=viewer"})");

    JsonSerializer::Validate(params, document);
    JsonSerializer::Deserialize(params, document);

    EXPECT_EQ(JsonSerializer::Serialize(params), document);
    params.SetDefaults();
    EXPECT_EQ(params.port.Get(), 5025);
}

} // namespace AsciiTcp
