#pragma once

#include "ZuApi/ArrayBase.h"
#include "ZuApi/Exception.h"
#include "ZuApi/Structure.h"
#include "wApi/wTypes.h"

#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace ZuControl::ControlProtocol
{

/// The items of an output map: the records that clients read, or plain copies of them for a preview.
///
/// `Record` arguments are records of the map's kind. An index is below the count. Threads: the class takes no lock.
template <typename OutputId>
class OutputItems
{
public:
    using Record = Zu::Properties::Structure;

    OutputItems() = default;
    virtual ~OutputItems() = default;

    OutputItems(OutputItems const&) = delete;
    OutputItems& operator=(OutputItems const&) = delete;

    virtual uint64 Count() const = 0;
    virtual OutputId const& IdAt(uint64 index) const = 0;
    virtual std::string const& SourceAt(uint64 index) const = 0;
    virtual uint16 SizeAt(uint64 index) const = 0; ///< 0 where items have no size
    virtual bool IsSame(uint64 index, Record const& item) const = 0;
    virtual void CopyTo(Record& item, uint64 index) const = 0;

    virtual void Resize(uint64 count) = 0;
    virtual void Remove(uint64 index) = 0; ///< throws `Zu::Status::NOT_FOUND` behind the last item
    virtual void Clear() = 0;
    virtual void SetId(uint64 index, OutputId const& id) = 0;
    virtual void Put(uint64 index, Record const& item) = 0;
    virtual void Copy(uint64 to, uint64 from) = 0;
};

/// The items in the record of a map.
template <typename OutputItem>
class RecordItems final : public OutputItems<typename OutputItem::OutputId>
{
public:
    using Array = Zu::Properties::Internal::ArrayBase;
    using OutputId = typename OutputItem::OutputId;
    using Record = Zu::Properties::Structure;

    /// `usedItems` outlives the object.
    explicit RecordItems(Array& usedItems) : items(usedItems)
    {
    }

    uint64 Count() const override
    {
        return items.Count();
    }

    OutputId const& IdAt(uint64 index) const override
    {
        return At(index).outputId.Get();
    }

    std::string const& SourceAt(uint64 index) const override
    {
        return At(index).source.Get();
    }

    uint16 SizeAt([[maybe_unused]] uint64 index) const override
    {
        if constexpr (requires(OutputItem const& item) { item.outputSize; })
        {
            return At(index).outputSize.Get();
        }
        return 0;
    }

    bool IsSame(uint64 index, Record const& item) const override
    {
        return At(index).IsSameOutput(static_cast<OutputItem const&>(item));
    }

    void CopyTo(Record& item, uint64 index) const override
    {
        static_cast<OutputItem&>(item).TakeOver(At(index));
    }

    void Resize(uint64 count) override
    {
        items.Resize(count);
    }

    void Remove(uint64 index) override
    {
        items.Remove(index);
    }

    void Clear() override
    {
        items.Clear();
    }

    void SetId(uint64 index, OutputId const& id) override
    {
        At(index).outputId.Set(id);
    }

    void Put(uint64 index, Record const& item) override
    {
        At(index).TakeOver(static_cast<OutputItem const&>(item));
    }

    /// Copies values and does not move elements: observers may be attached to the elements.
    void Copy(uint64 to, uint64 from) override
    {
        At(to).TakeOver(At(from));
    }

private:
    OutputItem& At(uint64 index) const
    {
        return static_cast<OutputItem&>(items.ElementAt(index));
    }

    Array& items;
};

/// A copy of one item of a map.
template <typename OutputId>
struct PlainOutputItem
{
    static constexpr uint64 NO_ORIGIN = std::numeric_limits<uint64>::max();

    OutputId id{};
    std::string source;
    uint16 size = 0;
    uint16 offset = 0;
    uint16 length = 0;
    uint64 origin = NO_ORIGIN; ///< the index of the item from which this one comes, in the map before the preview
};

/// Plain copies of the items of a map.
template <typename OutputItem>
class PlainItems final : public OutputItems<typename OutputItem::OutputId>
{
public:
    using OutputId = typename OutputItem::OutputId;
    using Record = Zu::Properties::Structure;
    using Item = PlainOutputItem<OutputId>;

    static Item CopyOf(OutputItem const& item)
    {
        Item copy{.id = item.outputId.Get(), .source = item.source.Get()};
        if constexpr (requires { item.outputSize; })
        {
            copy.size = item.outputSize.Get();
            copy.offset = item.dataOffset.Get();
            copy.length = item.dataLength.Get();
        }
        return copy;
    }

    std::vector<Item> items;

    uint64 Count() const override
    {
        return items.size();
    }

    OutputId const& IdAt(uint64 index) const override
    {
        return items[index].id;
    }

    std::string const& SourceAt(uint64 index) const override
    {
        return items[index].source;
    }

    uint16 SizeAt(uint64 index) const override
    {
        return items[index].size;
    }

    bool IsSame(uint64 index, Record const& record) const override
    {
        Item const& item = items[index];
        auto const& other = static_cast<OutputItem const&>(record);
        if constexpr (requires { other.outputSize; })
        {
            if (item.size != other.outputSize.Get() || item.offset != other.dataOffset.Get() ||
                item.length != other.dataLength.Get())
            {
                return false;
            }
        }
        return item.id == other.outputId.Get() && item.source == other.source.Get();
    }

    void CopyTo(Record& record, uint64 index) const override
    {
        Item const& item = items[index];
        auto& copy = static_cast<OutputItem&>(record);
        copy.outputId.Set(item.id);
        copy.source.Set(item.source);
        if constexpr (requires { copy.outputSize; })
        {
            copy.outputSize.Set(item.size);
            copy.dataOffset.Set(item.offset);
            copy.dataLength.Set(item.length);
        }
    }

    void Resize(uint64 count) override
    {
        items.resize(count);
    }

    void Remove(uint64 index) override
    {
        if (index >= items.size())
        {
            ZU_THROW(Zu::Status::NOT_FOUND);
        }
        items.erase(items.begin() + static_cast<std::ptrdiff_t>(index));
    }

    void Clear() override
    {
        items.clear();
    }

    void SetId(uint64 index, OutputId const& id) override
    {
        items[index].id = id;
    }

    void Put(uint64 index, Record const& record) override
    {
        items[index] = CopyOf(static_cast<OutputItem const&>(record));
    }

    void Copy(uint64 to, uint64 from) override
    {
        items[to] = items[from];
    }
};

} // namespace ZuControl::ControlProtocol
