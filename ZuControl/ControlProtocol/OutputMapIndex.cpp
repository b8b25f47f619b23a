#include "ZuControl/ControlProtocol/OutputMapIndex.h"

namespace ZuControl::ControlProtocol
{

template <typename OutputId>
OutputMapIndex<OutputId>::OutputMapIndex() = default;

template <typename OutputId>
OutputMapIndex<OutputId>::~OutputMapIndex() = default;

template <typename OutputId>
uint64 OutputMapIndex<OutputId>::Count() const
{
    return ids.size();
}

template <typename OutputId>
bool OutputMapIndex<OutputId>::HasSource(std::string const& source) const
{
    return sources.Has(source);
}

template <typename OutputId>
bool OutputMapIndex<OutputId>::HasIdAt(uint64 position, OutputId const& id) const
{
    return position < ids.size() && ids[position] == id;
}

template <typename OutputId>
uint64 OutputMapIndex<OutputId>::FindPlace(OutputId const& id) const
{
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
void OutputMapIndex<OutputId>::Insert(uint64 position, OutputId const& id, std::string const& source)
{
    ids.insert(ids.begin() + static_cast<std::ptrdiff_t>(position), id);
    sources.Add(source);
}

template <typename OutputId>
void OutputMapIndex<OutputId>::Replace(uint64 position, OutputId const& id, std::string const& oldSource,
                                       std::string const& newSource)
{
    ids[position] = id;
    sources.Add(newSource); // first: the old one may be the same
    sources.Remove(oldSource);
}

template <typename OutputId>
void OutputMapIndex<OutputId>::SetId(uint64 position, OutputId const& id)
{
    ids[position] = id;
}

template <typename OutputId>
void OutputMapIndex<OutputId>::Erase(uint64 position, std::string const& oldSource)
{
    ids.erase(ids.begin() + static_cast<std::ptrdiff_t>(position));
    sources.Remove(oldSource);
}

template <typename OutputId>
void OutputMapIndex<OutputId>::Clear()
{
    ids.clear();
    sources.Clear();
}

template class OutputMapIndex<uint16>;
template class OutputMapIndex<std::string>;

} // namespace ZuControl::ControlProtocol
