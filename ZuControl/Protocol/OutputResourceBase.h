#pragma once

#include "ZuControl/Protocol/ControlResourceBase.h"
#include "ZuRest/IUpdatableResource.h"
#include "wApi/wLock.h"
#include "wApi/wThreadSafety.h"

#include <functional>
#include <string>
#include <vector>

namespace ZuControl::Protocol
{

struct CommonControlProps;

/// One kind of output under `/controls/hardware/:device`: a single record that all devices and ports show and change.
/// The record is kept in memory alone; it is not sent to the sensor.
///
/// A change is notified with the device and the port of the request that has made it, also while a job is loaded, since
/// the record belongs to no job.
class ZUCONTROL_INTERNAL_API OutputResourceBase : public ControlResourceBase, public ZuRest::IUpdatableResource
{
public:
    ~OutputResourceBase() override;

    nlohmann::json Document(ZuRest::RequestInfo const& request, ZuRest::ResponseInfo& response) override;

    /// A refused document changes nothing. A request without a device or a port throws std::out_of_range after it has
    /// changed the record.
    void UpdateDocument(ZuRest::RequestInfo const& request, nlohmann::json const& document) override;

    bool IsUpdatable() const noexcept override
    {
        return true;
    }

protected:
    /// `newRoute` is a literal with the keys "device" and "port".
    OutputResourceBase(IControlManager& usedManager, char const* newRoute);

    virtual CommonControlProps& Record() ZU_REQUIRES(recordLock) = 0;

    /// Whether the record differs from that of the last notification, in the members that clients are notified of. The
    /// present record then counts as notified.
    virtual bool TakeChange() ZU_REQUIRES(recordLock) = 0;

    // A leaf. Guards the record and its last notified state, in the derived class. No callback runs under it, since a
    // handler may read the record.
    wLock recordLock;

private:
    using ChangeCallback = std::function<void(std::string const& device, std::string const& port)>;

    void OutputChanged(std::string const& device, std::string const& port);

    char const* const route;
    std::vector<ChangeCallback> changeCallbacks; // does not change after construction
};

} // namespace ZuControl::Protocol
