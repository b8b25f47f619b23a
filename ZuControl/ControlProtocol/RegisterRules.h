#pragma once

#include "ZuApi/Exception.h"
#include "ZuControl/ControlProtocol/BlockOrder.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterAssemblyActionTarget.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlock.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlockInfo.h"
#include "ZuControl/ControlProtocol/RegisterBlockParams.h"
#include "ZuControl/ControlProtocol/RegisterPlacement.h"
#include "wApi/wMutex.h"
#include "wApi/wTypes.h"

#include <iterator>
#include <string>

namespace ZuControl::ControlProtocol
{

/// The rules by which a register assembly takes changes: what it refuses, and which blocks it moves.
///
/// An `Assembly` is a register assembly, or the plan of one in a preview: the rules are the same for both. It has the
/// steps that the rules call, a `placement` of its blocks, and:
/// `Locked(work)` runs work under the assembly's lock, `Refuse(exception)` takes the refusal of one entry in a list,
/// `MakeBlock(type, params)` makes a block that is not yet placed.
/// The thread-safety analysis cannot know that `Locked` holds the lock of an assembly that has one.
struct RegisterRules final
{
    static constexpr uint16 LAST_VALID_OUTPUT_ID = 65534;

    template <typename Assembly>
    static void Add(Assembly& assembly, AddBlockParams& params)
    {
        uint64 const count = params.blocks.Count();
        uint64 const added = ForEach(
            assembly, count, [&](uint64 i) { AddBlock(assembly, params.blocks.At(i), params.autoShift.Get()); });
        if (count > 0 && added == 0)
        {
            ZU_THROW(Zu::Status::FAILURE, "No register blocks were added.");
        }
    }

    template <typename Assembly>
    static void Remove(Assembly& assembly, RemoveBlockParams const& params)
    {
        uint64 const count = params.outputIdList.Count();
        uint64 const removed = ForEach(
            assembly, count, [&](uint64 i) { RemoveBlock(assembly, params.outputIdList.At(i).outputId.Get()); });
        if (count > 0 && removed == 0)
        {
            ZU_THROW(Zu::Status::FAILURE, "No register blocks were removed.");
        }
    }

    template <typename Assembly>
    static void Compact(Assembly& assembly, CompactBlocksParams const& params)
    {
        uint16 const startingOutputId = params.startingOutputId.Get();
        bool const isStartGiven = startingOutputId <= LAST_VALID_OUTPUT_ID;
        bool const isChecked = isStartGiven && assembly.IsGlobal();
        if (isChecked)
        {
            CheckCompaction(assembly, startingOutputId); // a refusal does not wait for the lock
        }
        uint16 const defaultStart = assembly.IsGlobal() ? assembly.OutputIdMin() : uint16{0};
        assembly.Locked([&]() ZU_NO_THREAD_SAFETY_ANALYSIS {
            if (isChecked)
            {
                CheckCompaction(assembly, startingOutputId); // again: another thread may have added a block in between
            }
            assembly.placement.Compact(isStartGiven ? startingOutputId : defaultStart);
            assembly.NoteChange();
        });
    }

    template <typename Assembly>
    static void Update(Assembly& assembly, UpdateBlockParams const& params)
    {
        uint16 const outputId = params.outputId.Get();
        if (outputId > LAST_VALID_OUTPUT_ID)
        {
            ZU_THROW(Zu::Status::BAD_ARGUMENT,
                     "Register output id must be specified in order to update a register block.");
        }
        bool const isFound = assembly.Locked([&]() ZU_NO_THREAD_SAFETY_ANALYSIS {
            assembly.RefreshPlacement();
            auto const position = assembly.placement.Find(outputId);
            if (position == assembly.placement.End())
            {
                return false;
            }
            assembly.UpdateBlockProperties(position, params);
            return true;
        });
        if (!isFound)
        {
            ZU_THROW(Zu::Status::NOT_FOUND, "There are no register blocks with output id %1$u.", unsigned{outputId});
        }
    }

    template <typename Assembly, typename Type>
    static void FormatBlockParams(Assembly& assembly, Type& type, RegisterBlockParams& params,
                                  uint16& endAddress) ZU_NO_THREAD_SAFETY_ANALYSIS
    {
        if (type.HasDataSource() && params.dataSource.Get().empty())
        {
            ZU_THROW(Zu::Status::BAD_ARGUMENT, "Cannot add block. A data source is required for block type %1$s.",
                     type.Type().c_str());
        }
        if (params.displayName.Get().empty())
        {
            params.displayName.Set(type.DisplayName());
        }
        if (params.outputId.Get() > LAST_VALID_OUTPUT_ID)
        {
            params.outputId.Set(assembly.GetNextRegisterBlockOutputId());
        }
        uint16 const id = params.outputId.Get();
        if (!assembly.IsGlobal())
        {
            endAddress = id;
            return;
        }
        uint16 const registerCount = type.RegisterCount();
        if (!assembly.IsValidOutputId(id, registerCount))
        {
            ZU_THROW(Zu::Status::BAD_ARGUMENT,
                     "Cannot add block %1$s because the block output id range [%2$u, %3$u] lies outside the valid "
                     "output id range [%4$u, %5$u].",
                     type.Type().c_str(), unsigned{id}, LastIdOf(id, registerCount), unsigned{assembly.OutputIdMin()},
                     unsigned{assembly.OutputIdMax()});
        }
        endAddress = static_cast<uint16>(LastIdOf(id, registerCount));
    }

    template <typename Assembly>
    static auto GetInsertPosition(Assembly& assembly, uint16 startId, uint16 endId, bool autoShift,
                                  uint16 excludedOutputId) ZU_NO_THREAD_SAFETY_ANALYSIS
    {
        auto const position = assembly.placement.FindInsertPosition(startId, endId, excludedOutputId);
        if (position == assembly.placement.End() || !assembly.IsBlockOverlapping(startId, endId, *position))
        {
            return position;
        }
        auto const& block = **position;
        if (autoShift)
        {
            assembly.ShiftRegisterAddresses(position, startId, endId, excludedOutputId);
            return position;
        }
        if (startId == endId)
        {
            ZU_THROW(Zu::Status::ID_CONFLICT,
                     "The block output id %1$u conflicts with the output id %2$u of an existing block: %3$s.",
                     unsigned{startId}, unsigned{block.OutputId()}, block.DisplayName().c_str());
        }
        ZU_THROW(Zu::Status::ID_CONFLICT,
                 "The block output id range [%1$u - %2$u] overlaps with the output id range [%3$u - %4$u] of an "
                 "existing block: %5$s.",
                 unsigned{startId}, unsigned{endId}, unsigned{block.OutputId()}, unsigned{block.EndAddress()},
                 block.DisplayName().c_str());
    }

    template <typename Assembly, typename Position>
    static void ShiftRegisterAddresses(Assembly& assembly, Position position, uint16 startId, uint16 endId,
                                       uint16 excludedOutputId) ZU_NO_THREAD_SAFETY_ANALYSIS
    {
        if (assembly.IsGlobal())
        {
            // Counts all registers of the blocks that may move, also those of the excluded block and those behind a
            // gap.
            uint32 const needed =
                uint32{assembly.UsedRegistersCount(position)} + static_cast<uint16>(endId - startId + 1);
            if (needed > static_cast<uint16>(assembly.OutputIdMax() - startId + 1))
            {
                ZU_THROW(Zu::Status::FULL);
            }
        }
        assembly.placement.Shift(position, endId, excludedOutputId);
        assembly.NoteChange();
    }

    template <typename Assembly>
    static bool IsValidOutputId(Assembly const& assembly, uint16 id, uint16 registerCount)
    {
        return id <= assembly.OutputIdMax() && int32{id} + registerCount - 1 <= assembly.OutputIdMax() &&
               id >= assembly.OutputIdMin();
    }

    template <typename Assembly>
    static uint16 GetNextRegisterBlockOutputId(Assembly& assembly) ZU_NO_THREAD_SAFETY_ANALYSIS
    {
        if (!assembly.placement.Blocks().empty())
        {
            return static_cast<uint16>(assembly.placement.Blocks().back()->EndAddress() + 1);
        }
        return assembly.IsGlobal() ? assembly.OutputIdMin() : uint16{0};
    }

    template <typename Assembly, typename Position>
    static void UpdateBlockProperties(Assembly& assembly, Position position, UpdateBlockParams const& params)
    {
        auto const block = *position;
        UpdateBlockNewParams const& newParams = params.newParams;
        ChosenOrder const chosen = ReadChoice(dynamic_cast<IOrderChoice const*>(&params));
        CheckChoice(chosen, *block);
        if (newParams.outputId.Get() < RegisterBlockParams::NO_OUTPUT_ID)
        {
            MoveBlock(assembly, position, newParams.outputId.Get(), params.autoShift.Get());
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
        SetOrder(*block, chosen);
        assembly.NoteChange();
        if (block->HasDataSource() && !newParams.dataSource.Get().empty())
        {
            block->SetDataSource(newParams.dataSource.Get());
            assembly.NoteChange();
        }
    }

private:
    static bool IsOrdered(ProtocolRegisterBlock const& block)
    {
        return dynamic_cast<IOrderedBlock const*>(&block) != nullptr;
    }

    static bool IsOrdered(ProtocolRegisterBlockInfo const& type)
    {
        return dynamic_cast<IOrderedBlockType const*>(&type) != nullptr;
    }

    template <typename Planned>
    static bool IsOrdered(Planned const& planned)
    {
        return planned.IsOrdered();
    }

    /// `subject` is a block or a type.
    template <typename Subject>
    static void CheckChoice(ChosenOrder const& chosen, Subject const& subject)
    {
        if (chosen.isChosen && !IsOrdered(subject))
        {
            ZU_THROW(Zu::Status::BAD_ARGUMENT, "Blocks of type %1$s have no order of their own.",
                     subject.Type().c_str());
        }
    }

    static void SetOrder(ProtocolRegisterBlock& block, ChosenOrder const& chosen)
    {
        if (chosen.isChosen)
        {
            dynamic_cast<IOrderedBlock&>(block).SetOwnOrder(chosen.order);
        }
    }

    template <typename Planned>
    static void SetOrder(Planned& planned, ChosenOrder const& chosen)
    {
        if (chosen.isChosen)
        {
            planned.SetOwnOrder(chosen.order);
        }
    }

    /// The last id of a block, in 32 bits. It is below the first id only for a type without registers.
    static uint32 LastIdOf(uint16 firstId, uint16 registerCount)
    {
        return uint32{firstId} - 1 + registerCount;
    }

    /// Takes each entry of a list by itself. Returns how many are not refused, in 16 bits.
    template <typename Assembly, typename Step>
    static uint16 ForEach(Assembly& assembly, uint64 count, Step const& step)
    {
        uint16 done = 0;
        for (uint64 i = 0; i < count; ++i)
        {
            try
            {
                step(i);
                ++done;
            }
            catch (Zu::Exception const& exception)
            {
                assembly.Refuse(i, exception);
            }
        }
        return done;
    }

    template <typename Assembly>
    static void AddBlock(Assembly& assembly, RegisterBlockParams& params, bool autoShift)
    {
        if (params.type.Get().empty())
        {
            ZU_THROW(Zu::Status::BAD_ARGUMENT,
                     "Cannot add block. Register block type must be specified in order to add a register block.");
        }
        assembly.Locked([&]() ZU_NO_THREAD_SAFETY_ANALYSIS { PlaceBlock(assembly, params, autoShift); });
    }

    template <typename Assembly>
    static void PlaceBlock(Assembly& assembly, RegisterBlockParams& params, bool autoShift) ZU_NO_THREAD_SAFETY_ANALYSIS
    {
        auto* const type = assembly.FindSupportedType(params.type.Get());
        if (type == nullptr)
        {
            ZU_THROW(Zu::Status::NOT_FOUND,
                     "Cannot add block. The type or size of the %1$s block is incompatible with this protocol.",
                     params.type.Get().c_str());
        }
        if (type->AtMaxInstance())
        {
            ZU_THROW(Zu::Status::BAD_ARGUMENT,
                     "Cannot add block. The maximum number of blocks of block type %1$s have already been added.",
                     type->Type().c_str());
        }
        assembly.RefreshPlacement();
        uint16 endAddress = 0;
        assembly.FormatBlockParams(type, params, endAddress);
        ChosenOrder const chosen = ReadChoice(dynamic_cast<IOrderChoice const*>(&params));
        CheckChoice(chosen, *type);
        auto const position =
            assembly.GetInsertPosition(params.outputId.Get(), endAddress, autoShift, NOTHING_EXCLUDED);
        auto const block = assembly.MakeBlock(*type, params);
        SetOrder(*block, chosen);
        assembly.placement.Insert(position, block);
        type->IncrementInstanceCount();
        assembly.AddToUsedRegisters(block->RegisterCount());
        assembly.NoteChange();
    }

    template <typename Assembly>
    static void RemoveBlock(Assembly& assembly, uint16 outputId)
    {
        if (outputId > LAST_VALID_OUTPUT_ID)
        {
            ZU_THROW(
                Zu::Status::BAD_ARGUMENT,
                "Cannot remove block. Register block output id must be specified in order to remove a register block.");
        }
        bool const isFound =
            assembly.Locked([&]() ZU_NO_THREAD_SAFETY_ANALYSIS { return TakeOut(assembly, outputId); });
        if (!isFound)
        {
            ZU_THROW(Zu::Status::NOT_FOUND, "Cannot remove block. There are no register blocks with output id %1$u.",
                     unsigned{outputId});
        }
    }

    template <typename Assembly>
    static bool TakeOut(Assembly& assembly, uint16 outputId) ZU_NO_THREAD_SAFETY_ANALYSIS
    {
        assembly.RefreshPlacement();
        auto const position = assembly.placement.Find(outputId);
        if (position == assembly.placement.End())
        {
            return false;
        }
        auto const block = *position;
        if (block->AtMinInstance())
        {
            ZU_THROW(Zu::Status::BAD_ARGUMENT,
                     "Cannot remove block with output id %1$u. The minimum number of instances of this block type "
                     "exist in the register assembly.",
                     unsigned{outputId});
        }
        assembly.placement.Erase(position);
        block->DecrementInstanceCount();
        assembly.AddToUsedRegisters(-block->RegisterCount());
        assembly.NoteChange();
        return true;
    }

    template <typename Assembly, typename Position>
    static void MoveBlock(Assembly& assembly, Position position, uint16 newId,
                          bool autoShift) ZU_NO_THREAD_SAFETY_ANALYSIS
    {
        auto const& block = **position;
        uint16 newEnd = newId;
        if (assembly.IsGlobal())
        {
            if (!assembly.IsValidOutputId(newId, block.RegisterCount()))
            {
                ZU_THROW(Zu::Status::BAD_ARGUMENT,
                         "Cannot update block %1$s because the block output id range [%2$u, %3$u] lies outside the "
                         "valid output id range [%4$u, %5$u].",
                         block.Type().c_str(), unsigned{newId}, LastIdOf(newId, block.RegisterCount()),
                         unsigned{assembly.OutputIdMin()}, unsigned{assembly.OutputIdMax()});
            }
            newEnd = static_cast<uint16>(LastIdOf(newId, block.RegisterCount()));
        }
        // The block itself is excluded, so that it does not conflict with its old place.
        auto const target = assembly.GetInsertPosition(newId, newEnd, autoShift, block.OutputId());
        assembly.placement.Move(position, target, newId);
    }

    template <typename Assembly>
    static void CheckCompaction(Assembly& assembly, uint16 startingOutputId)
    {
        uint16 const first = assembly.OutputIdMin();
        uint16 const last = assembly.OutputIdMax();
        if (last < startingOutputId || first > startingOutputId)
        {
            ZU_THROW(Zu::Status::BAD_ARGUMENT,
                     "Cannot compact blocks. The requested output id %1$u cannot lie outside the valid output id range "
                     "[%2$u, %3$u].",
                     unsigned{startingOutputId}, unsigned{first}, unsigned{last});
        }
        uint16 const used = assembly.UsedRegisterCount();
        if (int32{last} - startingOutputId + 1 < int32{used})
        {
            ZU_THROW(Zu::Status::FULL,
                     "Cannot compact blocks. The requested output id range [%1$u, %2$u] cannot lie outside the valid "
                     "output id range [%3$u, %4$u].",
                     unsigned{startingOutputId}, LastIdOf(startingOutputId, used), unsigned{first}, unsigned{last});
        }
    }

    static constexpr uint16 NOTHING_EXCLUDED = 65535;
};

/// Calls the operation of an assembly that an action names. Throws `Zu::Status::NOT_FOUND`, no text, for an unknown one,
/// and std::bad_cast for a record of another class.
template <typename Operations>
void CallAssemblyAction(Operations& assembly, std::string const& actionId, Zu::Params::Group const& params)
{
    using Target = ProtocolRegisterAssemblyActionTarget;
    if (actionId == Target::REGISTER_ASSEMBLY_ACTION_ID_ADD)
    {
        // The caller's record receives the display names and output ids of its blocks. An argument record is never a
        // constant object; see IControlActionTarget.
        assembly.Add(const_cast<Zu::Params::Group&>(params));
    }
    else if (actionId == Target::REGISTER_ASSEMBLY_ACTION_ID_REMOVE)
    {
        assembly.Remove(params);
    }
    else if (actionId == Target::REGISTER_ASSEMBLY_ACTION_ID_COMPACT)
    {
        assembly.Compact(params);
    }
    else if (actionId == Target::REGISTER_ASSEMBLY_ACTION_ID_UPDATE)
    {
        assembly.Update(params);
    }
    else
    {
        ZU_THROW(Zu::Status::NOT_FOUND);
    }
}

} // namespace ZuControl::ControlProtocol
