#include "ZuControl/ControlProtocol/OutputMapCore.h"

#include "ZuApi/Exception.h"
#include "ZuApi/Guard.h"
#include "ZuApi/Logging.h"

#include <limits>
#include <utility>

namespace ZuControl::ControlProtocol
{

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
            ZU_GUARD_DESTRUCTOR([this] { core.items->Remove(unfinished); });
        }
        core.count.store(core.items->Count(), std::memory_order_relaxed);
    }

    Change(Change const&) = delete;
    Change& operator=(Change const&) = delete;

    /// Appends an empty item, which is unfinished, and returns its index.
    uint64 AddItem()
    {
        uint64 const oldCount = core.items->Count();
        try
        {
            core.items->Resize(oldCount + 1);
        }
        catch (...)
        {
            core.items->Resize(oldCount); // the element may exist already when there is no memory for its schema
            throw;
        }
        unfinished = oldCount;
        return oldCount;
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
OutputMapCore<OutputId>::OutputMapCore(std::unique_ptr<Items> usedItems) : items(std::move(usedItems))
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
void OutputMapCore<OutputId>::Use(std::unique_ptr<Items> newItems)
{
    items = std::move(newItems);
    isStale = true;
    count.store(items->Count(), std::memory_order_relaxed);
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
    uint64 const itemCount = items->Count();
    inOrder.reserve(itemCount);
    for (uint64 i = 0; i < itemCount; ++i)
    {
        inOrder.push_back(items->SourceAt(i));
    }
    return inOrder;
}

template <typename OutputId>
void OutputMapCore<OutputId>::Append(Item const& item)
{
    Change change(*this);
    uint64 const index = change.AddItem();
    items->Put(index, item);
    ids.push_back(items->IdAt(index));
    sources.Add(items->SourceAt(index));
    change.Commit();
}

template <typename OutputId>
void OutputMapCore<OutputId>::Shift(uint64 index)
{
    Change change(*this);
    for (uint64 next = change.AddItem(); next > index; --next)
    {
        items->Copy(next, next - 1);
        change.SetUnfinished(next - 1);
    }
    ids.insert(ids.begin() + static_cast<std::ptrdiff_t>(index), items->IdAt(index));
    sources.Add(items->SourceAt(index));
    change.Commit();
}

template <typename OutputId>
void OutputMapCore<OutputId>::Put(uint64 index, Item const& item)
{
    Change change(*this);
    change.SetUnfinished(index);
    std::string const oldSource = items->SourceAt(index);
    items->Put(index, item);
    ids[index] = items->IdAt(index);
    sources.Add(items->SourceAt(index)); // first: the old source may be the same
    sources.Remove(oldSource);
    change.Commit();
}

template <typename OutputId>
void OutputMapCore<OutputId>::SetId(uint64 index, OutputId const& id)
{
    Change change(*this);
    items->SetId(index, id);
    ids[index] = id;
    change.Commit();
}

template <typename OutputId>
void OutputMapCore<OutputId>::Erase(uint64 index)
{
    Change change(*this);
    if (index >= items->Count())
    {
        ZU_THROW(Zu::Status::NOT_FOUND);
    }
    sources.Remove(items->SourceAt(index));
    ids.erase(ids.begin() + static_cast<std::ptrdiff_t>(index));
    items->Remove(index);
    change.Commit();
}

template <typename OutputId>
void OutputMapCore<OutputId>::Clear()
{
    Change change(*this);
    items->Clear();
    ids.clear();
    sources.Clear();
    change.Commit();
}

/// Brings the index in step with the items.
template <typename OutputId>
void OutputMapCore<OutputId>::Refresh()
{
    uint64 const itemCount = items->Count();
    if (!isStale && ids.size() == itemCount)
    {
        return;
    }
    isStale = true;
    ids.clear();
    sources.Clear();
    for (uint64 i = 0; i < itemCount; ++i)
    {
        ids.push_back(items->IdAt(i));
        sources.Add(items->SourceAt(i));
    }
    isStale = false;
}

template class OutputMapCore<uint16>;
template class OutputMapCore<std::string>;

// The lines of a refusal at this level, for the user and then for the developer; for a preview the user's line becomes a
// note. A macro, so that each text is a literal at its place and its placeholders are checked.
#define ZU_NOTE_OR_LOG(LEVEL, status, userFormat, ...)                                                                 \
    do                                                                                                                 \
    {                                                                                                                  \
        if (notes != nullptr)                                                                                          \
        {                                                                                                              \
            notes->Add(status, Zu::Exception(__LINE__, __FILE__, status, function, userFormat, __VA_ARGS__).what());   \
        }                                                                                                              \
        else                                                                                                           \
        {                                                                                                              \
            ZU_LOG_USER_##LEVEL(userFormat, __VA_ARGS__);                                                              \
        }                                                                                                              \
    } while (false)

#define ZU_LOG_UNLESS_NOTED(LEVEL, ...)                                                                                \
    do                                                                                                                 \
    {                                                                                                                  \
        if (notes == nullptr)                                                                                          \
        {                                                                                                              \
            ZU_LOG_LINE(Zu::Logging::FLAGS_##LEVEL, function, __VA_ARGS__);                                            \
        }                                                                                                              \
    } while (false)

void OutputMapRefusal::OfIncompleteItem(char const* function, std::string const& source) const
{
    ZU_NOTE_OR_LOG(ERROR, Zu::Status::BAD_ARGUMENT, "Data source %1$s is invalid", source.c_str());
    ZU_LOG_UNLESS_NOTED(ERROR, "Data source %s is invalid", source.c_str());
    throw Zu::Exception(__LINE__, __FILE__, Zu::Status::BAD_ARGUMENT, function);
}

void OutputMapRefusal::OfKnownSource(char const* function, std::string const& source) const
{
    ZU_NOTE_OR_LOG(WARNING, Zu::Status::ALREADY_EXISTS, "Data source %1$s already exists", source.c_str());
    ZU_LOG_UNLESS_NOTED(WARNING, "Data source %s already exists", source.c_str());
    throw Zu::Exception(__LINE__, __FILE__, Zu::Status::ALREADY_EXISTS, function);
}

void OutputMapRefusal::OfTakenId(char const* function, std::string const& source) const
{
    ZU_NOTE_OR_LOG(ERROR, Zu::Status::BAD_ARGUMENT,
                   "Unable to add data source %1$s. The specified address would cause the selected source to overlap "
                   "addresses used by an existing data source.",
                   source.c_str());
    ZU_LOG_UNLESS_NOTED(ERROR,
                        "Unable to add data source %s. The specified address would cause the selected source to "
                        "overlap addresses used by an existing data source.",
                        source.c_str());
    throw Zu::Exception(__LINE__, __FILE__, Zu::Status::BAD_ARGUMENT, function);
}

void OutputMapRefusal::OfOverlap(char const* function, std::string const& source) const
{
    ZU_NOTE_OR_LOG(WARNING, Zu::Status::BAD_ARGUMENT,
                   "Unable to add connection source %1$s. The specified address would cause the selected source "
                   "to overlap addresses used by an existing connection.",
                   source.c_str());
    ZU_LOG_UNLESS_NOTED(WARNING,
                        "Unable to add connection source %s. The specified address would cause the selected source to "
                        "overlap addresses used by an existing connection.",
                        source.c_str());
    throw Zu::Exception(
        __LINE__, __FILE__, Zu::Status::BAD_ARGUMENT, function,
        "Unable to add connection source %1$s. The specified address would cause the selected source to overlap "
        "addresses used by an existing connection.",
        source.c_str());
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

void OutputMapRefusal::OfMissingId(char const* function) const
{
    if (notes != nullptr)
    {
        notes->Add(Zu::Status::BAD_ARGUMENT, "Output id is invalid.");
    }
    else
    {
        ZU_LOG_USER_ERROR("Output id is invalid.");
    }
    throw Zu::Exception(__LINE__, __FILE__, Zu::Status::BAD_ARGUMENT, function, "Output id is invalid.");
}

void OutputMapRefusal::OfMoveToTakenId(char const* function, std::string const& source) const
{
    ZU_NOTE_OR_LOG(
        ERROR, Zu::Status::BAD_ARGUMENT,
        "Unable to update output id for data source %1$s. The specified address would cause the selected source to "
        "overlap addresses used by an existing data source.",
        source.c_str()); // unlike the two texts below, without brackets round the source
    ZU_LOG_UNLESS_NOTED(ERROR,
                        "Unable to update output id for data source [%s]. The specified address would cause the "
                        "selected source to overlap addresses used by an existing data source.",
                        source.c_str());
    throw Zu::Exception(__LINE__, __FILE__, Zu::Status::BAD_ARGUMENT, function,
                        "Unable to update output id for data source [%1$s]. The specified address would cause the "
                        "selected source to overlap addresses used by an existing data source.",
                        source.c_str());
}

int32 OutputMapRefusal::OfBlankEntry(char const* function, std::string const& source) const
{
    ZU_NOTE_OR_LOG(ERROR, Zu::Status::BAD_ARGUMENT,
                   "Data source %1$s in the list of sources to add is invalid. Please correct the data source and "
                   "try again.",
                   source.c_str());
    ZU_LOG_UNLESS_NOTED(ERROR,
                        "Data source %s in the list of sources to add is invalid. Please correct the data source and "
                        "try again.",
                        source.c_str());
    return Zu::Status::BAD_ARGUMENT;
}

int32 OutputMapRefusal::OfEntryWithoutId(char const* function, std::string const& source, uint16 id) const
{
    ZU_NOTE_OR_LOG(ERROR, Zu::Status::BAD_ARGUMENT,
                   "Data source %1$s in the list of sources to add has invalid output identifier (%2$u). Please "
                   "correct the output id and try again.",
                   source.c_str(), unsigned{id});
    ZU_LOG_UNLESS_NOTED(ERROR,
                        "Data source %s in the list of sources to add has invalid output identifier (%u). Please "
                        "correct the output id and try again.",
                        source.c_str(), unsigned{id});
    return Zu::Status::BAD_ARGUMENT;
}

int32 OutputMapRefusal::OfKnownEntry(char const* function, std::string const& source) const
{
    ZU_NOTE_OR_LOG(WARNING, Zu::Status::ALREADY_EXISTS, "Data source %1$s already exists.", source.c_str());
    ZU_LOG_UNLESS_NOTED(WARNING, "Data source %s already exists", source.c_str());
    return Zu::Status::ALREADY_EXISTS;
}

int32 OutputMapRefusal::OfKnownRegisterEntry(char const* function, std::string const& source) const
{
    ZU_NOTE_OR_LOG(WARNING, Zu::Status::ALREADY_EXISTS, "Data source %1$s already exists", source.c_str());
    ZU_LOG_UNLESS_NOTED(WARNING, "Data source %s already exists", source.c_str());
    return Zu::Status::ALREADY_EXISTS;
}

void OutputMapRefusal::OfFullMap(char const* function, std::string const& source) const
{
    Zu::Exception const refusal(__LINE__, __FILE__, Zu::Status::FULL, function,
                                "Connection map is full. All data source(s) from %1$s are not added.", source.c_str());
    if (notes != nullptr)
    {
        notes->Add(Zu::Status::FULL, refusal.what());
    }
    throw Zu::Exception(refusal);
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

int32 OutputMapRefusal::OfCaughtEntry(int line, char const* file, char const* function, std::string const& source) const
{
    int32 const caught = Zu::CaughtStatus();
    int32 const status = caught != 0 ? caught : Zu::Status::BAD_ARGUMENT;
    if (notes == nullptr)
    {
        Zu::LogCaught(line, file, function, "Error adding data source <%s>", source.c_str());
    }
    else if (notes->refusals.empty() || notes->refusals.back().entry != notes->entry)
    {
        notes->Add(status, Zu::CaughtReason()); // unless the refusal has given its line
    }
    return status;
}

#undef ZU_NOTE_OR_LOG
#undef ZU_LOG_UNLESS_NOTED

} // namespace ZuControl::ControlProtocol
