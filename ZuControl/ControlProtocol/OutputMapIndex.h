#pragma once

#include "ZuControl/ControlProtocol/SourceTable.h"
#include "ZuControl/Export.h"
#include "wApi/wTypes.h"

#include <string>
#include <vector>

namespace ZuControl::ControlProtocol
{

/// The lookup of an output map, beside its records: the output ids in item order, and the sources.
///
/// Without it a map of many thousand items would walk all its records for every new source. It holds an id and a source
/// for each item, also where two items have the same id or source.
/// Threads: the class takes no lock; the map's lock guards it.
template <typename OutputId>
class ZUCONTROL_API OutputMapIndex final
{
public:
    OutputMapIndex();
    ~OutputMapIndex();

    OutputMapIndex(OutputMapIndex const&) = delete;
    OutputMapIndex& operator=(OutputMapIndex const&) = delete;

    uint64 Count() const;
    bool HasSource(std::string const& source) const;

    /// Whether there is an item at `position` and it has this id.
    bool HasIdAt(uint64 position, OutputId const& id) const;

    /// Bisection: the position of an item with this id, else the position where the item belongs, up to the count. With
    /// ids out of order the result may be any position up to the count.
    uint64 FindPlace(OutputId const& id) const;

    // `position` is below the count, for `Insert` at most the count. The old source is the item's present source.
    void Insert(uint64 position, OutputId const& id, std::string const& source);
    void Replace(uint64 position, OutputId const& id, std::string const& oldSource, std::string const& newSource);
    void SetId(uint64 position, OutputId const& id);
    void Erase(uint64 position, std::string const& oldSource);
    void Clear();

private:
    std::vector<OutputId> ids;
    SourceTable sources;
};

extern template class OutputMapIndex<uint16>;
extern template class OutputMapIndex<std::string>;

} // namespace ZuControl::ControlProtocol
