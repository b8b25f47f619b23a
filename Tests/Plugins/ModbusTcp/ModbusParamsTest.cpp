#include "Plugins/ModbusTcp/ModbusParams.h"
#include "ZuApi/Exception.h"
#include "ZuApi/JsonSerializer.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <string>

namespace ModbusTcp
{

using nlohmann::json;

TEST(ModbusParams, AreBornWithTheirDefaults)
{
    ModbusParams const params;

    EXPECT_EQ(Zu::Properties::JsonSerializer::Serialize(params), json::parse(R"({
        "port": 1502, "address": "127.0.0.1", "maxClients": 16, "registerOrder": 0, "idleTimeout": 60, "makeRoomAfter": 10,
        "allowedClients": "", "writers": "", "readOnly": false,
        "security": 0, "certificateFile": "", "keyFile": "", "authorityFile": "", "revocationFile": "", "roles": "", "queueDepth": 100})"));
}

struct RefusedCase
{
    char const* name;
    char const* document;
    char const* text;
};

class RefusedModbusParams : public testing::TestWithParam<RefusedCase>
{
};

TEST_P(RefusedModbusParams, AreNamedAndChangeNothing)
{
    ModbusParams params;

    try
    {
        Zu::Properties::JsonSerializer::Validate(params, json::parse(GetParam().document));
        FAIL() << "it was accepted";
    }
    catch (Zu::Exception const& exception)
    {
        EXPECT_EQ(exception.Status(), -997);
        EXPECT_NE(std::string(exception.what()).find(GetParam().text), std::string::npos) << exception.what();
    }

    EXPECT_EQ(Zu::Properties::JsonSerializer::Serialize(params),
              Zu::Properties::JsonSerializer::Serialize(ModbusParams()));
}

INSTANTIATE_TEST_SUITE_P(
    EveryBound, RefusedModbusParams,
    testing::Values(RefusedCase{"NoClients", R"({"maxClients": 0})", "Maximum Number of Clients"},
                    RefusedCase{"TooManyClients", R"({"maxClients": 513})", "Maximum Number of Clients"},
                    RefusedCase{"NoTime", R"({"idleTimeout": 0})", "Idle Timeout"},
                    RefusedCase{"TooMuchTime", R"({"idleTimeout": 86401})", "Idle Timeout"},
                    RefusedCase{"NoTimeToMakeRoom", R"({"makeRoomAfter": 0})", "Makes Room"},
                    RefusedCase{"TooMuchTimeToMakeRoom", R"({"makeRoomAfter": 86401})", "Makes Room"},
                    RefusedCase{"UnknownSecurity", R"({"security": 3})", "Security"},
                    RefusedCase{"NegativeSecurity", R"({"security": -1})", "Security"},
                    RefusedCase{"NoQueue", R"({"queueDepth": 0})", "Depth of a Result Queue"},
                    RefusedCase{"QueueTooDeep", R"({"queueDepth": 10001})", "Depth of a Result Queue"},
                    RefusedCase{"UnknownOrder", R"({"registerOrder": 4})", "Register Order"}),
    [](auto const& tested) { return std::string(tested.param.name); });

TEST(ModbusParams, TakeTheEndsOfTheirBounds)
{
    ModbusParams params;
    json const document = json::parse(R"({
        "port": 65535, "address": "::1", "maxClients": 512, "registerOrder": 3, "idleTimeout": 86400, "makeRoomAfter": 86400,
        "allowedClients": "10.0.0.0/8", "writers": "10.0.0.7", "readOnly": true,
        "security": 2, "certificateFile": "a", "keyFile": "b", "authorityFile": "c", "revocationFile": "e", "roles": "d=viewer", "queueDepth": 10000})");

    Zu::Properties::JsonSerializer::Validate(params, document);
    Zu::Properties::JsonSerializer::Deserialize(params, document);

    EXPECT_EQ(Zu::Properties::JsonSerializer::Serialize(params), document);
    params.SetDefaults();
    EXPECT_EQ(params.port.Get(), 1502);
}

} // namespace ModbusTcp
