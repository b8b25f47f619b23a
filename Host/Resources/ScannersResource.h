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

/// The scanners: a list at "/scanners", and each scanner at "/scanners/:id", by its id or by its number. Numbers count
/// from 0 over all engines.
///
/// The hardware tree has DEVICES devices, whether they exist or not. A scanner number below DEVICES therefore always
/// has a document, which shows whether the scanner is present.
class ScannersResource final : public ZuRest::DocumentResourceBase
{
public:
    static constexpr uint64 DEVICES = 2;

    /// The engines outlive the resource.
    explicit ScannersResource(ZuScan::Internal::ScanEngineManager const& shownEngines);
    ~ScannersResource() override;

    nlohmann::json Document(ZuRest::RequestInfo const& request, ZuRest::ResponseInfo& response) override;

private:
    nlohmann::json ShowOne(std::string const& id) const;

    ZuScan::Internal::ScanEngineManager const& engines;
};

} // namespace ZuHost
