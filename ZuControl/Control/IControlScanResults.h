#pragma once

#include "ZuApi/Event.h"
#include "ZuControl/Control/ZuEthernetProtocol.h"
#include "ZuControl/Export.h"
#include "wApi/wTypes.h"

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace ZuControl
{

/// The way of scan results to the protocols.
class ZUCONTROL_API IControlScanResults
{
public:
    /// Adds a handler of the protocol's result sets. It is called on the protocol's dispatcher thread with the `wArrayList`
    /// of the sets that have gathered, valid for the call only. From inside a handler no operation of this interface but
    /// `UpdateOutputMap` may be called: removal waits for the running handler, and so would both for ever.
    virtual std::pair<ZuEthernetProtocol, Zu::Event<void*>::CallbackId>
    AddResultHandler(std::function<void(void*)> handler, ZuEthernetProtocol protocol) = 0;

    /// Removes a handler; it is not running any more when this returns. -999 when the protocol has no handler at all.
    virtual void RemoveResultHandler(std::pair<ZuEthernetProtocol, Zu::Event<void*>::CallbackId> id) = 0;

    /// Gives each protocol with clients its share of `resultSet`, which stays as it is; no reference to it is kept.
    virtual void ProcessResultSet(void* resultSet) = 0;

    /// From now on the protocol wants these data sources and no others. Never waits for a running delivery.
    virtual void UpdateOutputMap(ZuEthernetProtocol protocol, std::vector<std::string> dataSourceIds) = 0;

    /// A protocol without clients gets nothing. The count begins at 0 with the first handler. -999 without a handler.
    virtual void UpdateClientCount(ZuEthernetProtocol protocol, uint64 count) = 0;

protected:
    IControlScanResults() noexcept;
    ~IControlScanResults(); // not virtual: the first slot is the adding of handlers
};

} // namespace ZuControl
