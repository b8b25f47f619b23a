#pragma once

#include "ZuControl/Control/ControlStatistics.h"
#include "ZuControl/Control/ControlVitals.h"
#include "ZuRest/IContentResource.h"
#include "ZuRest/ResourceBase.h"

#include <functional>

namespace ZuRest
{
class ResourceRouter;
}

namespace ZuHost
{

/// What Prometheus collects, at "/metrics": the numbers of every protocol's metrics, and those of the module.
///
/// A protocol's record says by its schema what each number is: its "kind" (a number without one is untyped), its "title", and
/// for a record in the record under "label" what its keys are. Nothing of it names a client.
class MetricsPage final : public ZuRest::ResourceBase, public ZuRest::IContentResource
{
public:
    /// The router outlives the page, and so does what the two functions need. From now on the page has its route.
    MetricsPage(ZuRest::ResourceRouter& usedRouter, std::function<ZuControl::ControlStatistics()> newStatistics,
                std::function<ZuControl::ControlVitals()> newVitals);
    ~MetricsPage() override; ///< takes its route away

    std::vector<std::string> ContentMethods() const override;
    ZuRest::Answer AnswerContent(ZuRest::Request const& request, ZuRest::RequestInfo const& info) override;

private:
    ZuRest::ResourceRouter& router;
    std::function<ZuControl::ControlStatistics()> const statistics;
    std::function<ZuControl::ControlVitals()> const vitals;
};

} // namespace ZuHost
