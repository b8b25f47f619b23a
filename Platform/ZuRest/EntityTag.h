#pragma once

#include "wApi/wExport.h"

#include <string>
#include <string_view>

/// Entity tags, which identify one state of a document (RFC 9110).
namespace ZuRest::EntityTag
{

/// Returns the tag of a document's text, including the quotes.
ZUPLATFORM_API std::string Of(std::string_view text);

/// Whether the value of an If-Match or If-None-Match header matches `tag`, by its list or as "*". An empty value
/// matches no tag.
ZUPLATFORM_API bool IsNamed(std::string_view header, std::string_view tag);

} // namespace ZuRest::EntityTag
