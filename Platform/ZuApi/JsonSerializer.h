#pragma once

#include "wApi/wExport.h"

#include <nlohmann/json_fwd.hpp>

namespace Zu::Properties
{

class Node;

/// Nodes to JSON and back. It holds nothing; the operations may be called on an object or by the name of the class.
///
/// Reading: a key that the structure does not have is ignored, and a child that the JSON does not name stays as it is. JSON
/// of the wrong type raises the JSON library's type error 302 ("type must be string, but is number"). A boolean reads as 0
/// or 1 where the JSON library takes it for a number. A number that an integer cannot hold, because it is out of its range
/// or has a fraction, does not pass validation (-997); where nothing is validated it is cut to fit as the JSON library does
/// it, so that -1 is the largest value of an unsigned type, and refused only where that has no meaning.
class ZUAPI_API JsonSerializer
{
public:
    /// The values: an object with a key for each child of a structure, an array, or the stored value. Write-only ones are
    /// left out; null for a write-only value by itself.
    static nlohmann::json Serialize(Node const& node);

    /// The entries of the schema as an object. A structure has the schemas of its children by key under "properties", an
    /// array those of its elements, in order, under "items".
    static nlohmann::json SerializeSchema(Node const& node);

    /// Fills `node` from `document` without validation, storing as it goes: when it throws, what came before is stored. An
    /// array takes the size of the JSON array.
    static void Deserialize(Node& node, nlohmann::json const& document);

    /// Asks each value that `document` names whether it takes what stands there, and throws what the first one throws; so
    /// what passes can be read with `Deserialize`. Stores nothing but the mark by which a read-only parameter ignores the
    /// next read. Arrays keep their size: for elements to come, one that the array would add is asked.
    static void Validate(Node& node, nlohmann::json const& document);
};

} // namespace Zu::Properties
