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
    this->PutItem(index, item);
    auto const& map = this->outputs.map;
    uint64 i = index + 1;
    bool isPushed = true;
    while (isPushed && i < map.Count())
    {
        this->SetOutputId(i, static_cast<uint16>(map.At(i).outputId.Get() + 1));
        ++i;
        isPushed = i < map.Count() && map.At(i - 1).outputId.Get() == map.At(i).outputId.Get();
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
    auto& list = dynamic_cast<Outputs&>(outputs).map;
    Zu::Locker const guard(this->lock);
    uint64 count = this->outputs.map.Count();
    if (count > 0)
    {
        uint16 const lastId = this->outputs.map.At(count - 1).outputId.Get();
        // A shift may give the last item the invalid id. In 16 bits the next id is 0, which would break the order of
        // the map: every entry is refused instead.
        nextId = lastId == OutputItem::DEFAULT_OUTPUT_ID ? lastId : static_cast<uint16>(lastId + 1);
    }
    int32 status = Zu::Status::SUCCESS;
    for (uint64 i = 0; i < list.Count(); ++i)
    {
        OutputItem& entry = list.At(i);
        char const* const source = entry.source.Get().c_str();
        if (count >= this->maxCount)
        {
            ZU_THROW(Zu::Status::FULL, "Connection map is full. All data source(s) from %1$s are not added.", source);
        }
        entry.outputId.Set(nextId); // before the tests: the caller sees where a refused entry would have gone
        if (entry.source.Get() == OutputItem::DEFAULT_SOURCE)
        {
            ZU_LOG_USER_ERROR(
                "Data source %1$s in the list of sources to add is invalid. Please correct the data source "
                "and try again.",
                source);
            ZU_LOG_ERROR(
                "Data source %s in the list of sources to add is invalid. Please correct the data source and try "
                "again.",
                source);
            status = Zu::Status::BAD_ARGUMENT;
        }
        else if (nextId == OutputItem::DEFAULT_OUTPUT_ID)
        {
            ZU_LOG_USER_ERROR(
                "Data source %1$s in the list of sources to add has invalid output identifier (%2$u). Please "
                "correct the output id and try again.",
                source, unsigned{nextId});
            ZU_LOG_ERROR(
                "Data source %s in the list of sources to add has invalid output identifier (%u). Please correct "
                "the output id and try again.",
                source, unsigned{nextId});
            status = Zu::Status::BAD_ARGUMENT;
        }
        else if (this->HasSource(entry.source.Get()))
        {
            ZU_LOG_USER_WARNING("Data source %1$s already exists.", source);
            ZU_LOG_WARNING("Data source %s already exists", source);
            status = Zu::Status::ALREADY_EXISTS;
        }
        else
        {
            this->AppendItem(entry);
            ++count;
            ++nextId;
        }
    }
    if (status != Zu::Status::SUCCESS)
    {
        ZU_THROW(status,
                 "One or more sources could not be added to the connection map. Logs may have additional information.");
    }
}

template <typename Outputs, typename OutputItem, typename OutputsArgs, typename OutputItemArgs>
void NumericIdProtocolOutputBase<Outputs, OutputItem, OutputsArgs, OutputItemArgs>::CompactId(uint16 nextId)
{
    Zu::Locker const guard(this->lock);
    uint64 const count = this->outputs.map.Count();
    for (uint64 i = 0; i < count; ++i)
    {
        this->SetOutputId(i, nextId++);
    }
}

} // namespace ZuControl::ControlProtocol
