#pragma once

#include "wApi/wExport.h"

#include <string>
#include <string_view>

/// What tells one state of a document from another (RFC 9110).
namespace ZuRest::EntityTag
{

/// The tag of a document's text, with its quotes.
ZUPLATFORM_API std::string Of(std::string_view text);

/// Whether the value of If-Match or If-None-Match names `tag`: in its list, or as "*". An empty value names nothing.
ZUPLATFORM_API bool IsNamed(std::string_view header, std::string_view tag);

} // namespace ZuRest::EntityTag
