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

/// A value of a configuration document, with all that is in it. What is asked of it is answered, refused and thrown as
/// nlohmann::json does it.
///
/// The many entries of a large configuration go from the text into parameter records without a JSON object for each in
/// between: making and freeing those takes longer than all the rest of a load.
/// A word or two, to be copied; good for as long as the document that it comes from.
class ZUCONTROL_INTERNAL_API DocumentPart
{
public:
    explicit DocumentPart(nlohmann::json const& json);
    explicit DocumentPart(simdjson::dom::element newElement);

    bool IsArray() const;

    /// What stands at `key`; nothing when this is no object or has no such key.
    std::optional<DocumentPart> Find(char const* key) const;

    /// The values in an array. Null and {} have none; for what else is no array it throws the library's type error 305.
    std::vector<DocumentPart> Elements() const;

    /// Throws the library's type error 302 for what is no text.
    std::string Text() const;

    /// As Zu::Properties::JsonSerializer::Deserialize.
    void ReadInto(Zu::Properties::Node& node) const;

private:
    std::variant<nlohmann::json const*, simdjson::dom::element> value;
};

} // namespace ZuControl
