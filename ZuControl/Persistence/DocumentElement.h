#pragma once

#include <nlohmann/json_fwd.hpp>
#include <simdjson.h>

#include <optional>
#include <string_view>

namespace Zu::Properties
{
class Node;
} // namespace Zu::Properties

namespace ZuControl
{

/// Reads simdjson elements with the rules of nlohmann::json: of a key that occurs twice the later value counts, numbers
/// are converted without a range check, and a value of a wrong type raises that library's errors.
class DocumentElement
{
public:
    /// The value of `key`; nothing when `element` is no object or has no such key.
    static std::optional<simdjson::dom::element> Find(simdjson::dom::element const& element, std::string_view key);

    /// As Zu::Properties::JsonSerializer::Deserialize.
    static void ReadInto(Zu::Properties::Node& node, simdjson::dom::element const& element);

    /// -0 reads as 0.
    static nlohmann::json ToJson(simdjson::dom::element const& element);
};

} // namespace ZuControl
