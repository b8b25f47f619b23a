#pragma once

#include "wApi/wExport.h"

#include <initializer_list>
#include <string>
#include <string_view>

namespace ZuRest
{

/// Formats and decodes resource paths.
class ZUPLATFORM_API Path
{
public:
    Path() = delete;

    /// Returns the route with its keys (":protocol") replaced by `values` in order. Bytes that a path segment cannot
    /// contain are percent-encoded, as UTF-8. Throws `Zu::Status::BAD_ARGUMENT` if the number of values differs from
    /// the number of keys.
    static std::string Format(std::string_view routeTemplate, std::initializer_list<std::string_view> values);

    /// Returns a segment with its percent escapes decoded. An invalid escape stays unchanged.
    static std::string Decoded(std::string_view segment);
};

} // namespace ZuRest
