#pragma once

#include "wApi/wExport.h"

#include <string_view>

/// The wishes of a client, from the values of headers.
namespace ZuRest::RequestPreferences
{

/// Whether the header Accept admits the media type `type`, "text/html" also as "text/*" or "*/*". An empty header admits
/// every type, a range with "q=0" none.
ZUPLATFORM_API bool Admits(std::string_view accept, std::string_view type);

/// Whether the header Prefer asks for "handling=strict" (RFC 7240). The first preference of that name counts.
ZUPLATFORM_API bool IsStrict(std::string_view prefer);

} // namespace ZuRest::RequestPreferences
