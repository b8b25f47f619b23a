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

/// Builds documents in the form that clients see: with `_links` and `_embedded`, in the HAL format.
///
/// If an embedded resource of another place is being changed, its document from before the change is shown. If that
/// document is unknown and the change does not end in time, or if the resource cannot be read, its address and the
/// problem are shown instead: one broken resource does not hide the others.
///
/// Any thread may call.
class ZUPLATFORM_API DocumentReader
{
public:
    /// The limit for waiting until a change ends, for `ReadFromInside` and for each embedded resource of another place.
    static constexpr uint64 PATIENCE_USEC = 1'000'000;

    /// `relationTemplate` is the URI template of the pages that document the relations ("/relations/{rel}"); empty for
    /// none. Router and locks must outlive this object.
    DocumentReader(ResourceRouter const& usedRouter, ResourceLocks& usedLocks, std::string const& relationTemplate);
    ~DocumentReader();

    DocumentReader(DocumentReader const&) = delete;
    DocumentReader& operator=(DocumentReader const&) = delete;

    /// Returns the document at `path` as text for the network. The caller holds a pass for the place of `path`. Throws
    /// `Zu::Status::NOT_FOUND` if there is no resource and `Zu::Status::NOT_UPDATABLE` if it has no document.
    /// Exceptions of the resource go to the caller.
    std::string Read(std::string const& path, bool wantsSchema) const;

    /// As above, for a caller that has found the resource already. The resource gets `query`, the text after the question
    /// mark of a request; those that it embeds do not.
    std::string Read(ResourceRouter::Match const& match, std::string const& path, bool wantsSchema,
                     std::string const& query = {}) const;

    /// As `Read` without the schema, as a JSON tree. Strings keep the bytes of the resources, even if they are not
    /// valid UTF-8.
    nlohmann::json ReadTree(std::string const& path) const;

    /// As `ReadTree`, for a caller without a pass. During a change of the place it returns the document from before the
    /// change, if that is known. Otherwise it waits for the end of the change and throws `Zu::Status::BUSY` after
    /// `PATIENCE_USEC`.
    nlohmann::json ReadFromInside(std::string const& path, bool wantsSchema) const;

private:
    template <typename Sink>
    class Walk;

    ResourceRouter const& router;
    ResourceLocks& locks;
    std::unique_ptr<Reference const> const curie; // link to the documentation of the relations; null for none
    std::string const curieText;                  // `curie` as text
};

} // namespace ZuRest
