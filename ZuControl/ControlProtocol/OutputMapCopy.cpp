#include "ZuControl/ControlProtocol/OutputMapCopy.h"

#include "ZuApi/Exception.h"
#include "ZuApi/Params/Group.h"
#include "ZuControl/ControlProtocol/ProtocolOutputActionTarget.h"
#include "ZuControl/ControlProtocol/RegisterProtocolOutputMap.h"
#include "ZuControl/ControlProtocol/StandardProtocolOutputMap.h"
#include "ZuControl/ControlProtocol/TextIdStandardProtocolOutputMap.h"

#include <utility>

namespace ZuControl::ControlProtocol
{

namespace
{

constexpr uint32 LAST_ID = 65534;

void SetId(LayoutEntry& entry, uint16 id)
{
    entry.outputId = id;
}

void SetId(LayoutEntry& entry, std::string const& id)
{
    entry.textId = id;
}

template <typename OutputId>
LayoutEntry EntryOf(PlainOutputItem<OutputId> const& item, RegisterSpace const& space)
{
    LayoutEntry entry;
    entry.origin = item.origin;
    SetId(entry, item.id);
    entry.source = item.source;
    entry.outputSize = item.size;
    entry.dataOffset = item.offset;
    entry.dataLength = item.length;
    if (space.itemSize != 0)
    {
        entry.registers = static_cast<uint16>((uint32{item.size} + space.itemSize - 1) / space.itemSize);
    }
    return entry;
}

Layout FrameOf(Layout::Kind kind, RegisterSpace const& space)
{
    Layout layout;
    layout.kind = kind;
    if (kind == Layout::Kind::REGISTERS)
    {
        layout.isAddressed = true;
        layout.first = space.start;
        layout.last = uint32{space.start} + space.count - 1;
        layout.itemSize = space.itemSize;
    }
    else
    {
        layout.last = LAST_ID;
    }
    return layout;
}

template <typename OutputId>
Layout LayoutOf(Layout::Kind kind, RegisterSpace const& space, std::vector<PlainOutputItem<OutputId>> const& items)
{
    Layout layout = FrameOf(kind, space);
    layout.entries.reserve(items.size());
    for (auto const& item : items)
    {
        layout.entries.push_back(EntryOf(item, space));
    }
    return layout;
}

/// A copy of a map of one kind: the same class, on plain items.
template <typename Map>
class OutputMapCopy final : public LayoutCopy
{
public:
    OutputMapCopy(Map const& original, Layout::Kind mapKind)
        : kind(mapKind), copy(original.CopyForPreview(notes)), actions(*copy)
    {
    }

    std::shared_ptr<Zu::Params::Group> ActionParams(std::string const& actionId) const override
    {
        return actions.GetActionParams(actionId);
    }

    void InvokeAction(std::string const& actionId, Zu::Params::Group const& params) override
    {
        actions.InvokeAction(actionId, params);
    }

    Layout Read() const override
    {
        RegisterSpace space;
        if constexpr (requires { copy->Space(); })
        {
            space = copy->Space();
        }
        return LayoutOf(kind, space, copy->CopiedItems());
    }

private:
    Layout::Kind const kind;
    std::unique_ptr<Map> const copy;
    ProtocolOutputActionTarget actions;
};

template <typename Item, typename Outputs>
Layout ReadItems(Layout::Kind kind, RegisterSpace const& space, Outputs const& outputs)
{
    Layout layout = FrameOf(kind, space);
    uint64 const count = outputs.map.Count();
    layout.entries.reserve(count);
    for (uint64 i = 0; i < count; ++i)
    {
        layout.entries.push_back(EntryOf(PlainItems<Item>::CopyOf(outputs.map.At(i)), space));
        layout.entries.back().origin = i;
    }
    return layout;
}

} // namespace

std::unique_ptr<LayoutCopy> MakeCopyOf(IProtocolOutput const& original)
{
    if (auto const* const numbers = dynamic_cast<StandardProtocolOutputMap const*>(&original))
    {
        return std::make_unique<OutputMapCopy<StandardProtocolOutputMap>>(*numbers, Layout::Kind::NUMBERS);
    }
    if (auto const* const registers = dynamic_cast<RegisterProtocolOutputMap const*>(&original))
    {
        return std::make_unique<OutputMapCopy<RegisterProtocolOutputMap>>(*registers, Layout::Kind::REGISTERS);
    }
    if (auto const* const texts = dynamic_cast<TextIdStandardProtocolOutputMap const*>(&original))
    {
        return std::make_unique<OutputMapCopy<TextIdStandardProtocolOutputMap>>(*texts, Layout::Kind::TEXTS);
    }
    return nullptr;
}

Layout ReadLayout(Zu::Params::Group const& outputMap)
{
    if (auto const* const numbers = dynamic_cast<StandardOutputs const*>(&outputMap))
    {
        return ReadItems<StandardOutputItem>(Layout::Kind::NUMBERS, {}, *numbers);
    }
    if (auto const* const registers = dynamic_cast<RegisterOutputs const*>(&outputMap))
    {
        auto const& space = registers->attributes;
        return ReadItems<RegisterOutputItem>(Layout::Kind::REGISTERS,
                                             {space.start.Get(), space.count.Get(), space.itemSize.Get()}, *registers);
    }
    if (auto const* const texts = dynamic_cast<TextIdStandardOutputs const*>(&outputMap))
    {
        return ReadItems<TextIdStandardOutputItem>(Layout::Kind::TEXTS, {}, *texts);
    }
    ZU_THROW(Zu::Status::NOT_SUPPORTED);
}

} // namespace ZuControl::ControlProtocol
