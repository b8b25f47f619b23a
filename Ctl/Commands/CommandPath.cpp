#include "Ctl/Commands/CommandPath.h"

#include "Ctl/Connection/Address.h"
#include "Ctl/Outcome/Failure.h"

#include <vector>

namespace ZuCtl
{

namespace
{

/// "a/b/" has the parts "a", "b" and "".
std::vector<std::string> PartsOf(std::string const& text)
{
    std::vector<std::string> parts(1);
    for (char const letter : text)
    {
        if (letter == '/')
        {
            parts.emplace_back();
        }
        else
        {
            parts.back() += letter;
        }
    }
    return parts;
}

} // namespace

std::string CommandPath(std::string const& text)
{
    if (text.starts_with('/') && text.find_first_of(" \r\n\t") == std::string::npos)
    {
        return text;
    }
    std::vector<std::string> const parts = PartsOf(text);
    bool const isOfPart = parts.size() == 3;
    if (parts[0].empty() || parts.size() < 2 || parts.size() > 3 ||
        (isOfPart && (parts[0] == "sensor" || parts[1].empty())))
    {
        throw Failure(ExitStatus::USAGE, "'" + text + "' is no command, such as sensor/start or AsciiTcp/sendText");
    }
    std::string path = parts[0] == "sensor" ? "/sensor" : "/controls/" + Escaped(parts[0]);
    if (isOfPart)
    {
        path += parts[1] == "outputs" ? "/outputs" : "/registerAssemblies/" + Escaped(parts[1]);
    }
    path += "/commands";
    return parts.back().empty() ? path : path + '/' + Escaped(parts.back());
}

} // namespace ZuCtl
