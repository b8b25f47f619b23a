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
}

namespace ZuControl::ControlProtocol
{

struct ProtocolRegisterBlock;
struct ProtocolRegisterBlockInfo;

/// The ordered set of blocks that a protocol exposes in its register space.
///
/// Ownership: the protocol owns its assemblies; an assembly owns its block types and shares its blocks, neither of which
/// outlives it. Threads: any; an assembly has a recursive lock of its own.
class ZUCONTROL_API IProtocolRegisterAssembly
{
public:
    static constexpr char const* DEFAULT_REGISTER_ASSEMBLY_ID = "registerAssembly-0";
    static constexpr char const* DEFAULT_REGISTER_ASSEMBLY_DISPLAY_NAME = "Register Assembly 0";

    IProtocolRegisterAssembly() noexcept;
    virtual ~IProtocolRegisterAssembly(); // first of the slots that plug-ins call through: never move one

    /// Holds the assembly's lock until `EndLock`, so that the lists that it hands out may be read.
    virtual void BeginLock() = 0;
    virtual void EndLock() = 0;

    /// Offers one more block type. Throws -987 for a type name that is there already.
    virtual void AddSupportedBlockType(std::unique_ptr<ProtocolRegisterBlockInfo> info) = 0;

    /// Adds the blocks of an `AddBlockParams`, each by itself: one that fails is logged and the next is tried. Display name
    /// and output id are filled into the caller's elements. Throws status 0 when there were elements and none was added.
    virtual void Add(Zu::Params::Group& params) = 0;
    /// Removes the blocks that a `RemoveBlockParams` names, each by itself, in the manner of `Add`.
    virtual void Remove(Zu::Params::Group const& params) = 0;
    /// Gives the blocks ids without gaps, from that of a `CompactBlocksParams` on.
    virtual void Compact(Zu::Params::Group const& params) = 0;
    /// Changes the block that an `UpdateBlockParams` names.
    virtual void Update(Zu::Params::Group const& params) = 0;

    /// Removes all blocks; the types stay.
    virtual void ResetRegisterAssembly() = 0;
    /// Removes all blocks, then adds one block of each type that must have one.
    virtual void InitDefaultRegisterBlocksForRegisterAssembly() = 0;

    /// The block types in the order of adding. Throws -1000, no text, outside of `BeginLock` and `EndLock`.
    virtual std::vector<std::unique_ptr<ProtocolRegisterBlockInfo>> const& SupportedRegisterBlockTypes() = 0;
    /// The blocks in the order of their output ids. Throws -1000, no text, outside of `BeginLock` and `EndLock`.
    virtual std::list<std::shared_ptr<ProtocolRegisterBlock>> const& AddedRegisterBlocks() = 0;

    /// The blocks of the named types, in list order, each once.
    virtual std::list<std::shared_ptr<ProtocolRegisterBlock>> const
    FindAddedBlocksOfTypes(std::list<std::string> types) = 0;
    /// The blocks that have a data source, by data source; of two with the same one the first in the list.
    virtual std::map<std::string, std::shared_ptr<ProtocolRegisterBlock>> const
    FindAddedScanOutputBlocksSortedByDataSource() = 0;

    virtual Zu::Params::Group const& Attributes() = 0;
    virtual Zu::Params::Group const& Properties() = 0;

    /// The data source of each block that has one, in list order, duplicates kept.
    virtual std::vector<std::string> DataSourceList() const = 0;
    virtual char const* Id() const = 0;
};

} // namespace ZuControl::ControlProtocol
