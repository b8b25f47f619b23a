#include "Host/Description/DescribedRecords.h"

#include "ZuApi/Exception.h"

#include <gtest/gtest.h>

#include <map>

namespace ZuHost
{

using nlohmann::json;

namespace
{

/// A service with these documents.
DescribedRecords::Reader ReaderOf(std::map<std::string, json> documents)
{
    return [documents = std::move(documents)](std::string const& path) -> json {
        auto const found = documents.find(path);
        if (found == documents.end())
        {
            ZU_THROW(Zu::Status::NOT_FOUND, "There is no resource at %s.", path.c_str());
        }
        return found->second;
    };
}

json ListOf(std::vector<std::string> const& paths)
{
    json list = json::object();
    for (std::string const& path : paths)
    {
        list["_embedded"]["item"].push_back({{"_links", {{"self", {{"href", path}}}}}});
    }
    return list;
}

json WithParameters(std::string const& id, std::string const& type)
{
    json const parameters{{"type", "object"}, {"properties", {{"value", {{"type", type}}}}}};
    return {{"id", id}, {"_schema", {{"type", "object"}, {"properties", {{"parameters", parameters}}}}}};
}

json Reference(std::string const& name)
{
    return {{"$ref", "#/components/schemas/" + name}};
}

} // namespace

TEST(DescribedRecords, KeepsARecordThatIsWrittenOut)
{
    json const records{{"Health", {{"type", "object"}, {"properties", {{"status", {{"type", "string"}}}}}}}};
    EXPECT_EQ(DescribedRecords(records, ReaderOf({})).Make(), records);
}

TEST(DescribedRecords, TakesTheSchemaOfADocument)
{
    json const schema{{"type", "object"}, {"properties", {{"rest", {{"type", "integer"}, {"units", "s"}}}}}};
    DescribedRecords records({{"Authority", {{"x-schema-of", "/sensor/authority"}}}},
                             ReaderOf({{"/sensor/authority", {{"rest", 0}, {"_schema", schema}}}}));

    EXPECT_EQ(records.Make().at("/Authority/properties/rest"_json_pointer),
              json({{"type", "integer"}, {"x-units", "s"}}));
}

TEST(DescribedRecords, HasNoSchemaForADocumentThatIsNotThere)
{
    json const any{{"type", "object"}, {"additionalProperties", true}};
    DescribedRecords records({{"One", {{"x-schema-of", "/nowhere"}}},
                              {"Plain", {{"x-schema-of", "/plain"}}},
                              {"Many", {{"x-schemas-of", "/nowhere"}}},
                              {"Arguments", {{"x-arguments-of", "Many"}}}},
                             ReaderOf({{"/plain", json::object()}}));

    EXPECT_EQ(records.Make(), json({{"One", any}, {"Plain", any}, {"Many", any}, {"Arguments", any}}));
}

TEST(DescribedRecords, MakesARecordOfEachDocumentOfAList)
{
    DescribedRecords records(
        {{"Command",
          {{"x-schemas-of", "/commands"}, {"required", json::array({"id"})}, {"properties", {{"more", {{"a", 1}}}}}}}},
        ReaderOf({{"/commands", ListOf({"/commands/start", "/commands/go%20on"})},
                  {"/commands/start", WithParameters("start", "string")},
                  {"/commands/go%20on", WithParameters("go on", "integer")}}));

    json const schemas = records.Make();

    EXPECT_EQ(schemas.at("Command"), json({{"anyOf", {Reference("Command.start"), Reference("Command.go_20on")}}}));
    json const& start = schemas.at("Command.start");
    EXPECT_EQ(start.at("required"), json::array({"id"}));
    EXPECT_EQ(start.at("/properties/id/const"_json_pointer), "start");
    EXPECT_EQ(start.at("/properties/more/a"_json_pointer), 1);
    EXPECT_EQ(start.at("/properties/parameters/properties/value/type"_json_pointer), "string");
    EXPECT_EQ(schemas.at("/Command.go_20on/properties/id/const"_json_pointer), "go on");
}

TEST(DescribedRecords, ExpandsEachStarByTheListBeforeIt)
{
    DescribedRecords records({{"Command", {{"x-schemas-of", "/a/*/b/*/c"}}}},
                             ReaderOf({{"/a", ListOf({"/a/1", "/a/2"})},
                                       {"/a/1/b", ListOf({"/a/1/b/x"})},
                                       {"/a/1/b/x/c", ListOf({"/a/1/b/x/c/go"})},
                                       {"/a/1/b/x/c/go", WithParameters("go", "string")}})); // 2 has no such list

    EXPECT_EQ(records.Make().at("Command"), json({{"anyOf", json::array({Reference("Command.1.x.go")})}}));
}

TEST(DescribedRecords, RefersToTheParametersOfEachCommand)
{
    DescribedRecords records(
        {{"Command", {{"x-schemas-of", "/commands"}}},
         {"Order", {{"properties", {{"arguments", {{"x-arguments-of", "Command"}}}}}}}},
        ReaderOf({{"/commands", ListOf({"/commands/go"})}, {"/commands/go", WithParameters("go", "string")}}));

    EXPECT_EQ(records.Make().at("/Order/properties/arguments"_json_pointer),
              json({{"anyOf", json::array({Reference("Command.go/properties/parameters")})}}));
}

TEST(DescribedRecords, AddsTheMembersOfHalWhereTheyBelong)
{
    DescribedRecords records(
        {{"Shown", {{"properties", json::object()}}},
         {"Sent", {{"properties", json::object()}}},
         {"Command", {{"x-schemas-of", "/commands"}}}},
        ReaderOf({{"/commands", ListOf({"/commands/go"})}, {"/commands/go", WithParameters("go", "string")}}));
    records.MarkAsHal("Shown");
    records.MarkAsHal("Command");

    json const schemas = records.Make();

    EXPECT_EQ(schemas.at("/Shown/properties/_links"_json_pointer), Reference("Links"));
    EXPECT_TRUE(schemas.at("/Shown/properties"_json_pointer).contains("_schema"));
    EXPECT_EQ(schemas.at("/Command.go/properties/_links"_json_pointer), Reference("Links"));
    EXPECT_TRUE(schemas.at("/Sent/properties"_json_pointer).empty());
}

} // namespace ZuHost
