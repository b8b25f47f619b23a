#include "ZuRest/StrictBody.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <string_view>

namespace ZuRest::StrictBody
{

namespace
{

using Json = nlohmann::json;

constexpr char const* LINKS = "_links";
constexpr char const* EMBEDDED = "_embedded";
constexpr char const* SCHEMA = "_schema";

/// Returns the part `key` of an object; null if `from` is null, no object or has no such part.
Json const* PartOf(Json const* from, std::string const& key)
{
    if (from == nullptr || !from->is_object())
    {
        return nullptr;
    }
    auto const found = from->find(key);
    return found != from->end() ? &*found : nullptr;
}

/// The type in the schema, or that of the shown value; empty if neither is known.
std::string TypeOf(Json const* schema, Json const* shown)
{
    if (Json const* const type = PartOf(schema, "type"); type != nullptr && type->is_string())
    {
        return type->get<std::string>();
    }
    if (shown == nullptr || shown->is_null())
    {
        return {};
    }
    return shown->is_number_integer() ? "integer" : shown->type_name();
}

bool IsOf(Json const& value, std::string_view type)
{
    return type.empty() || (type == "integer" ? value.is_number_integer() : value.type_name() == type);
}

/// The schema of an element; null if it is not known.
Json const* SchemaOfElement(Json const* schema, std::size_t index)
{
    Json const* const items = PartOf(schema, "items");
    if (items == nullptr || !items->is_array())
    {
        return items;
    }
    return items->empty() ? nullptr : &(*items)[std::min(index, items->size() - 1)];
}

/// A value, or a part of one, with what is known of it.
struct Checked
{
    Json const& value;
    Json const* shown;
    Json const* schema;
    std::string name; // empty for the whole body
};

std::string FaultOf(Checked const& one);

/// `shown` says nothing of the elements: an update may bring others.
std::string FaultInList(Checked const& one)
{
    std::string fault;
    for (std::size_t i = 0; i < one.value.size() && fault.empty(); ++i)
    {
        fault =
            FaultOf({one.value[i], nullptr, SchemaOfElement(one.schema, i), one.name + '[' + std::to_string(i) + ']'});
    }
    return fault;
}

std::string FaultInObject(Checked const& one)
{
    std::string fault;
    for (auto member = one.value.begin(); member != one.value.end() && fault.empty(); ++member)
    {
        std::string const& key = member.key();
        if (one.name.empty() && (key == LINKS || key == EMBEDDED || key == SCHEMA))
        {
            continue;
        }
        Checked const part{*member, PartOf(one.shown, key), PartOf(PartOf(one.schema, "properties"), key),
                           one.name.empty() ? key : one.name + '.' + key};
        bool const isKnown = part.shown != nullptr || part.schema != nullptr;
        fault = isKnown ? FaultOf(part) : "There is no member '" + part.name + "'.";
    }
    return fault;
}

std::string FaultOf(Checked const& one)
{
    if (std::string const type = TypeOf(one.schema, one.shown); !IsOf(one.value, type))
    {
        return (one.name.empty() ? "The body" : "The value of '" + one.name + "'") + " is not of the type " + type +
               ".";
    }
    if (one.value.is_array())
    {
        return FaultInList(one);
    }
    bool const hasKnownMembers = one.shown != nullptr || one.schema != nullptr;
    return one.value.is_object() && hasKnownMembers ? FaultInObject(one) : std::string();
}

} // namespace

std::string FaultIn(Json const& body, Json const& shown)
{
    return FaultOf({body, &shown, PartOf(&shown, SCHEMA), {}});
}

} // namespace ZuRest::StrictBody
