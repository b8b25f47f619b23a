#pragma once

#include "Host/Audit/TrailFile.h"
#include "ZuRest/IContentResource.h"
#include "ZuRest/ResourceBase.h"

#include <string_view>

namespace ZuRest
{
class ResourceRouter;
}

namespace ZuHost
{

class AuditTrail;

/// "/audit": pages of the trail as a HAL document, as CSV (Accept: text/csv) or as one JSON document a line (Accept:
/// application/x-ndjson).
///
/// The query has the members of `TrailFilter`. A page has a link to the next one unless it is the last.
class AuditResource final : public ZuRest::ResourceBase, public ZuRest::IContentResource
{
public:
    static constexpr uint64 MAX_PAGE = 1'000;

    /// Registers the route. Router and trail outlive the resource.
    AuditResource(ZuRest::ResourceRouter& usedRouter, AuditTrail const& shownTrail);
    ~AuditResource() override; ///< removes the route

    std::vector<std::string> ContentMethods() const override;
    ZuRest::Answer AnswerContent(ZuRest::Request const& request, ZuRest::RequestInfo const& info) override;

    /// Throws `Zu::Status::BAD_ARGUMENT` with a sentence for a parameter that is not known, comes twice or has no fit
    /// value.
    static TrailFilter FilterOf(std::string_view query);

private:
    ZuRest::ResourceRouter& router;
    AuditTrail const& trail;
};

} // namespace ZuHost
