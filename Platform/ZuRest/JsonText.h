#pragma once

#include "wApi/wExport.h"
#include "wApi/wTypes.h"

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>

/// JSON to text and back, as it goes over the wire.
namespace ZuRest::JsonText
{

inline constexpr std::size_t MAX_BYTES = 1024 * 1024;
inline constexpr uint32 MAX_DEPTH = 64; ///< of arrays and objects: what reads a document goes down with it

/// Reads what came from outside. Throws -984 with the reason for what is no JSON, too long or nested too deep.
ZUPLATFORM_API nlohmann::json Read(std::string_view text);

/// One line; what is no UTF-8 is replaced.
ZUPLATFORM_API std::string Write(nlohmann::json const& document);

} // namespace ZuRest::JsonText
