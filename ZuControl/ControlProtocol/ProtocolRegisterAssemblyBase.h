#pragma once

#include "ZuApi/Params/Group.h"
#include "ZuApi/Params/Value.h"
#include "ZuControl/ControlProtocol/IProtocolRegisterAssembly.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlockInfo.h"
#include "ZuControl/ControlProtocol/RegisterPlacement.h"
#include "ZuControl/Export.h"
#include "wApi/wLock.h"
#include "wApi/wTypes.h"

#include <atomic>
#include <list>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace Zu
{
class Exception;
} // namespace Zu

namespace ZuControl::ControlProtocol
{

struct RegisterBlockParams;
struct UpdateBlockParams;

/// The address model of an assembly; read-only for clients.
struct ZUCONTROL_API RegisterAssemblyAttributes : public Zu::Params::Group
{
    RegisterAssemblyAttributes();
    ~RegisterAssemblyAttributes() override;

    Zu::Params::Value<bool> isGlobalAddressSpaceUsed; ///< an output id is a register address, not a plain number
    Zu::Params::Value<uint16> outputIdMin;
    Zu::Params::Value<uint16> outputIdMax;
};

/// The names of an assembly; read-only for clients.
struct ZUCONTROL_API RegisterAssemblyProperties : public Zu::Params::Group
{
    RegisterAssemblyProperties();
    ~RegisterAssemblyProperties() override;

    Zu::Params::Value<std::string> displayName;
    Zu::Params::Value<std::string> id;
};

/// The blocks of a register space, sorted by output id and never overlapping. With `autoShift` a change moves the
/// blocks that are in its way to higher ids.
///
/// There are two address models. With the global address space an output id is a register address: a block takes as
/// many ids as it has registers, all of them within the assembly's range. Without it an output id is a plain number: a
/// block takes one id, and the range is not checked.
/// Ownership: the assembly owns the types and shares the blocks; neither outlives the assembly.
/// Threads: any. `Add` and `Remove` take the lock for each element and not for the call, so that another thread may see
/// some of the elements changed and others not. Observers of a block's output id run under the lock while blocks are
/// moved; they must not call `Add`, `Remove`, `Update` or `Compact`.
/// A plug-in may also set output ids of blocks and register counts of types without the assembly, with the lock held.
/// The assembly then uses the new values without checking them.
class ZUCONTROL_API ProtocolRegisterAssemblyBase : public IProtocolRegisterAssembly
{
public:
    static constexpr uint16 LAST_VALID_OUTPUT_ID = 65534;
    /// For names that plug-ins give to the instances of one block type.
    static constexpr char const* REGISTER_BLOCK_INSTANCE_FORMATID_DELIMITER = "-";

    /// Throws `Zu::Status::BAD_ARGUMENT` for a minimum above the maximum, a maximum above the last valid id, and an
    /// identifier that is null or empty, in this order.
    explicit ProtocolRegisterAssemblyBase(bool isGlobalAddressSpaceUsed = false, uint16 outputIdMin = 0,
                                          uint16 outputIdMax = LAST_VALID_OUTPUT_ID,
                                          char const* id = DEFAULT_REGISTER_ASSEMBLY_ID,
                                          std::string displayName = DEFAULT_REGISTER_ASSEMBLY_DISPLAY_NAME);
    ~ProtocolRegisterAssemblyBase() override;

    ProtocolRegisterAssemblyBase(ProtocolRegisterAssemblyBase const&) = delete;
    ProtocolRegisterAssemblyBase& operator=(ProtocolRegisterAssemblyBase const&) = delete;

    void BeginLock() override ZU_NO_THREAD_SAFETY_ANALYSIS; // held until EndLock, by design
    void EndLock() override ZU_NO_THREAD_SAFETY_ANALYSIS;

    void AddSupportedBlockType(std::unique_ptr<ProtocolRegisterBlockInfo> info) override;
    void Add(Zu::Params::Group& params) override;
    void Remove(Zu::Params::Group const& params) override;
    void Compact(Zu::Params::Group const& params) override;
    void Update(Zu::Params::Group const& params) override;
    void ResetRegisterAssembly() override;

    /// Calls `Add` with the lock held.
    void InitDefaultRegisterBlocksForRegisterAssembly() override;

    std::vector<std::unique_ptr<ProtocolRegisterBlockInfo>> const&
    SupportedRegisterBlockTypes() override ZU_NO_THREAD_SAFETY_ANALYSIS; // the caller holds the lock through BeginLock
    std::list<std::shared_ptr<ProtocolRegisterBlock>> const&
    AddedRegisterBlocks() override ZU_NO_THREAD_SAFETY_ANALYSIS;

    std::list<std::shared_ptr<ProtocolRegisterBlock>> const
    FindAddedBlocksOfTypes(std::list<std::string> types) override;
    std::map<std::string, std::shared_ptr<ProtocolRegisterBlock>> const
    FindAddedScanOutputBlocksSortedByDataSource() override;

    Zu::Params::Group const& Attributes() override;
    Zu::Params::Group const& Properties() override;
    std::vector<std::string> DataSourceList() const override;
    char const* Id() const override;

    /// Sets the byte order of all types and with it that of the placed blocks.
    void ChangeBigEndianSupportedBlocks(bool isProtocolBigEndian);

    /// Grows with every change of the list, of an id, of a register count, of a name, of a data source or of the byte
    /// order, also when a plug-in sets an id or a register count without the assembly. A protocol that keeps a view of
    /// its own reads the number before it builds the view, and rebuilds the view when the number differs. Takes no
    /// lock.
    uint64 ChangeCount() const;

private:
    friend struct RegisterRules; // which works on the members from here on, and on those of a plan in a preview

    using Placement = RegisterPlacement<std::shared_ptr<ProtocolRegisterBlock>>;
    using BlockList = Placement::BlockList;
    using Position = Placement::Position;

    template <typename Work>
    auto Locked(Work const& work);
    void Refuse(uint64 entry, Zu::Exception const& exception);
    static std::shared_ptr<ProtocolRegisterBlock> MakeBlock(ProtocolRegisterBlockInfo& info,
                                                            RegisterBlockParams const& params);
    ProtocolRegisterBlockInfo* FindSupportedType(std::string const& type) ZU_REQUIRES(lock);

    void FormatBlockParams(ProtocolRegisterBlockInfo* info, RegisterBlockParams& params, uint16& endAddress)
        ZU_REQUIRES(lock);
    Position GetInsertPosition(uint16 startId, uint16 endId, bool autoShift, uint16 excludedOutputId) ZU_REQUIRES(lock);
    void ShiftRegisterAddresses(Position position, uint16 startId, uint16 endId, uint16 excludedOutputId)
        ZU_REQUIRES(lock);
    bool IsBlockOverlapping(uint16 startId, uint16 endId, std::shared_ptr<ProtocolRegisterBlock> block) const;
    bool IsValidOutputId(uint16 id, uint16 registerCount) const;
    uint16 GetNextRegisterBlockOutputId() ZU_REQUIRES(lock);
    uint16 UsedRegistersCount(Position position) ZU_REQUIRES(lock);
    /// Whether a range fits before the blocks from `position` on.
    bool hasGap(Position position, uint16 startId, uint16 endId) ZU_REQUIRES(lock);
    void UpdateBlockProperties(Position position, UpdateBlockParams const& params) ZU_REQUIRES(lock);
    uint16 UsedRegisterCount();
    void RefreshPlacement() ZU_REQUIRES(lock);
    void AddToUsedRegisters(int32 registers) ZU_REQUIRES(lock);
    void NoteChange();

    bool IsGlobal() const;
    uint16 OutputIdMin() const;
    uint16 OutputIdMax() const;

    // Set by the constructor and never changed: read without the lock.
    RegisterAssemblyAttributes attributes;
    RegisterAssemblyProperties properties;

    // Detects a forgotten BeginLock. One flag for all threads: it does not prove that the reader holds the lock.
    std::atomic<bool> lockHeld{false};
    // Taken after the group's lock; no other lock is taken under it. Recursive: the defaults are added under it.
    mutable wLock lock;
    PlacementChanges placementChanges; // types and blocks count in it and are destroyed before it
    std::vector<std::unique_ptr<ProtocolRegisterBlockInfo>> supportedTypes ZU_GUARDED_BY(lock);
    Placement placement ZU_GUARDED_BY(lock); // the blocks, which are destroyed before their types
    // Registers of all blocks, in 16 bits, for `Compact`, which reads it before it takes the lock. Written under the
    // lock. Outdated when `countedAtChange` differs from `placementChanges.registerCounts`.
    std::atomic<uint16> usedRegisterCount{0};
    std::atomic<uint64> countedAtChange{0};
    std::atomic<uint64> changeCount{0};
};

} // namespace ZuControl::ControlProtocol
