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

/// What simdjson has read, told as nlohmann::json would tell it: of a key that is there twice the later value counts,
/// numbers are cut to fit, and what does not fit at all raises that library's errors.
class DocumentElement
{
public:
    /// Nothing for what is no object and for a key that is not there.
    static std::optional<simdjson::dom::element> Find(simdjson::dom::element const& element, std::string_view key);

    /// As Zu::Properties::JsonSerializer::Deserialize.
    static void ReadInto(Zu::Properties::Node& node, simdjson::dom::element const& element);

    /// -0 is told as 0.
    static nlohmann::json ToJson(simdjson::dom::element const& element);
};

} // namespace ZuControl
