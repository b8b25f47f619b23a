#pragma once

#include "ZuControl/Export.h"
#include "wApi/wTypes.h"

#include <list>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace Zu::Params
{
class Group;
} // namespace Zu::Params

namespace ZuControl
{
class IControlActionTarget;
} // namespace ZuControl

namespace ZuControl::ControlProtocol
{

struct ProtocolRegisterBlock;
struct ProtocolRegisterBlockInfo;

/// The ordered set of blocks that a protocol exposes in its register space.
///
/// Ownership: the protocol owns its assemblies, which live as long as the protocol; an assembly owns its block types
/// and shares its blocks, neither of which outlives it. Argument records stay the caller's.
/// Threads: any; an assembly has a recursive lock of its own, and operations wait for it. The configuration threads of
/// IProtocol change the assembly inside the host's update gate and then call `IProtocol::RegisterAssemblyUpdate`; the
/// protocol may read and change it at any time, enabled or not.
/// Exceptions: see `IControlActionTarget::InvokeAction`, through which clients call `Add`, `Remove`, `Compact` and
/// `Update`. These throw std::bad_cast for an argument record of another class. Changes that are made before an
/// exception stay.
class ZUCONTROL_API IProtocolRegisterAssembly
{
public:
    static constexpr char const* DEFAULT_REGISTER_ASSEMBLY_ID = "registerAssembly-0";
    static constexpr char const* DEFAULT_REGISTER_ASSEMBLY_DISPLAY_NAME = "Register Assembly 0";

    IProtocolRegisterAssembly() noexcept;
    virtual ~IProtocolRegisterAssembly(); // first of the slots that plug-ins call through: never move one

    // `BeginLock` waits for the assembly's lock and holds it until `EndLock` on the same thread, so that the caller may
    // read the two lists below. One thread may nest the pairs, but an inner `EndLock` forbids the lists until the next
    // `BeginLock`. Do not wait for a client or for another change while the lock is held. Both throw the platform's
    // status when the lock fails.
    virtual void BeginLock() = 0;
    virtual void EndLock() = 0;

    /// Offers one more block type; a protocol does so in its constructor. Throws `Zu::Status::ALREADY_EXISTS` for a
    /// type name that the assembly has, and `Zu::Status::BAD_ARGUMENT` for null.
    virtual void AddSupportedBlockType(std::unique_ptr<ProtocolRegisterBlockInfo> info) = 0;

    /// Adds the blocks of an `AddBlockParams`, each by itself: a `Zu::Exception` for one block is logged for the user,
    /// and the next block is tried. The display names and output ids are filled into the caller's elements. Throws
    /// `Zu::Status::FAILURE` when there are elements and none is added.
    virtual void Add(Zu::Params::Group& params) = 0;
    /// Removes the blocks that a `RemoveBlockParams` names, each by itself, with the same treatment of failures as
    /// `Add`.
    virtual void Remove(Zu::Params::Group const& params) = 0;
    /// Gives the blocks ids without gaps, beginning with the id of a `CompactBlocksParams`. A refusal changes nothing.
    virtual void Compact(Zu::Params::Group const& params) = 0;
    /// Changes the block that an `UpdateBlockParams` names. Throws `Zu::Status::BAD_ARGUMENT` when it names none and
    /// `Zu::Status::NOT_FOUND` when there is no such block.
    virtual void Update(Zu::Params::Group const& params) = 0;

    /// Removes all blocks; the types stay.
    virtual void ResetRegisterAssembly() = 0;
    /// Removes all blocks, then adds one block of each type that must have one.
    virtual void InitDefaultRegisterBlocksForRegisterAssembly() = 0;

    // The next two lists are valid between `BeginLock` and `EndLock`, and throw `Zu::Status::WRONG_STATE`, no text,
    // outside.

    /// The block types in the order of adding.
    virtual std::vector<std::unique_ptr<ProtocolRegisterBlockInfo>> const& SupportedRegisterBlockTypes() = 0;
    /// The blocks in the order of their output ids.
    virtual std::list<std::shared_ptr<ProtocolRegisterBlock>> const& AddedRegisterBlocks() = 0;

    // The next two return copies, for which the caller needs no lock. The blocks in them may change meanwhile.

    /// The blocks of the named types, in list order, each once.
    virtual std::list<std::shared_ptr<ProtocolRegisterBlock>> const
    FindAddedBlocksOfTypes(std::list<std::string> types) = 0;
    /// The blocks that have a data source, by data source; of two blocks with the same source the first in the list.
    virtual std::map<std::string, std::shared_ptr<ProtocolRegisterBlock>> const
    FindAddedScanOutputBlocksSortedByDataSource() = 0;

    // The two records do not change after construction; reading them takes no lock.
    virtual Zu::Params::Group const& Attributes() = 0;
    virtual Zu::Params::Group const& Properties() = 0;

    /// The data source of each block that has one, in list order, duplicates kept.
    virtual std::vector<std::string> DataSourceList() const = 0;
    /// The identifier, never null or empty. It does not change; the operation neither waits nor throws.
    virtual char const* Id() const = 0;
};

/// The register assemblies of one protocol by identifier, each with the action target that changes it.
///
/// Ownership: the protocol owns the group, the assemblies and the action targets, which all live as long as the
/// protocol.
/// Threads: any; only `Add`, `List` and `DataSourceList` may wait, for the locks of the group and of the assemblies.
/// Lock order: a thread that holds the lock of an assembly must not call these three.
class ZUCONTROL_API IProtocolRegisterAssemblyGroup
{
public:
    IProtocolRegisterAssemblyGroup() noexcept;
    virtual ~IProtocolRegisterAssemblyGroup(); // first of the slots that plug-ins call through: never move one

    /// Adds an assembly with its action target; a protocol does so in its constructor, and nothing is ever removed.
    /// Throws `Zu::Status::BAD_ARGUMENT` for an identifier that the group has; the first assembly stays.
    virtual void Add(IProtocolRegisterAssembly& assembly, IControlActionTarget& actionTarget) = 0;
    virtual bool Empty() const = 0;
    /// The identifiers in byte order.
    virtual std::vector<std::string> List() const = 0;
    /// False for null.
    virtual bool HasRegisterAssembly(char const* id) const = 0;
    /// Throws `Zu::Status::BAD_ARGUMENT` for null and `Zu::Status::NOT_FOUND` for an identifier that the group does not
    /// have.
    virtual IProtocolRegisterAssembly& RegisterAssembly(char const* id) const = 0;
    /// Throws as `RegisterAssembly` does.
    virtual IControlActionTarget& ActionTarget(char const* id) const = 0;
    /// The data sources of all assemblies, in order of the identifiers, each source once.
    virtual std::vector<std::string> DataSourceList() const = 0;
};

} // namespace ZuControl::ControlProtocol
