#include "ZuRest/StrictBody.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace ZuRest
{

namespace
{

using Json = nlohmann::json;

Json const SHOWN = Json::parse(R"({
    "_links": {"self": {"href": "/a"}}, "enabled": true, "label": "x", "gain": 1.5,
    "parameters": {"port": 1502, "names": ["a"], "sets": []},
    "_schema": {"type": "object", "properties": {
        "enabled": {"type": "boolean"}, "label": {"type": "string"}, "gain": {"type": "number"},
        "parameters": {"type": "object", "properties": {
            "port": {"type": "integer"}, "names": {"type": "array", "items": [{"type": "string"}]},
            "sets": {"type": "array", "items": []}}}}}})");

std::string FaultIn(char const* body)
{
    return StrictBody::FaultIn(Json::parse(body), SHOWN);
}

} // namespace

TEST(StrictBody, AcceptsWhatTheUpdateStoresAsItIs)
{
    for (char const* const body :
         {R"({})", R"({"enabled": false})", R"({"gain": 2})", R"({"gain": 2.5, "label": ""})",
          R"({"parameters": {"port": 0, "names": [], "sets": [{"a": 1}]}})", R"({"parameters": {"names": ["b", "c"]}})",
          R"({"_links": {"other": 5}, "_embedded": 7, "_schema": {}})"})
    {
        EXPECT_EQ(FaultIn(body), "") << body;
    }
    EXPECT_EQ(StrictBody::FaultIn(SHOWN, SHOWN), "") << "the document as it is shown";
}

TEST(StrictBody, NamesTheMemberThatTheUpdateWouldIgnore)
{
    EXPECT_EQ(FaultIn(R"({"foo": 1})"), "There is no member 'foo'.");
    EXPECT_EQ(FaultIn(R"({"parameters": {"bar": 1, "port": 1}})"), "There is no member 'parameters.bar'.");
    EXPECT_EQ(FaultIn(R"({"parameters": {"_links": {}}})"), "There is no member 'parameters._links'.");
    EXPECT_EQ(FaultIn(R"({"Enabled": true})"), "There is no member 'Enabled'.");
}

TEST(StrictBody, NamesTheMemberThatTheUpdateWouldConvert)
{
    EXPECT_EQ(FaultIn(R"({"enabled": 1})"), "The value of 'enabled' is not of the type boolean.");
    EXPECT_EQ(FaultIn(R"({"label": 1})"), "The value of 'label' is not of the type string.");
    EXPECT_EQ(FaultIn(R"({"gain": true})"), "The value of 'gain' is not of the type number.");
    EXPECT_EQ(FaultIn(R"({"parameters": 7})"), "The value of 'parameters' is not of the type object.");
    for (char const* const port : {"1.0", "\"1\"", "true", "null", "[1]", "{}"})
    {
        EXPECT_EQ(FaultIn((std::string(R"({"parameters": {"port": )") + port + "}}").c_str()),
                  "The value of 'parameters.port' is not of the type integer.")
            << port;
    }
    EXPECT_EQ(FaultIn(R"({"parameters": {"names": ["a", 2]}})"),
              "The value of 'parameters.names[1]' is not of the type string.");
    EXPECT_EQ(FaultIn("[]"), "The body is not of the type object.");
}

TEST(StrictBody, ReadsTheTypesOfTheShownValuesWithoutASchema)
{
    Json const shown{{"a", 1}, {"b", {{"c", "x"}}}};

    EXPECT_EQ(StrictBody::FaultIn(shown, shown), "");
    EXPECT_EQ(StrictBody::FaultIn(Json{{"a", 1.5}}, shown), "The value of 'a' is not of the type integer.");
    EXPECT_EQ(StrictBody::FaultIn(Json{{"b", {{"d", "x"}}}}, shown), "There is no member 'b.d'.");
}

} // namespace ZuRest
