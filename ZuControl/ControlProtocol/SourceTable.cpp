#include "ZuControl/ControlProtocol/SourceTable.h"

#include <algorithm>
#include <functional>
#include <utility>

namespace ZuControl::ControlProtocol
{

SourceTable::SourceTable() = default;
SourceTable::~SourceTable() = default;

bool SourceTable::Has(std::string_view source) const
{
    return count > 0 && slots[Find(source, HashOf(source))].users > 0;
}

void SourceTable::Add(std::string_view source)
{
    if (2 * (count + 1) > slots.size())
    {
        Grow();
    }
    if (2 * unusedBytes > texts.size())
    {
        DropUnusedTexts(); // here and not in `Remove`, which must not need memory
    }
    std::size_t const hash = HashOf(source);
    Slot& slot = slots[Find(source, hash)];
    if (slot.users == 0)
    {
        std::size_t const begin = texts.size();
        texts.append(source);
        slot = {hash, begin, source.size(), 0};
        ++count;
    }
    ++slot.users;
}

void SourceTable::Remove(std::string_view source)
{
    if (!Has(source))
    {
        return;
    }
    std::size_t const found = Find(source, HashOf(source));
    if (--slots[found].users == 0)
    {
        unusedBytes += slots[found].length;
        --count;
        Vacate(found);
    }
}

void SourceTable::Clear()
{
    slots.clear();
    count = 0;
    texts.clear();
    unusedBytes = 0;
}

std::size_t SourceTable::HashOf(std::string_view source)
{
    return std::hash<std::string_view>()(source);
}

std::size_t SourceTable::Find(std::string_view source, std::size_t hash) const
{
    std::size_t slot = hash & (slots.size() - 1);
    while (slots[slot].users > 0 && (slots[slot].hash != hash || TextOf(slots[slot]) != source))
    {
        slot = Next(slot);
    }
    return slot;
}

std::size_t SourceTable::Next(std::size_t slot) const
{
    return (slot + 1) & (slots.size() - 1);
}

std::string_view SourceTable::TextOf(Slot const& slot) const
{
    return std::string_view(texts).substr(slot.begin, slot.length);
}

void SourceTable::Grow()
{
    constexpr std::size_t FIRST_SLOTS = 16;
    std::vector<Slot> const old = std::exchange(slots, std::vector<Slot>(std::max(FIRST_SLOTS, 2 * slots.size())));
    for (Slot const& slot : old)
    {
        if (slot.users > 0)
        {
            slots[Find(TextOf(slot), slot.hash)] = slot;
        }
    }
}

/// Frees the slot. Entries behind it move up when their search begins at the free slot or before it.
void SourceTable::Vacate(std::size_t slot)
{
    std::size_t const mask = slots.size() - 1;
    std::size_t gap = slot;
    for (std::size_t next = Next(gap); slots[next].users > 0; next = Next(next))
    {
        std::size_t const walked = (next - slots[next].hash) & mask;
        if (walked >= ((next - gap) & mask))
        {
            slots[gap] = slots[next];
            gap = next;
        }
    }
    slots[gap] = {};
}

void SourceTable::DropUnusedTexts()
{
    std::string kept;
    kept.reserve(2 * (texts.size() - unusedBytes)); // the next ones too
    for (Slot& slot : slots)
    {
        if (slot.users > 0)
        {
            std::size_t const begin = kept.size();
            kept.append(TextOf(slot)); // fits
            slot.begin = begin;
        }
    }
    texts = std::move(kept);
    unusedBytes = 0;
}

} // namespace ZuControl::ControlProtocol
