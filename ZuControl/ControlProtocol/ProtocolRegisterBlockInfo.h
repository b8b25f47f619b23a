#pragma once

#include "ZuApi/Params/Enum.h"
#include "ZuApi/Params/Group.h"
#include "ZuApi/Params/Value.h"
#include "ZuControl/Export.h"
#include "wApi/wTypes.h"

#include <atomic>
#include <memory>
#include <string>

namespace ZuControl::ControlProtocol
{

/// The kind of data in a register block.
enum RegisterBlockCategory : uint8
{
    BlockCategoryUnknown = 0,
    BlockCategoryControlInput = 1,
    BlockCategoryControlOutput = 2,
    BlockCategorySystem = 3,
    BlockCategoryScanner = 4,
    BlockCategoryStamp = 5,
    BlockCategoryMeasurement = 6
};

} // namespace ZuControl::ControlProtocol

ZU_DECLARE_ENUM_VALUE(ZuControl::ControlProtocol::RegisterBlockCategory);

namespace ZuControl::ControlProtocol
{

class IProtocolRegisterBlockFactory;

/// The description from which a block type is constructed.
struct RegisterBlockInfoParams
{
    std::string type;        ///< the key by which blocks of the type are named
    std::string displayName; ///< for a person; also the name of a new block without a name of its own
    RegisterBlockCategory category = BlockCategoryUnknown;
    uint16 deserializedInputSize = 0; ///< minimum bytes of a source for `Deserialize`; 0 for types that only send
    uint16 registerCount = 0;         ///< registers of one block
    uint8 bytesPerRegister = 1;       ///< 1 or 2; another size is refused when a block writes its first value
    uint16 minInstanceCount = 0;      ///< fewest blocks that must stay in the assembly
    uint16 maxInstanceCount = 0;      ///< most blocks that may be added
    bool hasDataSource = false;       ///< blocks carry scan output and need a data source
    bool isProtocolBigEndian = true;
    std::shared_ptr<IProtocolRegisterBlockFactory> factory;
};

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

    uint16 InstanceCount() const;
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
