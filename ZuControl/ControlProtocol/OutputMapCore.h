#pragma once

#include "ZuControl/ControlProtocol/SourceTable.h"
#include "ZuControl/Export.h"
#include "wApi/wTypes.h"

#include <atomic>
#include <string>
#include <vector>

namespace Zu::Properties
{
class Structure;
namespace Internal
{
class ArrayBase;
}
} // namespace Zu::Properties

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
    using Item = Zu::Properties::Structure;

    /// The functions that read and change an item of the map's kind.
    struct ItemAccess
    {
        OutputId const& (*id)(Item const& item);
        std::string const& (*source)(Item const& item);
        void (*setId)(Item& item, OutputId const& id);
        void (*takeOver)(Item& item, Item const& other);
    };

    template <typename OutputItem>
    static constexpr ItemAccess AccessTo()
    {
        return {
            .id = [](Item const& item) -> OutputId const& {
                return static_cast<OutputItem const&>(item).outputId.Get();
            },
            .source = [](Item const& item) -> std::string const& {
                return static_cast<OutputItem const&>(item).source.Get();
            },
            .setId = [](Item& item, OutputId const& id) { static_cast<OutputItem&>(item).outputId.Set(id); },
            .takeOver =
                [](Item& item, Item const& other) {
                    static_cast<OutputItem&>(item).TakeOver(static_cast<OutputItem const&>(other));
                },
        };
    }

    /// `usedItems` is the array in the map's record; it outlives the core.
    OutputMapCore(Zu::Properties::Internal::ArrayBase& usedItems, ItemAccess const& newAccess);
    ~OutputMapCore();

    OutputMapCore(OutputMapCore const&) = delete;
    OutputMapCore& operator=(OutputMapCore const&) = delete;

    uint64 Count() const; ///< of the items; any thread, without the lock

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
    Item& ItemAt(uint64 index);

    Zu::Properties::Internal::ArrayBase& items;
    ItemAccess const access;
    std::atomic<uint64> count{0}; // of the items, for readers without the lock
    std::vector<OutputId> ids;
    SourceTable sources;  // a source of two items counts twice
    bool isStale = false; // a change is running or has failed half way
};

extern template class OutputMapCore<uint16>;
extern template class OutputMapCore<std::string>;

/// The refusals of all kinds of output map: the lines for the user and for the developer, then the exception.
///
/// `function` is the label of the refusing operation; it stands in the developer's line and in the exception.
struct ZUCONTROL_API OutputMapRefusal
{
    // Of one item.
    [[noreturn]] static void OfIncompleteItem(char const* function, std::string const& source);
    [[noreturn]] static void OfKnownSource(char const* function, std::string const& source);
    [[noreturn]] static void OfTakenId(char const* function, std::string const& source);

    // Of a move to another id, in a list with the old and the new id.
    static void UnlessTwoIds(char const* function, uint64 count);
    [[noreturn]] static void OfMissingId(char const* function);
    [[noreturn]] static void OfMoveToTakenId(char const* function, std::string const& source);

    // Of an entry in a list of new items. The first two only log, and return the status: the other entries go on.
    static int32 OfBlankEntry(char const* function, std::string const& source);
    static int32 OfEntryWithoutId(char const* function, std::string const& source, uint16 id);
    [[noreturn]] static void OfFullMap(char const* function, std::string const& source);
    static void UnlessAllAdded(char const* function, int32 status); ///< `status` is the last failing one
};

} // namespace ZuControl::ControlProtocol
