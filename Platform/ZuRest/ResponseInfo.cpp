#include "ZuRest/ResponseInfo.h"

#include "ZuRest/Reference.h"

#include <utility>

namespace ZuRest
{

namespace
{

constexpr std::size_t USUAL_REFERENCES = 8;

} // namespace

ResponseInfo::ResponseInfo()
{
    references.reserve(USUAL_REFERENCES);
}

ResponseInfo::~ResponseInfo() = default;

void ResponseInfo::Embed(std::string key, std::string path, bool asList, nlohmann::json const& extra)
{
    references.push_back({true, std::move(key), std::move(path), asList, extra});
}

void ResponseInfo::Link(std::string key, std::string path, bool asList, nlohmann::json const& extra)
{
    references.push_back({false, std::move(key), std::move(path), asList, extra});
}

std::vector<Reference> const& ResponseInfo::References() const
{
    return references;
}

} // namespace ZuRest
