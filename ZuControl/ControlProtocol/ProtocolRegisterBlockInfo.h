#pragma once

#include "ZuApi/Params/Enum.h"
#include "ZuApi/Params/Group.h"
#include "ZuApi/Params/Value.h"
#include "ZuControl/ControlProtocol/RegisterBlockCategory.h"
#include "ZuControl/ControlProtocol/RegisterBlockInfoParams.h"
#include "ZuControl/Export.h"

#include <atomic>
#include <memory>
#include <string>

namespace ZuControl::ControlProtocol
{

class IProtocolRegisterBlockFactory;
struct ProtocolRegisterBlock;
struct RegisterBlockParams;

/// How often the placement of an assembly's blocks has changed. Blocks and types count here, so that the assembly also
/// learns of changes that a plug-in makes without it. A change is counted just before the new value is stored.
struct PlacementChanges
{
    std::atomic<uint64> all{0};            ///< output ids, register counts and the address model
    std::atomic<uint64> registerCounts{0}; ///< register counts alone
};

/// One block type of an assembly: its names, the number and layout of its registers, how many blocks of it may exist
/// and do exist, and the factory of its blocks. It is a record that clients can read; all its members are read-only for
/// them.
///
/// Ownership: the assembly owns its types; a block refers to its type, which outlives it.
/// Threads: no lock; the assembly's lock covers the count of instances.
struct ZUCONTROL_API ProtocolRegisterBlockInfo : public Zu::Params::Group
{
public:
    /// Throws `Zu::Status::BAD_ARGUMENT`, no text, when the minimum of instances is above the maximum.
    explicit ProtocolRegisterBlockInfo(RegisterBlockInfoParams params);
    ~ProtocolRegisterBlockInfo() override;

    std::string const& Type() const;
    std::string const& DisplayName() const;
    uint16 RegisterCount() const;
    uint16 MinInstanceCount() const;
    uint16 MaxInstanceCount() const;
    bool HasDataSource() const;
    uint8 BytesPerRegister() const;

    /// Minimum bytes of a source for `Deserialize`.
    uint16 DeserializedInputSize() const;
    /// Bytes of all registers of a block, in 16 bits.
    uint16 SerializedOutputSize() const;

    /// Whether an output id is a register address. The assembly sets this when the type is added.
    bool IsGlobalAddressSpaceUsed() const;
    void SetIsGlobalAddressSpaceUsed(bool newIsGlobalAddressSpaceUsed);

    /// Blocks ask their type, so a change of the byte order reaches those already placed.
    bool IsProtocolBigEndian() const;
    void SetIsProtocolBigEndian(bool newIsProtocolBigEndian);

    bool AtMaxInstance() const;
    bool AtMinInstance() const;

    // 16-bit arithmetic without validation: a decrement of 0 gives 65535.
    void IncrementInstanceCount();
    void DecrementInstanceCount();
    void ResetInstanceCount();

    /// A new block of this type, not yet placed and not counted. Throws what the block's constructor throws, and
    /// `Zu::Status::WRONG_STATE` when there is no factory or the factory gives no block.
    std::shared_ptr<ProtocolRegisterBlock> ConstructBlock(RegisterBlockParams const& params);

    /// From now on, changes of this type and of its blocks are counted in `newChanges`, which outlives the type.
    void CountChangesIn(PlacementChanges& newChanges);

    /// Counts a change of an output id of this type's blocks.
    void NotePlacementChange();

protected:
    RegisterBlockCategory Category() const;

    Zu::Params::Value<std::string> type;
    Zu::Params::Value<std::string> displayName;
    Zu::Params::Enum<RegisterBlockCategory> category;
    Zu::Params::Value<uint16> registerCount;
    Zu::Params::Value<uint16> instanceCount;
    Zu::Params::Value<uint16> minInstanceCount;
    Zu::Params::Value<uint16> maxInstanceCount;
    Zu::Params::Value<bool> hasDataSource;
    uint16 deserializedInputSize;
    uint8 bytesPerRegister;
    // Written under the assembly's lock, read by a protocol's thread that encodes without it.
    std::atomic<bool> isProtocolBigEndian;
    std::shared_ptr<IProtocolRegisterBlockFactory> factory;
    bool isGlobalAddressSpaceUsed = false;

private:
    void RegisterMembers();

    PlacementChanges* changes = nullptr; // the assembly's; null until the type is added to an assembly
};

} // namespace ZuControl::ControlProtocol
