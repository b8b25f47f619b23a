#include "Host/Http/PagePath.h"

namespace ZuHost::PagePath
{

std::string_view Of(std::string_view method, std::string_view path, std::string_view accept)
{
    bool const isRead = method == "GET" || method == "HEAD";
    if (isRead && path == "/" && accept.find("text/html") != std::string_view::npos)
    {
        return "/ui";
    }
    return isRead && path == "/ui/" ? "/ui/index.html" : path;
}

} // namespace ZuHost::PagePath
