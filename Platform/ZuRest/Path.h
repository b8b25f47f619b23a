#pragma once

#include "wApi/wExport.h"

#include <initializer_list>
#include <string>
#include <string_view>

namespace ZuRest
{

/// The writing of resource paths.
class ZUPLATFORM_API Path
{
public:
    Path() = delete;

    /// The route with its keys (":protocol") replaced by `values` in order; what a segment of a path cannot hold is
    /// percent-encoded, as UTF-8. Throws -997 when there are not as many values as keys.
    static std::string Format(std::string_view routeTemplate, std::initializer_list<std::string_view> values);

    /// A segment with its percent escapes resolved; what is no escape stays as it is.
    static std::string Decoded(std::string_view segment);
};

} // namespace ZuRest
