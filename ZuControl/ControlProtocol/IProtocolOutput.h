#pragma once

#include "ZuControl/Export.h"
#include "wApi/wMutex.h"
#include "wApi/wTypes.h"

#include <memory>
#include <string>
#include <vector>

namespace Zu::Params
{
class Group;
}

namespace ZuControl::ControlProtocol
{

/// The output map of a protocol: which data source it sends under which output id.
///
/// Ownership: the protocol owns its map, which lives as long as the protocol. Threads: any; the map has a recursive
/// lock of its own, and operations wait for it. The configuration threads of IProtocol change the map inside the host's
/// update gate and then call `IProtocol::OutputsUpdate`; the protocol may read and change the map at any time, enabled
/// or not. Argument records stay the caller's. Exceptions: see `IControlActionTarget::InvokeAction`, through which
/// clients call the changes. An operation throws std::bad_cast for an argument record of another class.
class ZUCONTROL_API IProtocolOutput
{
public:
    /// How an output id relates to those in the map: 0 is free, 1 is taken; other kinds of map use the bits as flags.
    using ZuProtocolOutputDataOverlapState = uint16;

    IProtocolOutput() noexcept;
    virtual ~IProtocolOutput(); // first of the slots that plug-ins call through: never move one

    // `BeginLock` waits for the map's lock and holds it until `EndLock` on the same thread. One thread may nest the
    // pairs, but an inner `EndLock` forbids `OutputMap` until the next `BeginLock`. Do not wait for a client or for
    // another change while the lock is held. Both throw the platform's status when the lock fails.
    virtual void BeginLock() = 0;
    virtual void EndLock() = 0;

    /// The map as a record, valid between `BeginLock` and `EndLock`. Throws `Zu::Status::WRONG_STATE`, no text, outside
    /// of them.
    virtual Zu::Params::Group const& OutputMap() const = 0;

    // New argument records at their defaults, which the caller owns: for one item, and for a whole map. They take no
    // lock.
    virtual std::shared_ptr<Zu::Params::Group> CreateOutputMapItemArgs() const = 0;
    virtual std::shared_ptr<Zu::Params::Group> CreateOutputsArgs() const = 0;

    /// Adds one item. A refusal leaves the map unchanged: `Zu::Status::BAD_ARGUMENT`, `ALREADY_EXISTS` or `FULL`.
    virtual void Add(Zu::Params::Group const& itemArgs) = 0;
    /// Adds items and writes the ids that it assigns into the caller's record. Items that are added before an exception
    /// stay.
    virtual void AddAll(Zu::Params::Group& outputsArgs) = 0;
    /// Removes the item with the id of `args`. Throws `Zu::Status::BAD_ARGUMENT` without an id, `Zu::Status::NOT_FOUND`
    /// for an id that the map does not have.
    virtual void Remove(Zu::Params::Group const& args) = 0;
    virtual uint64 Count() const = 0; ///< neither waits nor throws
    /// The item at `index`, valid until the next change: hold the lock. Throws `Zu::Status::BAD_ARGUMENT` above the
    /// count and `Zu::Status::NOT_FOUND` at the count.
    virtual Zu::Params::Group const& At(uint64 index) const = 0;
    virtual void Clear() = 0;
    /// The data source of each item, in item order.
    virtual std::vector<std::string> DataSourceList() const = 0;
    /// Closes the gaps between the ids, where ids are numbers.
    virtual void CompactId() = 0;
    /// Moves the item of the first entry's id to the second entry's id. The move removes the item first: an exception
    /// after that loses the item.
    virtual void UpdateId(Zu::Params::Group& outputsArgs) = 0;
};

} // namespace ZuControl::ControlProtocol
