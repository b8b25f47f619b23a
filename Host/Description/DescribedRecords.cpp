#include "Host/Description/DescribedRecords.h"

#include "Host/Description/ModuleSchema.h"

#include <algorithm>
#include <cctype>
#include <exception>
#include <utility>

namespace ZuHost
{

using Json = nlohmann::json;

namespace
{

constexpr char const* SCHEMA_OF = "x-schema-of";
constexpr char const* SCHEMAS_OF = "x-schemas-of";
constexpr char const* ARGUMENTS_OF = "x-arguments-of";
constexpr char const* PREFIX = "#/components/schemas/";

Json const& AnyObject()
{
    static Json const SCHEMA{{"type", "object"}, {"additionalProperties", true}};
    return SCHEMA;
}

/// The last segment of a path, with the characters that the name of a component may have.
std::string NameOf(std::string const& path)
{
    std::string name = path.substr(path.rfind('/') + 1);
    std::ranges::replace_if(
        name,
        [](unsigned char character) {
            return std::isalnum(character) == 0 && character != '-' && character != '_' && character != '.';
        },
        '_');
    return name;
}

Json SchemaIn(Json const& document)
{
    auto const schema = document.find("_schema");
    return schema != document.end() ? ModuleSchema::ToJsonSchema(*schema) : AnyObject();
}

/// Lets a record have the members that every HAL document may have.
void AddHalMembers(Json& schema)
{
    if (schema.contains("properties"))
    {
        schema["properties"]["_links"] = DescribedRecords::ReferenceTo("Links");
        schema["properties"]["_schema"] = AnyObject();
    }
}

std::string Joined(std::string const& left, std::string const& right)
{
    return left.empty() ? right : left + '.' + right;
}

} // namespace

DescribedRecords::DescribedRecords(Json newRecords, Reader newReadDocument)
    : records(std::move(newRecords)), readDocument(std::move(newReadDocument))
{
}

DescribedRecords::~DescribedRecords() = default;

void DescribedRecords::MarkAsHal(std::string const& name)
{
    if (std::ranges::find(halRecords, name) == halRecords.end())
    {
        halRecords.push_back(name);
    }
}

Json DescribedRecords::ReferenceTo(std::string const& name)
{
    return {{"$ref", PREFIX + name}};
}

Json DescribedRecords::Make()
{
    Json schemas = Json::object();
    variants.clear();
    for (auto const& [name, record] : records.items())
    {
        if (record.contains(SCHEMAS_OF))
        {
            AddVariants(name, record, schemas);
        }
        else
        {
            schemas[name] = record.contains(SCHEMA_OF) ? SchemaIn(DocumentAt(record.at(SCHEMA_OF))) : record;
        }
    }
    FillIn(schemas);
    for (std::string const& name : halRecords)
    {
        AddHalMembers(schemas[name]);
        for (std::string const& variant : variants[name])
        {
            AddHalMembers(schemas[variant]);
        }
    }
    return schemas;
}

/// The documents of the lists that match the pattern. `name` is the name of what the pattern has expanded to so far.
std::vector<DescribedRecords::Document> DescribedRecords::Expand(std::string const& pattern,
                                                                 std::string const& name) const
{
    std::size_t const star = pattern.find("/*");
    if (star == std::string::npos)
    {
        return ElementsOf(pattern, name);
    }
    std::vector<Document> all;
    for (Document const& element : ElementsOf(pattern.substr(0, star), name))
    {
        for (Document& inner : Expand(element.path + pattern.substr(star + 2), element.name))
        {
            all.push_back(std::move(inner));
        }
    }
    return all;
}

std::vector<DescribedRecords::Document> DescribedRecords::ElementsOf(std::string const& path,
                                                                     std::string const& name) const
{
    std::vector<Document> elements;
    Json const list = DocumentAt(path).value("/_embedded/item"_json_pointer, Json::array());
    for (Json const& element : list)
    {
        std::string const self = element.value("/_links/self/href"_json_pointer, "");
        elements.push_back({Joined(name, NameOf(self)), self});
    }
    return elements;
}

/// An empty object if there is no such document here, such as the commands of a protocol without commands.
Json DescribedRecords::DocumentAt(std::string const& path) const
{
    try
    {
        return readDocument(path);
    }
    catch (std::exception const&)
    {
        return Json::object();
    }
}

void DescribedRecords::AddVariants(std::string const& name, Json const& record, Json& schemas)
{
    Json references = Json::array();
    std::vector<std::string>& own = variants[name];
    for (auto const& [variant, path] : Expand(record.at(SCHEMAS_OF), ""))
    {
        Json const document = DocumentAt(path);
        Json schema = SchemaIn(document);
        schema["required"] = record.value("required", Json::array());
        schema["properties"].update(record.value("properties", Json::object()));
        schema["properties"]["id"]["const"] = document.value("id", "");
        own.push_back(Joined(name, variant));
        references.push_back(ReferenceTo(own.back()));
        schemas[own.back()] = std::move(schema);
    }
    schemas[name] = references.empty() ? AnyObject() : Json{{"anyOf", std::move(references)}};
}

/// Replaces each "x-arguments-of" in the schema.
void DescribedRecords::FillIn(Json& schema) const
{
    if (!schema.is_structured())
    {
        return;
    }
    if (schema.is_object() && schema.contains(ARGUMENTS_OF))
    {
        Json references = Json::array();
        for (std::string const& variant : variants.at(schema.at(ARGUMENTS_OF)))
        {
            references.push_back(ReferenceTo(variant + "/properties/parameters"));
        }
        schema = references.empty() ? AnyObject() : Json{{"anyOf", std::move(references)}};
        return;
    }
    for (Json& inner : schema)
    {
        FillIn(inner);
    }
}

} // namespace ZuHost
