#include "Host/Description/ModuleSchema.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

namespace ZuHost
{

using Json = nlohmann::json;

namespace
{

constexpr std::array<std::string_view, 13> KEYWORDS{"type",      "title",     "description", "enum",     "minimum",
                                                    "maximum",   "minLength", "maxLength",   "readOnly", "pattern",
                                                    "writeOnly", "default",   "multipleOf"};

bool IsEmpty(Json const& value)
{
    return value.is_null() || (value.is_string() && value.get_ref<std::string const&>().empty());
}

Json SchemaOfElements(Json const& elements)
{
    bool const areAlike =
        elements.is_array() && !elements.empty() &&
        std::all_of(elements.begin(), elements.end(), [&](Json const& element) { return element == elements.front(); });
    return areAlike ? ModuleSchema::ToJsonSchema(elements.front()) : Json::object();
}

} // namespace

Json ModuleSchema::ToJsonSchema(Json const& schema)
{
    Json converted = Json::object();
    for (auto const& [key, value] : schema.items())
    {
        if (key == "properties")
        {
            Json& properties = converted[key] = Json::object();
            for (auto const& [name, property] : value.items())
            {
                properties[name] = ToJsonSchema(property);
            }
        }
        else if (key == "items")
        {
            converted[key] = SchemaOfElements(value);
        }
        else if (!IsEmpty(value))
        {
            bool const isKnown = std::ranges::find(KEYWORDS, key) != KEYWORDS.end();
            converted[isKnown ? key : "x-" + key] = value;
        }
    }
    return converted;
}

} // namespace ZuHost
