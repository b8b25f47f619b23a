#include "ZuControl/ControlProtocol/PlannedAssembly.h"

#include "ZuApi/Exception.h"
#include "ZuApi/Params/Group.h"
#include "ZuControl/Control/IControlActionTarget.h"
#include "ZuControl/ControlProtocol/AssemblyLock.h"
#include "ZuControl/ControlProtocol/BlockOrder.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterAssemblyBase.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlock.h"
#include "ZuControl/ControlProtocol/RegisterBlockParams.h"
#include "ZuControl/ControlProtocol/RegisterRules.h"

#include <algorithm>
#include <utility>

namespace ZuControl::ControlProtocol
{

namespace
{

LayoutEntry EntryOf(ProtocolRegisterBlock const& block)
{
    LayoutEntry entry;
    entry.outputId = block.OutputId();
    entry.registers = block.RegisterCount();
    entry.type = block.Type();
    entry.source = block.HasDataSource() ? block.DataSource() : std::string();
    entry.scannerId = block.ScannerId();
    entry.displayName = block.DisplayName();
    return entry;
}

/// An assembly without its entries.
Layout FrameOf(IProtocolRegisterAssembly& assembly)
{
    Layout layout;
    layout.kind = Layout::Kind::BLOCKS;
    layout.id = assembly.Id();
    if (auto const* const attributes = dynamic_cast<RegisterAssemblyAttributes const*>(&assembly.Attributes()))
    {
        layout.isAddressed = attributes->isGlobalAddressSpaceUsed.Get();
        layout.first = attributes->outputIdMin.Get();
        layout.last = attributes->outputIdMax.Get();
    }
    return layout;
}

} // namespace

PlannedAssembly::PlannedAssembly(IProtocolRegisterAssembly& assembly, IControlActionTarget const* usedTarget)
    : target(usedTarget), original(FrameOf(assembly))
{
    AssemblyLock const lock(assembly);
    for (auto const& type : assembly.SupportedRegisterBlockTypes())
    {
        types.emplace_back(*type);
    }
    uint64 index = 0;
    for (auto const& block : assembly.AddedRegisterBlocks())
    {
        LayoutEntry entry = EntryOf(*block);
        entry.origin = index++;
        PlannedType* const type = FindSupportedType(entry.type);
        if (type == nullptr) // in an assembly of another class
        {
            ZU_THROW(Zu::Status::NOT_SUPPORTED);
        }
        blocks.emplace_back(*type, std::move(entry));
        if (auto const* const ordered = type->IsOrdered() ? dynamic_cast<IOrderedBlock const*>(block.get()) : nullptr)
        {
            blocks.back().SetOwnOrder(ordered->OwnOrder());
        }
        placement.Insert(placement.End(), &blocks.back());
    }
}

PlannedAssembly::~PlannedAssembly() = default;

std::shared_ptr<Zu::Params::Group> PlannedAssembly::ActionParams(std::string const& actionId) const
{
    auto params = ProtocolRegisterAssemblyActionTarget::MakeParams(actionId);
    if (params == nullptr)
    {
        ZU_THROW(Zu::Status::NOT_FOUND); // without the log line of the action target
    }
    return target != nullptr ? target->GetActionParams(actionId) : params;
}

void PlannedAssembly::InvokeAction(std::string const& actionId, Zu::Params::Group const& params)
{
    CallAssemblyAction(*this, actionId, params);
}

Layout PlannedAssembly::Read() const
{
    Layout layout = original;
    layout.entries.reserve(placement.Blocks().size());
    for (PlannedBlock const* const block : placement.Blocks())
    {
        LayoutEntry& entry = layout.entries.emplace_back(block->Entry());
        entry.registers = block->RegisterCount();
        entry.bytesPerRegister = block->BytesPerRegister();
        BlockOrder const order = block->Order();
        entry.isBigEndian = order.isBigEndian;
        entry.areBytesSwapped = order.areBytesSwapped;
    }
    return layout;
}

void PlannedAssembly::Add(Zu::Params::Group& params)
{
    RegisterRules::Add(*this, dynamic_cast<AddBlockParams&>(params));
}

void PlannedAssembly::Remove(Zu::Params::Group const& params)
{
    RegisterRules::Remove(*this, dynamic_cast<RemoveBlockParams const&>(params));
}

void PlannedAssembly::Compact(Zu::Params::Group const& params)
{
    RegisterRules::Compact(*this, dynamic_cast<CompactBlocksParams const&>(params));
}

void PlannedAssembly::Update(Zu::Params::Group const& params)
{
    RegisterRules::Update(*this, dynamic_cast<UpdateBlockParams const&>(params));
}

template <typename Work>
auto PlannedAssembly::Locked(Work const& work)
{
    return work(); // one thread has the plan
}

void PlannedAssembly::Refuse(uint64 entry, Zu::Exception const& exception)
{
    notes.entry = entry;
    notes.Add(exception.Status(), exception.what());
}

PlannedBlock* PlannedAssembly::MakeBlock(PlannedType& type, RegisterBlockParams const& params)
{
    LayoutEntry entry;
    entry.outputId = params.outputId.Get();
    entry.type = type.Type();
    entry.source = type.HasDataSource() ? params.dataSource.Get() : std::string();
    entry.scannerId = params.scannerId.Get();
    entry.displayName = params.displayName.Get();
    return &blocks.emplace_back(type, std::move(entry));
}

PlannedType* PlannedAssembly::FindSupportedType(std::string const& type)
{
    auto const found = std::ranges::find(types, type, &PlannedType::Type);
    return found != types.end() ? &*found : nullptr;
}

void PlannedAssembly::FormatBlockParams(PlannedType* type, RegisterBlockParams& params, uint16& endAddress)
{
    RegisterRules::FormatBlockParams(*this, *type, params, endAddress);
}

PlannedAssembly::Position PlannedAssembly::GetInsertPosition(uint16 startId, uint16 endId, bool autoShift,
                                                             uint16 excludedOutputId)
{
    return RegisterRules::GetInsertPosition(*this, startId, endId, autoShift, excludedOutputId);
}

void PlannedAssembly::ShiftRegisterAddresses(Position position, uint16 startId, uint16 endId, uint16 excludedOutputId)
{
    RegisterRules::ShiftRegisterAddresses(*this, position, startId, endId, excludedOutputId);
}

bool PlannedAssembly::IsBlockOverlapping(uint16 startId, uint16 endId, PlannedBlock const* block)
{
    return Placement::IsOverlapping(startId, endId, *block);
}

bool PlannedAssembly::IsValidOutputId(uint16 id, uint16 registerCount) const
{
    return RegisterRules::IsValidOutputId(*this, id, registerCount);
}

uint16 PlannedAssembly::GetNextRegisterBlockOutputId()
{
    return RegisterRules::GetNextRegisterBlockOutputId(*this);
}

uint16 PlannedAssembly::UsedRegistersCount(Position position)
{
    return placement.UsedRegisters(position);
}

void PlannedAssembly::UpdateBlockProperties(Position position, UpdateBlockParams const& params)
{
    RegisterRules::UpdateBlockProperties(*this, position, params);
}

uint16 PlannedAssembly::UsedRegisterCount()
{
    RefreshPlacement();
    return placement.UsedRegisters(placement.Begin());
}

void PlannedAssembly::RefreshPlacement()
{
    placement.Refresh(placement.KnownChangeCount()); // nothing but the placement changes the records
}

void PlannedAssembly::AddToUsedRegisters(int32 /*registers*/)
{
}

void PlannedAssembly::NoteChange()
{
}

bool PlannedAssembly::IsGlobal() const
{
    return original.isAddressed;
}

uint16 PlannedAssembly::OutputIdMin() const
{
    return static_cast<uint16>(original.first);
}

uint16 PlannedAssembly::OutputIdMax() const
{
    return static_cast<uint16>(original.last);
}

Layout ReadLayout(IProtocolRegisterAssembly& assembly)
{
    return PlannedAssembly(assembly).Read();
}

} // namespace ZuControl::ControlProtocol
