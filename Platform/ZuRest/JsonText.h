#pragma once

#include "wApi/wExport.h"
#include "wApi/wTypes.h"

#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Zu::Properties
{
class JsonTextWriter;
class Node;
} // namespace Zu::Properties

/// JSON to text and back, as it goes over the wire.
namespace ZuRest::JsonText
{

inline constexpr std::size_t MAX_BYTES = 1024 * 1024;
inline constexpr uint32 MAX_DEPTH = 64; ///< of arrays and objects: what reads a document goes down with it

/// Reads what came from outside. Throws -984 with the reason for what is no JSON, too long or nested too deep.
ZUPLATFORM_API nlohmann::json Read(std::string_view text);

/// One line; what is no UTF-8 is replaced. The parts that `PartOf` has made stand in it as the nodes that they are of.
ZUPLATFORM_API std::string Write(nlohmann::json const& document);

/// The same behind what `writer` has written.
void Append(nlohmann::json const& value, Zu::Properties::JsonTextWriter& writer);

/// A value that stands for a node in a document which is only made to be written: its text. Only `Append`, `Write` and `TextOfPart` know it.
ZUPLATFORM_API nlohmann::json PartOf(Zu::Properties::Node const& node);

/// The same for a list of nodes, none of which is null.
nlohmann::json PartOfList(std::vector<Zu::Properties::Node const*> const& nodes);

/// The same for what is JSON text already.
nlohmann::json PartOfText(std::string_view text);

/// The text of such a value; nothing for any other.
std::optional<std::string_view> TextOfPart(nlohmann::json const& value);

} // namespace ZuRest::JsonText
