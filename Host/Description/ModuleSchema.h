#pragma once

#include <nlohmann/json_fwd.hpp>

namespace ZuHost::ModuleSchema
{

/// Returns the JSON Schema (2020-12) for a schema of the module, the member "_schema" of a document.
///
/// The module lists a schema for each element of an array that exists; JSON Schema has one for all elements, so lists
/// with different elements, or with none, keep no schema of their elements. A keyword that JSON Schema does not know
/// gets the prefix "x-". Empty texts are left out.
nlohmann::json ToJsonSchema(nlohmann::json const& schema);

} // namespace ZuHost::ModuleSchema
