// The steps of ProtocolRegisterAssemblyBase that add, remove, change and place one block.

#include "ZuControl/ControlProtocol/ProtocolRegisterAssemblyBase.h"

#include "ZuApi/Exception.h"
#include "ZuApi/Threads/Locker.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlockInfo.h"
#include "ZuControl/ControlProtocol/RegisterBlockParams.h"

namespace ZuControl::ControlProtocol
{

namespace
{

/// The last id of a block, in 32 bits. It is below the first id only for a type without registers.
uint32 LastIdOf(uint16 firstId, uint16 registerCount)
{
    return uint32{firstId} - 1 + registerCount;
}

} // namespace

void ProtocolRegisterAssemblyBase::AddBlock(RegisterBlockParams& params, bool autoShift)
{
    if (params.type.Get().empty())
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT,
                 "Cannot add block. Register block type must be specified in order to add a register block.");
    }
    Zu::Locker const guard(lock);
    ProtocolRegisterBlockInfo* const info = FindSupportedType(params.type.Get());
    if (info == nullptr)
    {
        ZU_THROW(Zu::Status::NOT_FOUND,
                 "Cannot add block. The type or size of the %1$s block is incompatible with this protocol.",
                 params.type.Get().c_str());
    }
    if (info->AtMaxInstance())
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT,
                 "Cannot add block. The maximum number of blocks of block type %1$s have already been added.",
                 info->Type().c_str());
    }
    RefreshPlacement();
    uint16 endAddress = 0;
    FormatBlockParams(info, params, endAddress);
    Position const position =
        GetInsertPosition(params.outputId.Get(), endAddress, autoShift, RegisterPlacement::NOTHING_EXCLUDED);
    std::shared_ptr<ProtocolRegisterBlock> const block = info->ConstructBlock(params);
    placement.Insert(position, block);
    info->IncrementInstanceCount();
    AddToUsedRegisters(block->RegisterCount());
    NoteChange();
}

void ProtocolRegisterAssemblyBase::RemoveBlock(uint16 outputId)
{
    if (outputId > LAST_VALID_OUTPUT_ID)
    {
        ZU_THROW(
            Zu::Status::BAD_ARGUMENT,
            "Cannot remove block. Register block output id must be specified in order to remove a register block.");
    }
    {
        Zu::Locker const guard(lock);
        RefreshPlacement();
        Position const position = placement.Find(outputId);
        if (position != placement.End())
        {
            std::shared_ptr<ProtocolRegisterBlock> const block = *position;
            if (block->AtMinInstance())
            {
                ZU_THROW(Zu::Status::BAD_ARGUMENT,
                         "Cannot remove block with output id %1$u. The minimum number of instances of this block type "
                         "exist in the register assembly.",
                         unsigned{outputId});
            }
            placement.Erase(position);
            block->DecrementInstanceCount();
            AddToUsedRegisters(-block->RegisterCount());
            NoteChange();
            return;
        }
    }
    ZU_THROW(Zu::Status::NOT_FOUND, "Cannot remove block. There are no register blocks with output id %1$u.",
             unsigned{outputId});
}

ProtocolRegisterBlockInfo* ProtocolRegisterAssemblyBase::FindSupportedType(std::string const& type)
{
    for (auto const& supported : supportedTypes)
    {
        if (supported->Type() == type)
        {
            return supported.get();
        }
    }
    return nullptr;
}

void ProtocolRegisterAssemblyBase::FormatBlockParams(ProtocolRegisterBlockInfo* info, RegisterBlockParams& params,
                                                     uint16& endAddress)
{
    if (info->HasDataSource() && params.dataSource.Get().empty())
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "Cannot add block. A data source is required for block type %1$s.",
                 info->Type().c_str());
    }
    if (params.displayName.Get().empty())
    {
        params.displayName.Set(info->DisplayName());
    }
    if (params.outputId.Get() > LAST_VALID_OUTPUT_ID)
    {
        params.outputId.Set(GetNextRegisterBlockOutputId());
    }
    uint16 const id = params.outputId.Get();
    if (!IsGlobal())
    {
        endAddress = id;
        return;
    }
    uint16 const registerCount = info->RegisterCount();
    if (!IsValidOutputId(id, registerCount))
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT,
                 "Cannot add block %1$s because the block output id range [%2$u, %3$u] lies outside the valid output "
                 "id range [%4$u, %5$u].",
                 info->Type().c_str(), unsigned{id}, LastIdOf(id, registerCount), unsigned{OutputIdMin()},
                 unsigned{OutputIdMax()});
    }
    endAddress = static_cast<uint16>(LastIdOf(id, registerCount));
}

ProtocolRegisterAssemblyBase::Position
ProtocolRegisterAssemblyBase::GetInsertPosition(uint16 startId, uint16 endId, bool autoShift, uint16 excludedOutputId)
{
    Position const position = placement.FindInsertPosition(startId, endId, excludedOutputId);
    if (position == placement.End() || !IsBlockOverlapping(startId, endId, *position))
    {
        return position;
    }
    ProtocolRegisterBlock const& block = **position;
    if (autoShift)
    {
        ShiftRegisterAddresses(position, startId, endId, excludedOutputId);
        return position;
    }
    if (startId == endId)
    {
        ZU_THROW(Zu::Status::ID_CONFLICT,
                 "The block output id %1$u conflicts with the output id %2$u of an existing block: %3$s.",
                 unsigned{startId}, unsigned{block.OutputId()}, block.DisplayName().c_str());
    }
    ZU_THROW(Zu::Status::ID_CONFLICT,
             "The block output id range [%1$u - %2$u] overlaps with the output id range [%3$u - %4$u] of an existing "
             "block: %5$s.",
             unsigned{startId}, unsigned{endId}, unsigned{block.OutputId()}, unsigned{block.EndAddress()},
             block.DisplayName().c_str());
}

void ProtocolRegisterAssemblyBase::ShiftRegisterAddresses(Position position, uint16 startId, uint16 endId,
                                                          uint16 excludedOutputId)
{
    if (IsGlobal())
    {
        // Counts all registers of the blocks that may move, also those of the excluded block and those behind a gap.
        uint32 const needed = uint32{UsedRegistersCount(position)} + static_cast<uint16>(endId - startId + 1);
        if (needed > static_cast<uint16>(OutputIdMax() - startId + 1))
        {
            ZU_THROW(Zu::Status::FULL);
        }
    }
    placement.Shift(position, endId, excludedOutputId);
    NoteChange();
}

bool ProtocolRegisterAssemblyBase::IsBlockOverlapping(uint16 startId, uint16 endId,
                                                      std::shared_ptr<ProtocolRegisterBlock> block) const
{
    return RegisterPlacement::IsOverlapping(startId, endId, *block);
}

bool ProtocolRegisterAssemblyBase::IsValidOutputId(uint16 id, uint16 registerCount) const
{
    return id <= OutputIdMax() && int32{id} + registerCount - 1 <= OutputIdMax() && id >= OutputIdMin();
}

uint16 ProtocolRegisterAssemblyBase::GetNextRegisterBlockOutputId()
{
    if (!placement.Blocks().empty())
    {
        return static_cast<uint16>(placement.Blocks().back()->EndAddress() + 1);
    }
    return IsGlobal() ? OutputIdMin() : uint16{0};
}

uint16 ProtocolRegisterAssemblyBase::UsedRegistersCount(Position position)
{
    return placement.UsedRegisters(position);
}

bool ProtocolRegisterAssemblyBase::hasGap(Position position, uint16 startId, uint16 endId)
{
    return uint32{UsedRegistersCount(position)} + static_cast<uint16>(endId - startId + 1) <=
           static_cast<uint16>(OutputIdMax() - startId + 1);
}

void ProtocolRegisterAssemblyBase::UpdateBlockProperties(Position position, UpdateBlockParams const& params)
{
    std::shared_ptr<ProtocolRegisterBlock> const block = *position;
    UpdateBlockNewParams const& newParams = params.newParams;
    if (newParams.outputId.Get() < RegisterBlockParams::NO_OUTPUT_ID)
    {
        MoveBlock(position, newParams.outputId.Get(), params.autoShift.Get());
    }
    // An empty text leaves the field unchanged: an update cannot empty a field.
    if (!newParams.scannerId.Get().empty())
    {
        block->SetScannerId(newParams.scannerId.Get());
    }
    if (!newParams.displayName.Get().empty())
    {
        block->SetDisplayName(newParams.displayName.Get());
    }
    NoteChange();
    if (block->HasDataSource() && !newParams.dataSource.Get().empty())
    {
        block->SetDataSource(newParams.dataSource.Get());
        NoteChange();
    }
}

void ProtocolRegisterAssemblyBase::MoveBlock(Position position, uint16 newId, bool autoShift)
{
    ProtocolRegisterBlock const& block = **position;
    uint16 newEnd = newId;
    if (IsGlobal())
    {
        if (!IsValidOutputId(newId, block.RegisterCount()))
        {
            ZU_THROW(Zu::Status::BAD_ARGUMENT,
                     "Cannot update block %1$s because the block output id range [%2$u, %3$u] lies outside the valid "
                     "output id range [%4$u, %5$u].",
                     block.Type().c_str(), unsigned{newId}, LastIdOf(newId, block.RegisterCount()),
                     unsigned{OutputIdMin()}, unsigned{OutputIdMax()});
        }
        newEnd = static_cast<uint16>(LastIdOf(newId, block.RegisterCount()));
    }
    // The block itself is excluded, so that it does not conflict with its old place.
    Position const target = GetInsertPosition(newId, newEnd, autoShift, block.OutputId());
    placement.Move(position, target, newId);
}

void ProtocolRegisterAssemblyBase::CheckCompaction(uint16 startingOutputId)
{
    if (OutputIdMax() < startingOutputId || OutputIdMin() > startingOutputId)
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT,
                 "Cannot compact blocks. The requested output id %1$u cannot lie outside the valid output id range "
                 "[%2$u, %3$u].",
                 unsigned{startingOutputId}, unsigned{OutputIdMin()}, unsigned{OutputIdMax()});
    }
    uint16 const used = UsedRegisterCount();
    if (int32{OutputIdMax()} - startingOutputId + 1 < int32{used})
    {
        ZU_THROW(
            Zu::Status::FULL,
            "Cannot compact blocks. The requested output id range [%1$u, %2$u] cannot lie outside the valid output "
            "id range [%3$u, %4$u].",
            unsigned{startingOutputId}, LastIdOf(startingOutputId, used), unsigned{OutputIdMin()},
            unsigned{OutputIdMax()});
    }
}

} // namespace ZuControl::ControlProtocol
