#pragma once

#include "ZuControl/ControlProtocol/EntryRefusal.h"
#include "ZuControl/ControlProtocol/OutputItems.h"
#include "ZuControl/ControlProtocol/SourceTable.h"
#include "ZuControl/Export.h"
#include "wApi/wTypes.h"

#include <atomic>
#include <memory>
#include <string>
#include <vector>

namespace ZuControl::ControlProtocol
{

/// The items of an output map and their index, without the types of the records: it changes both together.
///
/// The index holds the ids in item order and the sources. Without it a map of many thousand items would walk all its
/// records for every new source.
/// A change fails when an observer throws or when there is no memory. The items are then as before, except where an
/// operation says otherwise, and the next operation rebuilds the index.
/// Threads: the class takes no lock; the map's lock guards it. Only `Count` may run without that lock.
template <typename OutputId>
class ZUCONTROL_API OutputMapCore final
{
public:
    using Item = Zu::Properties::Structure; ///< a record of the map's kind

    using Items = OutputItems<OutputId>;

    explicit OutputMapCore(std::unique_ptr<Items> usedItems);
    ~OutputMapCore();

    OutputMapCore(OutputMapCore const&) = delete;
    OutputMapCore& operator=(OutputMapCore const&) = delete;

    uint64 Count() const; ///< of the items; any thread, without the lock

    /// The items to read; their count is the true one also while a change has failed half way.
    Items const& List() const
    {
        return *items;
    }

    /// From here on, the core works on these items.
    void Use(std::unique_ptr<Items> newItems);

    bool HasSource(std::string const& source);

    /// Whether there is an item at `index` and it has this id.
    bool HasIdAt(uint64 index, OutputId const& id);
    bool HasId(OutputId const& id);

    /// Bisection: the index of an item with this id, else the index where the item belongs, up to the count. With ids
    /// out of order the result may be any index up to the count.
    uint64 FindPlace(OutputId const& id);

    std::vector<std::string> Sources(); ///< in item order

    void Append(Item const& item);

    /// Copies each item from `index` on one place up. The caller overwrites the item at `index` with `Put`. `index` is
    /// at most the count.
    void Shift(uint64 index);

    /// Overwrites the item that `Shift` has opened. A failure removes it: the items are as before the shift.
    void Put(uint64 index, Item const& item);
    void SetId(uint64 index, OutputId const& id);
    void Erase(uint64 index); ///< throws `Zu::Status::NOT_FOUND` behind the last item
    void Clear();

private:
    class Change;

    void Refresh();

    std::unique_ptr<Items> items;
    std::atomic<uint64> count{0}; // of the items, for readers without the lock
    std::vector<OutputId> ids;
    SourceTable sources;  // a source of two items counts twice
    bool isStale = false; // a change is running or has failed half way
};

extern template class OutputMapCore<uint16>;
extern template class OutputMapCore<std::string>;

/// The refusals of all kinds of output map: the lines for the user and for the developer, then the exception.
///
/// `function` is the label of the refusing operation; it stands in the developer's line and in the exception. For a
/// preview, the user's line goes to the notes and no line is written.
class ZUCONTROL_API OutputMapRefusal
{
public:
    /// Without notes, refusals go to the log.
    explicit OutputMapRefusal(RefusalNotes* usedNotes) : notes(usedNotes)
    {
    }

    // Of one item.
    [[noreturn]] void OfIncompleteItem(char const* function, std::string const& source) const;
    [[noreturn]] void OfKnownSource(char const* function, std::string const& source) const;
    [[noreturn]] void OfTakenId(char const* function, std::string const& source) const;
    [[noreturn]] void OfOverlap(char const* function, std::string const& source) const; ///< in a register map

    // Of a move to another id, in a list with the old and the new id.
    static void UnlessTwoIds(char const* function, uint64 count);
    [[noreturn]] void OfMissingId(char const* function) const;
    [[noreturn]] void OfMoveToTakenId(char const* function, std::string const& source) const;

    // Of an entry in a list of new items. The first four only log, and return the status: the other entries go on.
    int32 OfBlankEntry(char const* function, std::string const& source) const;
    int32 OfEntryWithoutId(char const* function, std::string const& source, uint16 id) const;
    int32 OfKnownEntry(char const* function, std::string const& source) const;         ///< in a map of numbers
    int32 OfKnownRegisterEntry(char const* function, std::string const& source) const; ///< in a register map
    [[noreturn]] void OfFullMap(char const* function, std::string const& source) const;
    static void UnlessAllAdded(char const* function, int32 status); ///< `status` is the last failing one

    /// Call it from a catch block, in which the refusal of an entry ends. Returns its status.
    int32 OfCaughtEntry(int line, char const* file, char const* function, std::string const& source) const;

private:
    RefusalNotes* const notes;
};

} // namespace ZuControl::ControlProtocol
