#include "ZuControl/ControlProtocol/ProtocolRegisterBlockInfo.h"

#include "ZuApi/Exception.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlockFactory.h"

#include <utility>

ZU_INSTANTIATE_ENUM_VALUE(ZuControl::ControlProtocol::RegisterBlockCategory);

namespace ZuControl::ControlProtocol
{

ProtocolRegisterBlockInfo::ProtocolRegisterBlockInfo(RegisterBlockInfoParams given)
    : Group(""),
      type(given.type),
      displayName(given.displayName),
      category(given.category),
      registerCount(given.registerCount),
      instanceCount(uint16{0}),
      minInstanceCount(given.minInstanceCount),
      maxInstanceCount(given.maxInstanceCount),
      hasDataSource(given.hasDataSource),
      deserializedInputSize(given.deserializedInputSize),
      bytesPerRegister(given.bytesPerRegister),
      isProtocolBigEndian(given.isProtocolBigEndian),
      factory(std::move(given.factory))
{
    if (given.minInstanceCount > given.maxInstanceCount)
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT);
    }
    RegisterMembers();
    registerCount.AddObserver([this](Zu::Properties::Node&) {
        if (changes != nullptr)
        {
            changes->registerCounts.fetch_add(1, std::memory_order_release);
            NotePlacementChange();
        }
    });
    category.AddOption(BlockCategoryUnknown, "Unknown")
        .AddOption(BlockCategoryControlInput, "Control Input")
        .AddOption(BlockCategoryControlOutput, "Control Output")
        .AddOption(BlockCategorySystem, "System")
        .AddOption(BlockCategoryScanner, "Scanner")
        .AddOption(BlockCategoryStamp, "Stamp")
        .AddOption(BlockCategoryMeasurement, "Measurement");
}

ProtocolRegisterBlockInfo::~ProtocolRegisterBlockInfo()
{
    for (char const* const key : {"type", "displayName", "category", "registerCount", "instanceCount",
                                  "minInstanceCount", "maxInstanceCount", "hasDataSource"})
    {
        Deregister(key);
    }
}

std::string const& ProtocolRegisterBlockInfo::Type() const
{
    return type.Get();
}

std::string const& ProtocolRegisterBlockInfo::DisplayName() const
{
    return displayName.Get();
}

uint16 ProtocolRegisterBlockInfo::RegisterCount() const
{
    return registerCount.Get();
}

uint16 ProtocolRegisterBlockInfo::MinInstanceCount() const
{
    return minInstanceCount.Get();
}

uint16 ProtocolRegisterBlockInfo::MaxInstanceCount() const
{
    return maxInstanceCount.Get();
}

bool ProtocolRegisterBlockInfo::HasDataSource() const
{
    return hasDataSource.Get();
}

uint8 ProtocolRegisterBlockInfo::BytesPerRegister() const
{
    return bytesPerRegister;
}

uint16 ProtocolRegisterBlockInfo::DeserializedInputSize() const
{
    return deserializedInputSize;
}

uint16 ProtocolRegisterBlockInfo::SerializedOutputSize() const
{
    return static_cast<uint16>(bytesPerRegister * RegisterCount());
}

bool ProtocolRegisterBlockInfo::IsGlobalAddressSpaceUsed() const
{
    return isGlobalAddressSpaceUsed;
}

void ProtocolRegisterBlockInfo::SetIsGlobalAddressSpaceUsed(bool newIsGlobalAddressSpaceUsed)
{
    isGlobalAddressSpaceUsed = newIsGlobalAddressSpaceUsed;
    NotePlacementChange();
}

bool ProtocolRegisterBlockInfo::IsProtocolBigEndian() const
{
    return isProtocolBigEndian.load(std::memory_order_relaxed);
}

void ProtocolRegisterBlockInfo::SetIsProtocolBigEndian(bool newIsProtocolBigEndian)
{
    isProtocolBigEndian.store(newIsProtocolBigEndian, std::memory_order_relaxed);
}

uint16 ProtocolRegisterBlockInfo::InstanceCount() const
{
    return instanceCount.Get();
}

bool ProtocolRegisterBlockInfo::AtMaxInstance() const
{
    return instanceCount.Get() >= maxInstanceCount.Get();
}

bool ProtocolRegisterBlockInfo::AtMinInstance() const
{
    return instanceCount.Get() <= minInstanceCount.Get();
}

void ProtocolRegisterBlockInfo::IncrementInstanceCount()
{
    instanceCount.Set(static_cast<uint16>(instanceCount.Get() + 1));
}

void ProtocolRegisterBlockInfo::DecrementInstanceCount()
{
    instanceCount.Set(static_cast<uint16>(instanceCount.Get() - 1));
}

void ProtocolRegisterBlockInfo::ResetInstanceCount()
{
    instanceCount.Set(0);
}

std::shared_ptr<ProtocolRegisterBlock> ProtocolRegisterBlockInfo::ConstructBlock(RegisterBlockParams const& params)
{
    if (factory == nullptr)
    {
        ZU_THROW(Zu::Status::WRONG_STATE);
    }
    std::shared_ptr<ProtocolRegisterBlock> block = factory->Construct(params, *this);
    if (block == nullptr)
    {
        ZU_THROW(Zu::Status::WRONG_STATE);
    }
    return block;
}

void ProtocolRegisterBlockInfo::CountChangesIn(PlacementChanges& newChanges)
{
    changes = &newChanges;
}

void ProtocolRegisterBlockInfo::NotePlacementChange()
{
    if (changes != nullptr)
    {
        changes->all.fetch_add(1, std::memory_order_release);
    }
}

RegisterBlockCategory ProtocolRegisterBlockInfo::Category() const
{
    return category.Get();
}

void ProtocolRegisterBlockInfo::RegisterMembers()
{
    Register("type", "Type", type).EnableReadOnly().readOnly.Set(true);
    Register("displayName", "Display Name", displayName).EnableReadOnly().readOnly.Set(true);
    Register("category", "Block Category", category).EnableReadOnly().readOnly.Set(true);
    Register("registerCount", "Number of Registers", registerCount).EnableReadOnly().readOnly.Set(true);
    Register("instanceCount", "Number of Instances", instanceCount).EnableReadOnly().readOnly.Set(true);
    Register("minInstanceCount", "Minimum Number of Instances", minInstanceCount).EnableReadOnly().readOnly.Set(true);
    Register("maxInstanceCount", "Maximum Number of Instances", maxInstanceCount).EnableReadOnly().readOnly.Set(true);
    Register("hasDataSource", "Register Block Has Scan Output Data Source", hasDataSource)
        .EnableReadOnly()
        .readOnly.Set(true);
    for (Zu::Params::Value<uint16>* const number :
         {&registerCount, &instanceCount, &minInstanceCount, &maxInstanceCount})
    {
        number->EnableMinimum(true).SetMinimum(0);
    }
}

} // namespace ZuControl::ControlProtocol
