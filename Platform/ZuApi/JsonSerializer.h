#pragma once

#include "wApi/wExport.h"

#include <nlohmann/json_fwd.hpp>

namespace Zu::Properties
{

class Node;

/// Converts nodes to JSON and back. All operations are static; the class has no state.
///
/// Reading ignores a key that the structure does not have, and leaves a child unchanged that the JSON does not name.
/// JSON of the wrong type raises the JSON library's type error 302 ("type must be string, but is number"). A boolean
/// reads as 0 or 1 where the JSON library converts it to a number.
///
/// A number may not fit an integer: it is out of range or has a fraction. Validation refuses it with
/// `Zu::Status::BAD_ARGUMENT`. Without validation it is converted as the JSON library does it: -1 becomes the largest
/// value of an unsigned type. Only a fractional number outside of the range is then still refused with
/// `Zu::Status::BAD_ARGUMENT`, because its conversion is undefined.
class ZUAPI_API JsonSerializer
{
public:
    /// Returns the values: an object with a key for each child of a structure, an array, or the stored value.
    /// Write-only children are left out. A write-only node itself gives null.
    static nlohmann::json Serialize(Node const& node);

    /// Returns the entries of the schema as an object. A structure has the schemas of its children by key under
    /// "properties", an array has those of its elements, in order, under "items".
    static nlohmann::json SerializeSchema(Node const& node);

    /// Fills `node` from `document` without validation. Values are stored one by one: after a throw, the earlier ones
    /// are stored. An array is resized to the JSON array.
    static void Deserialize(Node& node, nlohmann::json const& document);

    /// Calls `ValidateValue` on each value that `document` names and throws the first exception. If it does not throw,
    /// `Deserialize` accepts the document. It changes no value. Its only effect: a read-only parameter marks a rejected
    /// value, so that it ignores the next read. Arrays keep their size: elements that `Deserialize` would add are
    /// validated on a temporary element.
    static void Validate(Node& node, nlohmann::json const& document);
};

} // namespace Zu::Properties
