#pragma once

#include <string_view>

/// The addresses that people type, and the paths of the resources that answer them.
namespace ZuHost::PagePath
{

/// Returns the path of the resource for a request: "/ui" instead of "/" if a browser wants to show a page, which it says
/// with text/html in the header Accept; the start page instead of the folder "/ui/"; otherwise `path`.
std::string_view Of(std::string_view method, std::string_view path, std::string_view accept);

} // namespace ZuHost::PagePath
