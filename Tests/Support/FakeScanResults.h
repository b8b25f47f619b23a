#pragma once

#include "Support/CallLog.h"
#include "ZuControl/Control/IControlScanResults.h"

#include <string>

namespace ZuTest
{

/// A fan-out that only records its calls.
class FakeScanResults final : public ZuControl::IControlScanResults
{
public:
    explicit FakeScanResults(CallLog& sharedCalls) : calls(sharedCalls)
    {
    }

    std::pair<ZuControl::ZuEthernetProtocol, Zu::Event<void*>::CallbackId>
    AddResultHandler(std::function<void(void*)> handler, ZuControl::ZuEthernetProtocol protocol) override
    {
        calls.Add("AddResultHandler(" + Number(protocol) + ")");
        return {protocol, event.Add(std::move(handler))};
    }

    void RemoveResultHandler(std::pair<ZuControl::ZuEthernetProtocol, Zu::Event<void*>::CallbackId> id) override
    {
        calls.Add("RemoveResultHandler(" + Number(id.first) + ")");
        event.Remove(id.second);
    }

    void ProcessResultSet(void* resultSet) override
    {
        event.Fire(resultSet);
    }

    void UpdateOutputMap(ZuControl::ZuEthernetProtocol protocol, std::vector<std::string> dataSourceIds) override
    {
        std::string call = "UpdateOutputMap(" + Number(protocol);
        for (std::string const& id : dataSourceIds)
        {
            call += "," + id;
        }
        calls.Add(call + ")");
    }

    void UpdateClientCount(ZuControl::ZuEthernetProtocol protocol, uint64 count) override
    {
        calls.Add("UpdateClientCount(" + Number(protocol) + "," + std::to_string(count) + ")");
    }

private:
    static std::string Number(ZuControl::ZuEthernetProtocol protocol)
    {
        return std::to_string(static_cast<int32>(protocol));
    }

    CallLog& calls;
    Zu::Event<void*> event;
};

} // namespace ZuTest
