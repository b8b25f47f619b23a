#include "ZuControl/ControlProtocol/ProtocolRegisterAssemblyBase.h"

#include "ZuApi/Exception.h"
#include "ZuApi/Logging.h"
#include "ZuApi/Threads/Locker.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlockInfo.h"
#include "ZuControl/ControlProtocol/RegisterBlockParams.h"

#include <iterator>
#include <unordered_set>
#include <utility>

namespace ZuControl::ControlProtocol
{

RegisterAssemblyAttributes::RegisterAssemblyAttributes() : Group("")
{
    Register("isGlobalAddressSpaceUsed", "Is Global Address Space Used", isGlobalAddressSpaceUsed)
        .EnableReadOnly()
        .readOnly.Set(true);
    Register("outputIdMin", "Minimum Output Id", outputIdMin)
        .EnableMinimum(true)
        .SetMinimum(0)
        .EnableReadOnly()
        .readOnly.Set(true);
    Register("outputIdMax", "Maximum Output Id", outputIdMax)
        .EnableMinimum(true)
        .SetMinimum(0)
        .EnableReadOnly()
        .readOnly.Set(true);
}

RegisterAssemblyAttributes::~RegisterAssemblyAttributes()
{
    for (char const* const key : {"isGlobalAddressSpaceUsed", "outputIdMin", "outputIdMax"})
    {
        Deregister(key);
    }
}

RegisterAssemblyProperties::RegisterAssemblyProperties() : Group("")
{
    Register("displayName", "Register Assembly display name", displayName).EnableReadOnly().readOnly.Set(true);
    Register("id", "Register Assembly Identifier", id).EnableReadOnly().readOnly.Set(true);
}

RegisterAssemblyProperties::~RegisterAssemblyProperties()
{
    for (char const* const key : {"displayName", "id"})
    {
        Deregister(key);
    }
}

ProtocolRegisterAssemblyBase::ProtocolRegisterAssemblyBase(bool isGlobalAddressSpaceUsed, uint16 outputIdMin,
                                                           uint16 outputIdMax, char const* id, std::string displayName)
{
    if (outputIdMin > outputIdMax || outputIdMax > LAST_VALID_OUTPUT_ID)
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT,
                 "Minimum output id value %1$u and/or maximum output id value %2$u are invalid.", unsigned{outputIdMin},
                 unsigned{outputIdMax});
    }
    if (id == nullptr || *id == '\0')
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "Invalid value for register assembly identifier.");
    }
    ZU_CHECK(wLock_Construct(&lock, nullptr));
    attributes.isGlobalAddressSpaceUsed.Set(isGlobalAddressSpaceUsed);
    attributes.outputIdMin.Set(outputIdMin);
    attributes.outputIdMax.Set(outputIdMax);
    properties.displayName.Set(displayName);
    properties.id.Set(id);
}

ProtocolRegisterAssemblyBase::~ProtocolRegisterAssemblyBase() = default;

void ProtocolRegisterAssemblyBase::BeginLock()
{
    ZU_CHECK(wLock_Enter(lock));
    lockHeld.store(true, std::memory_order_relaxed);
}

void ProtocolRegisterAssemblyBase::EndLock()
{
    lockHeld.store(false, std::memory_order_relaxed); // before the exit, which lets the next holder set it
    ZU_CHECK(wLock_Exit(lock));
}

void ProtocolRegisterAssemblyBase::AddSupportedBlockType(std::unique_ptr<ProtocolRegisterBlockInfo> info)
{
    if (info == nullptr)
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT);
    }
    Zu::Locker const guard(lock);
    if (FindSupportedType(info->Type()) != nullptr)
    {
        ZU_THROW(Zu::Status::ALREADY_EXISTS, "This register block type is already supported.");
    }
    info->SetIsGlobalAddressSpaceUsed(IsGlobal());
    info->CountChangesIn(placementChanges);
    supportedTypes.push_back(std::move(info));
}

void ProtocolRegisterAssemblyBase::ResetRegisterAssembly()
{
    Zu::Locker const guard(lock);
    placement.Clear();
    for (auto const& type : supportedTypes)
    {
        type->ResetInstanceCount();
    }
    usedRegisterCount.store(0, std::memory_order_relaxed);
    NoteChange();
}

void ProtocolRegisterAssemblyBase::InitDefaultRegisterBlocksForRegisterAssembly()
{
    AddBlockParams params;
    ResetRegisterAssembly();

    Zu::Locker const guard(lock);
    for (auto const& type : supportedTypes)
    {
        if (type->MinInstanceCount() != 0)
        {
            params.blocks.Add().type.Set(type->Type()); // one block, also when the minimum is above one
        }
    }
    if (params.blocks.Count() > 0)
    {
        Add(params);
    }
}

std::vector<std::unique_ptr<ProtocolRegisterBlockInfo>> const&
ProtocolRegisterAssemblyBase::SupportedRegisterBlockTypes()
{
    if (!lockHeld.load(std::memory_order_relaxed))
    {
        ZU_THROW(Zu::Status::WRONG_STATE);
    }
    return supportedTypes;
}

std::list<std::shared_ptr<ProtocolRegisterBlock>> const& ProtocolRegisterAssemblyBase::AddedRegisterBlocks()
{
    if (!lockHeld.load(std::memory_order_relaxed))
    {
        ZU_THROW(Zu::Status::WRONG_STATE);
    }
    return placement.Blocks();
}

std::list<std::shared_ptr<ProtocolRegisterBlock>> const
ProtocolRegisterAssemblyBase::FindAddedBlocksOfTypes(std::list<std::string> types)
{
    std::unordered_set<std::string> const wanted(types.begin(), types.end());
    BlockList found;
    Zu::Locker const guard(lock);
    for (auto const& block : placement.Blocks())
    {
        if (wanted.contains(block->Type()))
        {
            found.push_back(block);
        }
    }
    return found;
}

std::map<std::string, std::shared_ptr<ProtocolRegisterBlock>> const
ProtocolRegisterAssemblyBase::FindAddedScanOutputBlocksSortedByDataSource()
{
    std::map<std::string, std::shared_ptr<ProtocolRegisterBlock>> found;
    Zu::Locker const guard(lock);
    for (auto const& block : placement.Blocks())
    {
        if (block->HasDataSource())
        {
            found.try_emplace(block->DataSource(), block); // of two blocks the first in the list stays
        }
    }
    return found;
}

Zu::Params::Group const& ProtocolRegisterAssemblyBase::Attributes()
{
    return attributes;
}

Zu::Params::Group const& ProtocolRegisterAssemblyBase::Properties()
{
    return properties;
}

std::vector<std::string> ProtocolRegisterAssemblyBase::DataSourceList() const
{
    std::vector<std::string> sources;
    Zu::Locker const guard(lock);
    for (auto const& block : placement.Blocks())
    {
        if (block->HasDataSource())
        {
            sources.push_back(block->DataSource());
        }
    }
    return sources;
}

char const* ProtocolRegisterAssemblyBase::Id() const
{
    return properties.id.Get().c_str();
}

void ProtocolRegisterAssemblyBase::ChangeBigEndianSupportedBlocks(bool isProtocolBigEndian)
{
    Zu::Locker const guard(lock);
    for (auto const& type : supportedTypes)
    {
        type->SetIsProtocolBigEndian(isProtocolBigEndian);
    }
    NoteChange();
}

uint64 ProtocolRegisterAssemblyBase::ChangeCount() const
{
    return changeCount.load(std::memory_order_acquire) + placementChanges.all.load(std::memory_order_acquire);
}

/// Takes the lock only when a register count has changed since the last count.
uint16 ProtocolRegisterAssemblyBase::UsedRegisterCount()
{
    if (placementChanges.registerCounts.load(std::memory_order_acquire) !=
        countedAtChange.load(std::memory_order_acquire))
    {
        Zu::Locker const guard(lock);
        RefreshPlacement();
    }
    return usedRegisterCount.load(std::memory_order_relaxed);
}

void ProtocolRegisterAssemblyBase::RefreshPlacement()
{
    uint64 const registerCountChanges = placementChanges.registerCounts.load(std::memory_order_acquire);
    placement.Refresh(placementChanges.all.load(std::memory_order_acquire));
    if (registerCountChanges != countedAtChange.load(std::memory_order_relaxed))
    {
        usedRegisterCount.store(UsedRegistersCount(placement.Begin()), std::memory_order_relaxed);
        countedAtChange.store(registerCountChanges, std::memory_order_release);
    }
}

void ProtocolRegisterAssemblyBase::AddToUsedRegisters(int32 registers)
{
    uint16 const used = usedRegisterCount.load(std::memory_order_relaxed); // written under the lock alone
    usedRegisterCount.store(static_cast<uint16>(used + registers), std::memory_order_relaxed);
}

void ProtocolRegisterAssemblyBase::NoteChange()
{
    changeCount.fetch_add(1, std::memory_order_release);
}

bool ProtocolRegisterAssemblyBase::IsGlobal() const
{
    return attributes.isGlobalAddressSpaceUsed.Get();
}

uint16 ProtocolRegisterAssemblyBase::OutputIdMin() const
{
    return attributes.outputIdMin.Get();
}

uint16 ProtocolRegisterAssemblyBase::OutputIdMax() const
{
    return attributes.outputIdMax.Get();
}

} // namespace ZuControl::ControlProtocol
