#pragma once

#include "wApi/wExport.h"

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

namespace ZuRest
{

struct Reference;

/// What a resource says beside its document: to which other resources it belongs.
///
/// It keeps what was said in order. The paths need not exist yet: they are looked up when the resource has answered.
class ZUPLATFORM_API ResponseInfo
{
public:
    ResponseInfo();
    ~ResponseInfo();

    ResponseInfo(ResponseInfo const&) = delete;
    ResponseInfo& operator=(ResponseInfo const&) = delete;

    /// The response shows the document of the resource at `path` inline under `key`; with `asList` the key is a list, also
    /// with one member. `extra` is null, or an object whose members stand beside the address of the resource.
    void Embed(std::string key, std::string path, bool asList, nlohmann::json const& extra);

    /// As `Embed`, with the address alone.
    void Link(std::string key, std::string path, bool asList, nlohmann::json const& extra);

    std::vector<Reference> const& References() const;

private:
    std::vector<Reference> references;
};

} // namespace ZuRest
