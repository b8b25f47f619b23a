#pragma once

#include "Host/Operation/SensorFigures.h"
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

/// "/metrics" for Prometheus: the numbers in the metrics of each protocol, those of the module and of the REST service.
///
/// The schema of a protocol's record describes each number: its "kind" (untyped if absent), its "title", and for a
/// record of records under "label" the meaning of the keys. No label or value identifies a client.
class MetricsPage final : public ZuRest::ResourceBase, public ZuRest::IContentResource
{
public:
    /// Registers the route. The router and the objects that the functions use outlive the page.
    MetricsPage(ZuRest::ResourceRouter& usedRouter, std::function<ZuControl::ControlStatistics()> newStatistics,
                std::function<ZuControl::ControlVitals()> newVitals, std::function<SensorFigures()> newFigures,
                std::function<uint64()> newCountWrongTokens);
    ~MetricsPage() override; ///< removes the route

    std::vector<std::string> ContentMethods() const override;
    ZuRest::Answer AnswerContent(ZuRest::Request const& request, ZuRest::RequestInfo const& info) override;

private:
    ZuRest::ResourceRouter& router;
    std::function<ZuControl::ControlStatistics()> const statistics;
    std::function<ZuControl::ControlVitals()> const vitals;
    std::function<SensorFigures()> const figures;
    std::function<uint64()> const countWrongTokens;
};

} // namespace ZuHost
