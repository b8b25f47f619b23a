#pragma once

#include "wApi/wExport.h"

#include <nlohmann/json_fwd.hpp>
#include <string>

/// The check of an update for a client that prefers strict handling.
namespace ZuRest::StrictBody
{

/// Returns a sentence on the first member of `body` that an update would ignore, since it is not known, or convert; an
/// empty text if there is none. `shown` is the document as a client reads it, with its schema. All members of `shown`
/// are known, so that a client can send back the whole document.
ZUPLATFORM_API std::string FaultIn(nlohmann::json const& body, nlohmann::json const& shown);

} // namespace ZuRest::StrictBody
