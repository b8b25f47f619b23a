#include "ZuControl/ControlProtocol/OutputMapCore.h"

#include "ZuApi/ArrayBase.h"
#include "ZuApi/Exception.h"
#include "ZuApi/Guard.h"
#include "ZuApi/Logging.h"
#include "ZuApi/Structure.h"

#include <limits>

namespace ZuControl::ControlProtocol
{

using Zu::Properties::Internal::ArrayBase;

/// The scope of one change of items and index. Unless the change ends with `Commit`, the index stays stale and the
/// unfinished item is removed.
template <typename OutputId>
class OutputMapCore<OutputId>::Change final
{
public:
    explicit Change(OutputMapCore& changedCore) : core(changedCore)
    {
        core.Refresh();
        core.isStale = true;
    }

    ~Change()
    {
        if (unfinished != NONE)
        {
            ZU_GUARD_DESTRUCTOR([this] { core.items.Remove(unfinished); });
        }
        core.count.store(core.items.Count(), std::memory_order_relaxed);
    }

    Change(Change const&) = delete;
    Change& operator=(Change const&) = delete;

    /// Appends an empty item, which is unfinished.
    Item& AddItem()
    {
        uint64 const oldCount = core.items.Count();
        try
        {
            core.items.Resize(oldCount + 1);
        }
        catch (...)
        {
            core.items.Resize(oldCount); // the element may exist already when there is no memory for its schema
            throw;
        }
        unfinished = oldCount;
        return core.ItemAt(oldCount);
    }

    /// From here on it is the item at `index` that a failure makes worthless.
    void SetUnfinished(uint64 index)
    {
        unfinished = index;
    }

    void Commit()
    {
        unfinished = NONE;
        core.isStale = false;
    }

private:
    static constexpr uint64 NONE = std::numeric_limits<uint64>::max();

    OutputMapCore& core;
    uint64 unfinished = NONE;
};

template <typename OutputId>
OutputMapCore<OutputId>::OutputMapCore(ArrayBase& usedItems, ItemAccess const& newAccess)
    : items(usedItems), access(newAccess)
{
}

template <typename OutputId>
OutputMapCore<OutputId>::~OutputMapCore() = default;

template <typename OutputId>
uint64 OutputMapCore<OutputId>::Count() const
{
    return count.load(std::memory_order_relaxed);
}

template <typename OutputId>
bool OutputMapCore<OutputId>::HasSource(std::string const& source)
{
    Refresh();
    return sources.Has(source);
}

template <typename OutputId>
bool OutputMapCore<OutputId>::HasIdAt(uint64 index, OutputId const& id)
{
    Refresh();
    return index < ids.size() && ids[index] == id;
}

template <typename OutputId>
bool OutputMapCore<OutputId>::HasId(OutputId const& id)
{
    return HasIdAt(FindPlace(id), id);
}

template <typename OutputId>
uint64 OutputMapCore<OutputId>::FindPlace(OutputId const& id)
{
    Refresh();
    if (ids.empty())
    {
        return 0;
    }
    uint64 low = 0;
    uint64 high = ids.size() - 1;
    while (low <= high)
    {
        uint64 const middle = (low + high) >> 1;
        if (id > ids[middle])
        {
            low = middle + 1;
        }
        else if (id == ids[middle])
        {
            return middle;
        }
        else if (middle == 0)
        {
            break;
        }
        else
        {
            high = middle - 1;
        }
    }
    return low;
}

template <typename OutputId>
std::vector<std::string> OutputMapCore<OutputId>::Sources()
{
    std::vector<std::string> inOrder;
    uint64 const itemCount = items.Count();
    inOrder.reserve(itemCount);
    for (uint64 i = 0; i < itemCount; ++i)
    {
        inOrder.push_back(access.source(ItemAt(i)));
    }
    return inOrder;
}

template <typename OutputId>
void OutputMapCore<OutputId>::Append(Item const& item)
{
    Change change(*this);
    access.takeOver(change.AddItem(), item);
    ids.push_back(access.id(item));
    sources.Add(access.source(item));
    change.Commit();
}

template <typename OutputId>
void OutputMapCore<OutputId>::Shift(uint64 index)
{
    Change change(*this);
    change.AddItem();
    for (uint64 next = items.Count() - 1; next > index; --next)
    {
        // Copies values and does not move elements: observers may be attached to the elements.
        access.takeOver(ItemAt(next), ItemAt(next - 1));
        change.SetUnfinished(next - 1);
    }
    Item const& opened = ItemAt(index);
    ids.insert(ids.begin() + static_cast<std::ptrdiff_t>(index), access.id(opened));
    sources.Add(access.source(opened));
    change.Commit();
}

template <typename OutputId>
void OutputMapCore<OutputId>::Put(uint64 index, Item const& item)
{
    Change change(*this);
    Item& place = ItemAt(index);
    change.SetUnfinished(index);
    ids[index] = access.id(item);
    sources.Add(access.source(item)); // first: the old source may be the same
    sources.Remove(access.source(place));
    access.takeOver(place, item);
    change.Commit();
}

template <typename OutputId>
void OutputMapCore<OutputId>::SetId(uint64 index, OutputId const& id)
{
    Change change(*this);
    access.setId(ItemAt(index), id);
    ids[index] = id;
    change.Commit();
}

template <typename OutputId>
void OutputMapCore<OutputId>::Erase(uint64 index)
{
    Change change(*this);
    sources.Remove(access.source(ItemAt(index))); // throws before anything changes
    ids.erase(ids.begin() + static_cast<std::ptrdiff_t>(index));
    items.Remove(index);
    change.Commit();
}

template <typename OutputId>
void OutputMapCore<OutputId>::Clear()
{
    Change change(*this);
    items.Clear();
    ids.clear();
    sources.Clear();
    change.Commit();
}

/// Brings the index in step with the items.
template <typename OutputId>
void OutputMapCore<OutputId>::Refresh()
{
    uint64 const itemCount = items.Count();
    if (!isStale && ids.size() == itemCount)
    {
        return;
    }
    isStale = true;
    ids.clear();
    sources.Clear();
    for (uint64 i = 0; i < itemCount; ++i)
    {
        ids.push_back(access.id(ItemAt(i)));
        sources.Add(access.source(ItemAt(i)));
    }
    isStale = false;
}

template <typename OutputId>
Zu::Properties::Structure& OutputMapCore<OutputId>::ItemAt(uint64 index)
{
    return items.ElementAt(index);
}

template class OutputMapCore<uint16>;
template class OutputMapCore<std::string>;

void OutputMapRefusal::OfIncompleteItem(char const* function, std::string const& source)
{
    ZU_LOG_USER_ERROR("Data source %1$s is invalid", source.c_str());
    ZU_LOG_LINE(Zu::Logging::FLAGS_ERROR, function, "Data source %s is invalid", source.c_str());
    throw Zu::Exception(__LINE__, __FILE__, Zu::Status::BAD_ARGUMENT, function);
}

void OutputMapRefusal::OfKnownSource(char const* function, std::string const& source)
{
    ZU_LOG_USER_WARNING("Data source %1$s already exists", source.c_str());
    ZU_LOG_LINE(Zu::Logging::FLAGS_WARNING, function, "Data source %s already exists", source.c_str());
    throw Zu::Exception(__LINE__, __FILE__, Zu::Status::ALREADY_EXISTS, function);
}

void OutputMapRefusal::OfTakenId(char const* function, std::string const& source)
{
    ZU_LOG_USER_ERROR(
        "Unable to add data source %1$s. The specified address would cause the selected source to overlap "
        "addresses used by an existing data source.",
        source.c_str());
    ZU_LOG_LINE(Zu::Logging::FLAGS_ERROR, function,
                "Unable to add data source %s. The specified address would cause the selected source to overlap "
                "addresses used by an existing data source.",
                source.c_str());
    throw Zu::Exception(__LINE__, __FILE__, Zu::Status::BAD_ARGUMENT, function);
}

void OutputMapRefusal::UnlessTwoIds(char const* function, uint64 count)
{
    if (count != 2)
    {
        throw Zu::Exception(
            __LINE__, __FILE__, Zu::Status::BAD_ARGUMENT, function,
            "There should be exactly 2 output id entries but there are %1$d. The first output id should contain the "
            "original id to change from and the second output id should contain the new id to change to.",
            static_cast<int>(count));
    }
}

void OutputMapRefusal::OfMissingId(char const* function)
{
    ZU_LOG_USER_ERROR("Output id is invalid.");
    throw Zu::Exception(__LINE__, __FILE__, Zu::Status::BAD_ARGUMENT, function, "Output id is invalid.");
}

void OutputMapRefusal::OfMoveToTakenId(char const* function, std::string const& source)
{
    ZU_LOG_USER_ERROR(
        "Unable to update output id for data source %1$s. The specified address would cause the selected source to "
        "overlap addresses used by an existing data source.",
        source.c_str()); // unlike the two texts below, without brackets round the source
    ZU_LOG_LINE(Zu::Logging::FLAGS_ERROR, function,
                "Unable to update output id for data source [%s]. The specified address would cause the selected "
                "source to overlap addresses used by an existing data source.",
                source.c_str());
    throw Zu::Exception(__LINE__, __FILE__, Zu::Status::BAD_ARGUMENT, function,
                        "Unable to update output id for data source [%1$s]. The specified address would cause the "
                        "selected source to overlap addresses used by an existing data source.",
                        source.c_str());
}

int32 OutputMapRefusal::OfBlankEntry(char const* function, std::string const& source)
{
    ZU_LOG_USER_ERROR("Data source %1$s in the list of sources to add is invalid. Please correct the data source and "
                      "try again.",
                      source.c_str());
    ZU_LOG_LINE(Zu::Logging::FLAGS_ERROR, function,
                "Data source %s in the list of sources to add is invalid. Please correct the data source and try "
                "again.",
                source.c_str());
    return Zu::Status::BAD_ARGUMENT;
}

int32 OutputMapRefusal::OfEntryWithoutId(char const* function, std::string const& source, uint16 id)
{
    ZU_LOG_USER_ERROR("Data source %1$s in the list of sources to add has invalid output identifier (%2$u). Please "
                      "correct the output id and try again.",
                      source.c_str(), unsigned{id});
    ZU_LOG_LINE(Zu::Logging::FLAGS_ERROR, function,
                "Data source %s in the list of sources to add has invalid output identifier (%u). Please correct "
                "the output id and try again.",
                source.c_str(), unsigned{id});
    return Zu::Status::BAD_ARGUMENT;
}

void OutputMapRefusal::OfFullMap(char const* function, std::string const& source)
{
    throw Zu::Exception(__LINE__, __FILE__, Zu::Status::FULL, function,
                        "Connection map is full. All data source(s) from %1$s are not added.", source.c_str());
}

void OutputMapRefusal::UnlessAllAdded(char const* function, int32 status)
{
    if (status != Zu::Status::SUCCESS)
    {
        throw Zu::Exception(__LINE__, __FILE__, status, function,
                            "One or more sources could not be added to the connection map. Logs may have additional "
                            "information.");
    }
}

} // namespace ZuControl::ControlProtocol
