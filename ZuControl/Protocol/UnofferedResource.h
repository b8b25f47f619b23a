#pragma once

#include "ZuControl/Export.h"
#include "ZuRest/DocumentResourceBase.h"

#include <nlohmann/json_fwd.hpp>

namespace ZuControl::Protocol
{

/// Stands where this system has nothing to show, and says so.
class ZUCONTROL_INTERNAL_API UnofferedResource final : public ZuRest::DocumentResourceBase
{
public:
    /// `newReason` is a literal: the sentence that a client reads.
    explicit UnofferedResource(char const* newReason);
    ~UnofferedResource() override;

    /// Refuses with -996 and the reason.
    nlohmann::json Document(ZuRest::RequestInfo const& request, ZuRest::ResponseInfo& response) override;

private:
    char const* const reason;
};

} // namespace ZuControl::Protocol
