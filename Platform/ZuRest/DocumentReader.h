#pragma once

#include "ZuRest/ResourceLocks.h"
#include "ZuRest/ResourceRouter.h"
#include "wApi/wExport.h"

#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <string>

namespace ZuRest
{

struct Reference;

/// Makes documents as clients see them: with `_links` and `_embedded`, as HAL has it.
///
/// What it embeds lies perhaps at a place where a change is running: that shows as it was before, and as a problem beside
/// its address when nobody knows how that was. So does what cannot be read: one broken resource does not hide the others.
/// Any thread may call.
class ZUPLATFORM_API DocumentReader
{
public:
    /// How long a read from the inside waits for the end of a change.
    static constexpr uint64 PATIENCE_USEC = 1'000'000;

    /// `relationTemplate` says where the meaning of a relation is told ("/relations/{rel}"); empty for nowhere. Router and
    /// locks outlive this.
    DocumentReader(ResourceRouter const& usedRouter, ResourceLocks& usedLocks, std::string const& relationTemplate);
    ~DocumentReader();

    DocumentReader(DocumentReader const&) = delete;
    DocumentReader& operator=(DocumentReader const&) = delete;

    /// The document at `path` as it goes over the wire, for one who has a pass for its place. Throws what the resource throws,
    /// and -999 when there is none; -983 for one without a document.
    std::string Read(std::string const& path, bool wantsSchema) const;

    /// The same for one who has found the resource already.
    std::string Read(ResourceRouter::Match const& match, std::string const& path, bool wantsSchema) const;

    /// The same as a tree, with the bytes of its strings as the resources gave them.
    nlohmann::json ReadTree(std::string const& path) const;

    /// The same for one who has no pass. Throws -976 when a change of the place does not end.
    nlohmann::json ReadFromInside(std::string const& path, bool wantsSchema) const;

private:
    template <typename Sink>
    class Walk;

    ResourceRouter const& router;
    ResourceLocks& locks;
    std::unique_ptr<Reference const> const curie; // where the meaning of relations is told; null for nowhere
    std::string const curieText;                  // of the same
};

} // namespace ZuRest
