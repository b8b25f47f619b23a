#pragma once

#include "ZuRest/DocumentResourceBase.h"
#include "wApi/wTypes.h"

namespace ZuScan::Internal
{
class ScanEngineManager;
class ScannerInstance;
} // namespace ZuScan::Internal

namespace ZuHost
{

/// The scanners: the list at "/scanners", each at "/scanners/:id", by its id or by its number, from 0 over all engines.
///
/// The hardware tree counts devices by number and knows two of them, whatever there is: the numbers below that have a
/// document in any case, which says whether the scanner is there.
class ScannersResource final : public ZuRest::DocumentResourceBase
{
public:
    static constexpr uint64 DEVICES = 2;

    /// The engines outlive this.
    explicit ScannersResource(ZuScan::Internal::ScanEngineManager const& shownEngines);
    ~ScannersResource() override;

    nlohmann::json Document(ZuRest::RequestInfo const& request, ZuRest::ResponseInfo& response) override;

private:
    nlohmann::json ShowOne(std::string const& id) const;

    ZuScan::Internal::ScanEngineManager const& engines;
};

} // namespace ZuHost
