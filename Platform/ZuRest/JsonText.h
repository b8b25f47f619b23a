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

/// Converts JSON between documents and the text on the network.
namespace ZuRest::JsonText
{

inline constexpr std::size_t MAX_BYTES = 1024 * 1024;
inline constexpr uint32 MAX_DEPTH = 64; ///< nesting of arrays and objects; bounds the recursion of all readers

/// Parses JSON from outside. Throws `Zu::Status::BAD_FORMAT` with the reason for text that is no JSON, too long or
/// nested too deep.
ZUPLATFORM_API nlohmann::json Read(std::string_view text);

/// Writes a document on one line. Invalid UTF-8 is replaced. Values of `PartOf` appear as the JSON of their nodes.
ZUPLATFORM_API std::string Write(nlohmann::json const& document);

/// As `Write`, appended to the text of `writer`.
void Append(nlohmann::json const& value, Zu::Properties::JsonTextWriter& writer);

/// Returns a value that contains the JSON text of `node`, for documents that are only written. Only `Append`, `Write`
/// and `TextOfPart` recognise it.
ZUPLATFORM_API nlohmann::json PartOf(Zu::Properties::Node const& node);

/// As `PartOf`, for a list of nodes; none may be null.
nlohmann::json PartOfList(std::vector<Zu::Properties::Node const*> const& nodes);

/// As `PartOf`, for text that is JSON already.
nlohmann::json PartOfText(std::string_view text);

/// Returns the text in a value of `PartOf`; no text for any other value.
std::optional<std::string_view> TextOfPart(nlohmann::json const& value);

} // namespace ZuRest::JsonText
