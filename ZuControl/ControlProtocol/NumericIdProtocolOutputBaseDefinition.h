#pragma once

// The operations of NumericIdProtocolOutputBase, for the files that instantiate it.

#include "ZuControl/ControlProtocol/NumericIdProtocolOutputBase.h"
#include "ZuControl/ControlProtocol/ProtocolOutputBaseDefinition.h"

namespace ZuControl::ControlProtocol
{

template <typename Outputs, typename OutputItem, typename OutputsArgs, typename OutputItemArgs>
NumericIdProtocolOutputBase<Outputs, OutputItem, OutputsArgs, OutputItemArgs>::NumericIdProtocolOutputBase(
    uint16 mostItems)
    : ProtocolOutputBase<Outputs, OutputItem, OutputsArgs, OutputItemArgs>(mostItems)
{
}

template <typename Outputs, typename OutputItem, typename OutputsArgs, typename OutputItemArgs>
NumericIdProtocolOutputBase<Outputs, OutputItem, OutputsArgs, OutputItemArgs>::~NumericIdProtocolOutputBase() = default;

template <typename Outputs, typename OutputItem, typename OutputsArgs, typename OutputItemArgs>
void NumericIdProtocolOutputBase<Outputs, OutputItem, OutputsArgs, OutputItemArgs>::AddAll(Zu::Params::Group& outputs)
{
    AddAll(outputs, firstId);
}

template <typename Outputs, typename OutputItem, typename OutputsArgs, typename OutputItemArgs>
void NumericIdProtocolOutputBase<Outputs, OutputItem, OutputsArgs, OutputItemArgs>::CompactId()
{
    CompactId(firstId);
}

template <typename Outputs, typename OutputItem, typename OutputsArgs, typename OutputItemArgs>
void NumericIdProtocolOutputBase<Outputs, OutputItem, OutputsArgs, OutputItemArgs>::UpdateId(
    Zu::Params::Group& outputsArgs)
{
    this->UpdateId_Helper(outputsArgs, false);
}

template <typename Outputs, typename OutputItem, typename OutputsArgs, typename OutputItemArgs>
void NumericIdProtocolOutputBase<Outputs, OutputItem, OutputsArgs, OutputItemArgs>::OverlapInsert(
    uint64 index, OutputItem const& item)
{
    Zu::Locker const guard(this->lock);
    this->ShiftOutputMap(index);
    this->core.Put(index, item);
    auto const& items = this->core.List();
    uint64 i = index + 1;
    bool isPushed = true;
    while (isPushed && i < items.Count())
    {
        this->core.SetId(i, static_cast<uint16>(items.IdAt(i) + 1));
        ++i;
        isPushed = i < items.Count() && items.IdAt(i - 1) == items.IdAt(i);
    }
}

template <typename Outputs, typename OutputItem, typename OutputsArgs, typename OutputItemArgs>
bool NumericIdProtocolOutputBase<Outputs, OutputItem, OutputsArgs, OutputItemArgs>::IsDataShiftSupported() const
{
    return true;
}

template <typename Outputs, typename OutputItem, typename OutputsArgs, typename OutputItemArgs>
void NumericIdProtocolOutputBase<Outputs, OutputItem, OutputsArgs, OutputItemArgs>::AddAll(Zu::Params::Group& outputs,
                                                                                           uint16 nextId)
{
    auto& listed = dynamic_cast<Outputs&>(outputs);
    Zu::Locker const guard(this->lock);
    if (uint64 const count = this->core.List().Count(); count > 0)
    {
        uint16 const lastId = this->core.List().IdAt(count - 1);
        // A shift may give the last item the invalid id. In 16 bits the next id is 0, which would break the order of
        // the map: every entry is refused instead.
        nextId = lastId == OutputItem::DEFAULT_OUTPUT_ID ? lastId : static_cast<uint16>(lastId + 1);
    }
    OutputMapRefusal const refusals(this->notes);
    AddEntries(ZU_FUNCTION_LABEL, listed, [this, &nextId, &refusals](OutputItem& entry) ZU_REQUIRES(this->lock) {
        std::string const& source = entry.source.Get();
        entry.outputId.Set(nextId); // before the tests: the caller sees where a refused entry would have gone
        if (source == OutputItem::DEFAULT_SOURCE)
        {
            return refusals.OfBlankEntry(ZU_FUNCTION_LABEL, source);
        }
        if (nextId == OutputItem::DEFAULT_OUTPUT_ID)
        {
            return refusals.OfEntryWithoutId(ZU_FUNCTION_LABEL, source, nextId);
        }
        if (this->core.HasSource(source))
        {
            return refusals.OfKnownEntry(ZU_FUNCTION_LABEL, source);
        }
        this->core.Append(entry);
        ++nextId;
        return Zu::Status::SUCCESS;
    });
}

template <typename Outputs, typename OutputItem, typename OutputsArgs, typename OutputItemArgs>
template <typename AddEntry>
void NumericIdProtocolOutputBase<Outputs, OutputItem, OutputsArgs, OutputItemArgs>::AddEntries(char const* function,
                                                                                               Outputs& listed,
                                                                                               AddEntry addEntry)
{
    int32 status = Zu::Status::SUCCESS;
    for (uint64 i = 0; i < listed.map.Count(); ++i)
    {
        OutputItem& entry = listed.map.At(i);
        if (this->notes != nullptr)
        {
            this->notes->entry = i;
        }
        if (this->core.List().Count() >= this->maxCount)
        {
            OutputMapRefusal(this->notes).OfFullMap(function, entry.source.Get());
        }
        int32 const added = addEntry(entry);
        status = added == Zu::Status::SUCCESS ? status : added;
    }
    OutputMapRefusal::UnlessAllAdded(function, status);
}

template <typename Outputs, typename OutputItem, typename OutputsArgs, typename OutputItemArgs>
void NumericIdProtocolOutputBase<Outputs, OutputItem, OutputsArgs, OutputItemArgs>::CompactId(uint16 nextId)
{
    Zu::Locker const guard(this->lock);
    uint64 const count = this->core.List().Count();
    for (uint64 i = 0; i < count; ++i)
    {
        this->core.SetId(i, nextId++);
    }
}

} // namespace ZuControl::ControlProtocol
