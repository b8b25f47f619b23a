#pragma once

#include "ZuControl/Export.h"
#include "wApi/wTypes.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace ZuControl::ControlProtocol
{

/// How many items have each data source.
///
/// A flat table with the texts in one string: a map of many thousand items needs a few large allocations. Threads: the
/// class takes no lock.
class ZUCONTROL_API SourceTable final
{
public:
    SourceTable();
    ~SourceTable();

    SourceTable(SourceTable const&) = delete;
    SourceTable& operator=(SourceTable const&) = delete;

    bool Has(std::string_view source) const;

    /// Changes nothing when there is no memory.
    void Add(std::string_view source);

    /// Counts one item less for the source; does nothing for an unknown source. Needs no memory.
    void Remove(std::string_view source);
    void Clear();

private:
    struct Slot
    {
        std::size_t hash = 0;
        std::size_t begin = 0; // of its text
        std::size_t length = 0;
        uint64 users = 0; // 0 in a free slot
    };

    static std::size_t HashOf(std::string_view source);

    /// The slot of this source, else the free slot where it belongs. The table must have slots.
    std::size_t Find(std::string_view source, std::size_t hash) const;
    std::size_t Next(std::size_t slot) const;
    std::string_view TextOf(Slot const& slot) const;
    void Grow();
    void Vacate(std::size_t slot);
    void DropUnusedTexts();

    std::vector<Slot> slots; // a power of two of them, or none; at least half of them are free
    std::size_t count = 0;
    std::string texts;
    std::size_t unusedBytes = 0; // of the texts
};

} // namespace ZuControl::ControlProtocol
