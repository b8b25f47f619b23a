#pragma once

#include "ZuControl/ControlProtocol/SourceTable.h"
#include "ZuControl/Export.h"
#include "wApi/wTypes.h"

#include <string>
#include <vector>

namespace ZuControl::ControlProtocol
{

/// What an output map looks up, beside its records: the output ids in item order, and the sources.
///
/// A map of many thousand items would otherwise walk all its records for every source that comes in. What it answers is what
/// a look at the records answers: an id and a source for each item, also where an id or a source is there twice.
/// Threads: none of its own; the map's lock guards it.
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

    /// Bisection: the position of an item with this id, else the place where it belongs; the count is behind the last. Ids
    /// that are out of order lead it anywhere within the count.
    uint64 FindPlace(OutputId const& id) const;

    // `position` lies within the count, for `Insert` also at it. The old source is what the item had so far.
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
