#pragma once

#include "wApi/wExport.h"

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

namespace ZuRest
{

struct Reference;

/// The references of a resource's document to other resources.
///
/// It keeps the references in order. A path need not exist when it is added: paths are resolved after the resource has
/// returned its document.
class ZUPLATFORM_API ResponseInfo
{
public:
    ResponseInfo();
    ~ResponseInfo();

    ResponseInfo(ResponseInfo const&) = delete;
    ResponseInfo& operator=(ResponseInfo const&) = delete;

    /// Shows the document of the resource at `path` inline under `key`. With `asList` the value of `key` is a list,
    /// even with one member. `extra` is null, or an object with further members of the link to the resource.
    void Embed(std::string key, std::string path, bool asList, nlohmann::json const& extra);

    /// As `Embed`, but only as a link.
    void Link(std::string key, std::string path, bool asList, nlohmann::json const& extra);

    std::vector<Reference> const& References() const;

private:
    std::vector<Reference> references;
};

} // namespace ZuRest
