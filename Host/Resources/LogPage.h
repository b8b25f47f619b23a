#pragma once

#include "ZuRest/DocumentResourceBase.h"

#include <memory>

namespace ZuRest
{
class ResourceRouter;
}

namespace ZuHost
{

/// "/log": the newest lines of the log that are warnings or errors, the oldest first.
///
/// It keeps the lines itself, whatever `--log` leaves out. A place in the program that floods the log displaces the lines
/// of others.
class LogPage final : public ZuRest::DocumentResourceBase
{
public:
    static constexpr uint64 MAX_LINES = 200;
    static constexpr uint64 MAX_TEXT_BYTES = 1024; ///< the end of a longer text is left out

    /// Registers the route, and keeps lines from now on. The router outlives the page.
    explicit LogPage(ZuRest::ResourceRouter& usedRouter);
    ~LogPage() override; ///< removes the route

    nlohmann::json Document(ZuRest::RequestInfo const& request, ZuRest::ResponseInfo& response) override;

private:
    class Sink;

    ZuRest::ResourceRouter& router;
    std::shared_ptr<Sink> const sink;
};

} // namespace ZuHost
