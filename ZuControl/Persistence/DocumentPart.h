#pragma once

#include "ZuControl/Export.h"

#include <nlohmann/json_fwd.hpp>
#include <simdjson.h>

#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace Zu::Properties
{
class Node;
} // namespace Zu::Properties

namespace ZuControl
{

/// A value of a configuration document with its members. Operations return and throw as nlohmann::json does.
///
/// The entries of a large configuration are read from the text into parameter records without a JSON object for each:
/// making and freeing those objects would take longer than the rest of a load.
/// Small, to be copied; valid for as long as the document.
class ZUCONTROL_INTERNAL_API DocumentPart
{
public:
    explicit DocumentPart(nlohmann::json const& json);
    explicit DocumentPart(simdjson::dom::element newElement);

    bool IsArray() const;

    /// The value of `key`; nothing when this is no object or has no such key.
    std::optional<DocumentPart> Find(char const* key) const;

    /// The values of an array. Null and {} have none. Another value that is no array raises the library's type error
    /// 305.
    std::vector<DocumentPart> Elements() const;

    /// Throws the library's type error 302 for a value that is no text.
    std::string Text() const;

    /// As Zu::Properties::JsonSerializer::Deserialize.
    void ReadInto(Zu::Properties::Node& node) const;

private:
    std::variant<nlohmann::json const*, simdjson::dom::element> value;
};

} // namespace ZuControl
