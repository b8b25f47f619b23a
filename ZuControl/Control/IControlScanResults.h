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

/// Delivers scan results to the protocols.
///
/// Ownership: the module owns the object, which outlives the protocols. Threads: any, several at once;
/// `ProcessResultSet` is called on the thread of the result hub. On the thread of a result handler only
/// `UpdateOutputMap` may be called: the removal of a handler waits for the running handler under the lock that the
/// other operations need, so each would wait for the other for ever. For the same reason the caller of another
/// operation holds no lock that a result handler takes.
class ZUCONTROL_API IControlScanResults
{
public:
    /// Adds a handler of the protocol's result sets. It is called on the protocol's dispatcher thread, about every 2
    /// ms, with the `wArrayList` of the sets that have gathered, valid for the call only. The handler must not block:
    /// sets gather without a bound. When it throws, the exception is logged and the protocol gets no results until all
    /// its handlers are removed and one is added anew. This call may wait for a running handler of the protocol. Throws
    /// the platform's status when the dispatcher cannot be made.
    virtual std::pair<ZuEthernetProtocol, Zu::Event<void*>::CallbackId>
    AddResultHandler(std::function<void(void*)> handler, ZuEthernetProtocol protocol) = 0;

    /// Removes a handler and waits for a running one; the handler is not called after this returns. Throws
    /// `Zu::Status::NOT_FOUND` when the protocol has no handler at all; an unknown id removes nothing.
    virtual void RemoveResultHandler(std::pair<ZuEthernetProtocol, Zu::Event<void*>::CallbackId> id) = 0;

    /// Gives each protocol with clients the items of `resultSet` that it wants. Does not wait for handlers, but for a
    /// removal that does. `resultSet` is not changed and no reference to it is kept. Throws the platform's status when
    /// a set cannot be made; protocols with higher numbers then miss this set.
    virtual void ProcessResultSet(void* resultSet) = 0;

    /// From now on the protocol wants these data sources and no others; an empty list ends its deliveries. Never waits
    /// for a running delivery. May be called without a handler: the list is kept, also after the last handler is
    /// removed.
    virtual void UpdateOutputMap(ZuEthernetProtocol protocol, std::vector<std::string> dataSourceIds) = 0;

    /// A protocol without clients gets nothing. The count begins at 0 with the first handler. May wait for a removal
    /// that waits for a running handler. Throws `Zu::Status::NOT_FOUND` when the protocol has no handler.
    virtual void UpdateClientCount(ZuEthernetProtocol protocol, uint64 count) = 0;

protected:
    IControlScanResults() noexcept;
    ~IControlScanResults(); // not virtual: the first slot is the adding of handlers
};

} // namespace ZuControl
