#pragma once

#include "ZuControl/Export.h"
#include "wApi/wThreadSafety.h"
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
/// Ownership: the protocol owns its map. Threads: any; the map has a recursive lock of its own.
class ZUCONTROL_API IProtocolOutput
{
public:
    /// How an output id meets those that the map has: 0 is free, 1 is taken; other kinds of map use the bits as flags.
    using ZuProtocolOutputDataOverlapState = uint16;

    IProtocolOutput() noexcept;
    virtual ~IProtocolOutput(); // first of the slots that plug-ins call through: never move one

    /// Holds the map's lock until `EndLock`; one thread may nest the two.
    virtual void BeginLock() = 0;
    virtual void EndLock() = 0;

    /// The map as a record; good between `BeginLock` and `EndLock`. Throws -1000, no text, outside of them.
    virtual Zu::Params::Group const& OutputMap() const = 0;

    /// A new, default argument record for one item.
    virtual std::shared_ptr<Zu::Params::Group> CreateOutputMapItemArgs() const = 0;
    /// A new, default argument record for a whole map.
    virtual std::shared_ptr<Zu::Params::Group> CreateOutputsArgs() const = 0;

    virtual void Add(Zu::Params::Group const& itemArgs) = 0;
    /// Writes the ids that it hands out into the caller's record.
    virtual void AddAll(Zu::Params::Group& outputsArgs) = 0;
    virtual void Remove(Zu::Params::Group const& args) = 0;
    virtual uint64 Count() const = 0;
    /// The item at `index`. Throws -997 above the count, -999 at the count.
    virtual Zu::Params::Group const& At(uint64 index) const = 0;
    virtual void Clear() = 0;
    /// The data source of each item, in item order.
    virtual std::vector<std::string> DataSourceList() const = 0;
    /// Closes the gaps between the ids, where ids are numbers.
    virtual void CompactId() = 0;
    /// Moves the item of the first entry's id to the second entry's id.
    virtual void UpdateId(Zu::Params::Group& outputsArgs) = 0;
};

} // namespace ZuControl::ControlProtocol
