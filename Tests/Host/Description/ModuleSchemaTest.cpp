#include "Host/Description/ModuleSchema.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace ZuHost
{

using nlohmann::json;

TEST(ModuleSchema, ConvertsWhatTheModuleSaysOfANumber)
{
    json const schema =
        json::parse(R"({"type": "integer", "title": "Timeout", "minimum": 1, "maximum": 60, "units": "s",
                                        "sortOrder": 200, "enum": [1, 60], "enumText": ["short", "long"], "readOnly": true})");

    EXPECT_EQ(ModuleSchema::ToJsonSchema(schema), json::parse(R"({
        "type": "integer", "title": "Timeout", "minimum": 1, "maximum": 60, "x-units": "s", "x-sortOrder": 200,
        "enum": [1, 60], "x-enumText": ["short", "long"], "readOnly": true})"));
}

TEST(ModuleSchema, LeavesEmptyTextsOut)
{
    EXPECT_EQ(ModuleSchema::ToJsonSchema({{"type", "string"}, {"title", ""}, {"units", nullptr}}),
              json({{"type", "string"}}));
}

TEST(ModuleSchema, ConvertsEachMember)
{
    json const schema = json::parse(R"({"type": "object", "properties": {"title": {"type": "string", "sortOrder": 0},
                                        "inner": {"type": "object", "properties": {"a": {"units": "mm"}}}}})");

    EXPECT_EQ(ModuleSchema::ToJsonSchema(schema), json::parse(R"({"type": "object", "properties": {
        "title": {"type": "string", "x-sortOrder": 0},
        "inner": {"type": "object", "properties": {"a": {"x-units": "mm"}}}}})"));
}

TEST(ModuleSchema, HasOneSchemaForAllElementsOfAList)
{
    struct Row
    {
        char const* items;
        char const* converted;
    };
    for (auto const& [items, converted] :
         {Row{R"([{"type": "string", "units": "mm"}, {"type": "string", "units": "mm"}])",
              R"({"type": "string", "x-units": "mm"})"},
          Row{R"([{"type": "string"}, {"type": "integer"}])", "{}"}, Row{"[]", "{}"}})
    {
        EXPECT_EQ(ModuleSchema::ToJsonSchema({{"type", "array"}, {"items", json::parse(items)}}),
                  json({{"type", "array"}, {"items", json::parse(converted)}}))
            << items;
    }
}

} // namespace ZuHost
