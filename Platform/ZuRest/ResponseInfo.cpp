#include "ZuRest/ResponseInfo.h"

#include "ZuRest/Reference.h"

namespace ZuRest
{

ResponseInfo::ResponseInfo() = default;
ResponseInfo::~ResponseInfo() = default;

void ResponseInfo::Embed(std::string const& key, std::string const& path, bool asList, nlohmann::json const& extra)
{
    references.push_back({true, key, path, asList, extra});
}

void ResponseInfo::Link(std::string const& key, std::string const& path, bool asList, nlohmann::json const& extra)
{
    references.push_back({false, key, path, asList, extra});
}

std::vector<Reference> const& ResponseInfo::References() const
{
    return references;
}

} // namespace ZuRest
