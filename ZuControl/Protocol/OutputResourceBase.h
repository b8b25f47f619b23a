#pragma once

#include "ZuControl/Protocol/ControlResourceBase.h"
#include "wApi/wLock.h"
#include "wApi/wThreadSafety.h"

#include <functional>
#include <string>
#include <vector>

namespace ZuControl::Protocol
{

struct CommonControlProps;

/// One kind of output under `/controls/hardware/:device`: a single record that all devices and ports show and change. It is
/// kept in memory alone; nothing of it goes to the sensor.
///
/// A change is told with the device and the port of the request that made it, also while a job is loaded, for the record
/// belongs to no job.
class ZUCONTROL_INTERNAL_API OutputResourceBase : public ControlResourceBase
{
public:
    ~OutputResourceBase() override;

    nlohmann::json Document(ZuRest::RequestInfo const& request, ZuRest::ResponseInfo& response) override;

    /// A document that is refused changes nothing. A request without a device or a port has changed the record by the time it
    /// fails with std::out_of_range.
    void UpdateDocument(ZuRest::RequestInfo const& request, nlohmann::json const& document) override;

protected:
    /// `newRoute` is a literal with the keys "device" and "port".
    OutputResourceBase(IControlManager& usedManager, char const* newRoute);

    virtual CommonControlProps& Record() ZU_REQUIRES(recordLock) = 0;

    /// Whether the record differs from what was last told, in what is told at all; it counts as told from then on.
    virtual bool TakeChange() ZU_REQUIRES(recordLock) = 0;

    // A leaf. Guards the record and what was told of it, in the derived class. No callback runs under it: a handler may come
    // back to read.
    wLock recordLock;

private:
    using ChangeCallback = std::function<void(std::string const& device, std::string const& port)>;

    void OutputChanged(std::string const& device, std::string const& port);

    char const* const route;
    std::vector<ChangeCallback> changeCallbacks; // never changes behind the constructor
};

} // namespace ZuControl::Protocol
