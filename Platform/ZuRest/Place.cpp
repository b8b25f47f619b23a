#include "ZuRest/Place.h"

#include "ZuRest/Path.h"

#include <algorithm>
#include <string_view>

namespace ZuRest
{

Place Place::Of(std::string const& path)
{
    auto rest = std::string_view(path);
    auto const next = [&rest] {
        rest.remove_prefix(rest.empty() ? 0 : 1); // the slash
        std::string_view const segment = rest.substr(0, rest.find('/'));
        rest.remove_prefix(segment.size());
        return Path::Decoded(segment);
    };
    std::string const tree = next();
    return {tree, next()};
}

std::string Place::HeadPath() const
{
    return subtree.empty() ? Path::Format("/:tree", {tree}) : Path::Format("/:tree/:subtree", {tree, subtree});
}

bool Place::IsHead(std::string const& path)
{
    return std::count(path.begin(), path.end(), '/') <= 2;
}

} // namespace ZuRest
