#pragma once

#include "ZuControl/Export.h"

#include <string>
#include <string_view>

/// Texts that users have chosen, such as the names of data sources, in generated programs. They are UTF-8; invalid bytes
/// become '?'.
namespace ZuControl::Plc
{

/// A text in a comment that ends with its line. Control characters become spaces. Characters beyond those of Latin
/// alphabets become '?': some end a line in some languages, or show the text in another order.
ZUCONTROL_INTERNAL_API std::string CommentText(std::string_view text);

/// A string literal of Python with its quotes, of ASCII characters alone.
ZUCONTROL_INTERNAL_API std::string PythonLiteral(std::string_view text);

} // namespace ZuControl::Plc
