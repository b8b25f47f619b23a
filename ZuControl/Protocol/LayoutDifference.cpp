#include "ZuControl/Protocol/LayoutDifference.h"

#include <algorithm>
#include <string_view>
#include <unordered_map>

namespace ZuControl::Protocol
{

using ControlProtocol::Layout;
using ControlProtocol::LayoutEntry;

namespace
{

constexpr uint32 ADDRESSES = 65536;

bool HasNumbers(Layout const& layout)
{
    return layout.kind != Layout::Kind::TEXTS;
}

/// How many addresses an entry takes: one id where ids are plain numbers.
uint32 WidthOf(Layout const& layout, LayoutEntry const& entry)
{
    return layout.isAddressed ? entry.registers : 1;
}

bool HasSameId(LayoutEntry const& left, LayoutEntry const& right)
{
    return left.outputId == right.outputId && left.textId == right.textId;
}

bool HasSameContent(LayoutEntry const& left, LayoutEntry const& right)
{
    return left.source == right.source && left.scannerId == right.scannerId && left.outputSize == right.outputSize &&
           left.dataOffset == right.dataOffset && left.dataLength == right.dataLength &&
           left.isBigEndian == right.isBigEndian && left.areBytesSwapped == right.areBytesSwapped;
}

} // namespace

LayoutDifference::LayoutDifference(Layout const& beforeLayout, Layout const& afterLayout)
    : before(beforeLayout), after(afterLayout)
{
    Match();
    if (HasNumbers(after))
    {
        Image const imageAfter = ImageOf(after);
        FindRuns(ImageOf(before), imageAfter);
        FindUse(imageAfter);
    }
}

LayoutDifference::~LayoutDifference() = default;

void LayoutDifference::Match()
{
    partner.assign(after.entries.size(), NOWHERE);
    std::vector<bool> isKept(before.entries.size());
    for (std::size_t i = 0; i < after.entries.size(); ++i)
    {
        if (uint64 const origin = after.entries[i].origin; origin != LayoutEntry::NEW)
        {
            partner[i] = static_cast<uint32>(origin);
            isKept[origin] = true;
        }
    }
    if (after.kind != Layout::Kind::BLOCKS)
    {
        AdoptBySource(isKept);
    }
    for (uint32 i = 0; i < before.entries.size(); ++i)
    {
        if (!isKept[i])
        {
            removed.push_back(i);
        }
    }
    Sort();
}

/// Sorts the entries after the change by what has become of them.
void LayoutDifference::Sort()
{
    for (uint32 i = 0; i < after.entries.size(); ++i)
    {
        if (partner[i] == NOWHERE)
        {
            added.push_back(i);
            continue;
        }
        LayoutEntry const& old = before.entries[partner[i]];
        LayoutEntry const& now = after.entries[i];
        if (!HasSameId(old, now))
        {
            moved.push_back({partner[i], i});
        }
        if (!HasSameContent(old, now) || old.displayName != now.displayName)
        {
            changed.push_back({partner[i], i});
        }
    }
}

/// A map knows its items by their sources, of which each has one item: an item that was taken out and put in again is
/// the same.
void LayoutDifference::AdoptBySource(std::vector<bool>& isKept)
{
    std::unordered_map<std::string_view, uint32> lost;
    for (uint32 i = 0; i < before.entries.size(); ++i)
    {
        if (!isKept[i])
        {
            lost.emplace(before.entries[i].source, i);
        }
    }
    for (std::size_t i = 0; !lost.empty() && i < partner.size(); ++i)
    {
        auto const found = partner[i] == NOWHERE ? lost.find(after.entries[i].source) : lost.end();
        if (found != lost.end())
        {
            partner[i] = found->second;
            isKept[found->second] = true;
            lost.erase(found);
        }
    }
}

/// Which entry stands at each address; the later one where two overlap.
LayoutDifference::Image LayoutDifference::ImageOf(Layout const& layout)
{
    Image image(ADDRESSES, NOWHERE);
    for (uint32 i = 0; i < layout.entries.size(); ++i)
    {
        LayoutEntry const& entry = layout.entries[i];
        uint32 const end = std::min(ADDRESSES, entry.outputId + WidthOf(layout, entry));
        std::fill(image.begin() + entry.outputId, image.begin() + std::max<uint32>(end, entry.outputId), i);
    }
    return image;
}

void LayoutDifference::FindRuns(Image const& imageBefore, Image const& imageAfter)
{
    uint32 address = 0;
    while (address < ADDRESSES)
    {
        uint32 const begin = address;
        do
        {
            ++address;
        } while (address < ADDRESSES && imageBefore[address] == imageBefore[begin] &&
                 imageAfter[address] == imageAfter[begin]);
        if (!IsSameAt(imageBefore[begin], imageAfter[begin]))
        {
            runs.push_back({begin, address - begin, imageBefore[begin], imageAfter[begin]});
        }
    }
}

bool LayoutDifference::IsSameAt(uint32 entryBefore, uint32 entryAfter) const
{
    if (entryBefore == NOWHERE || entryAfter == NOWHERE)
    {
        return entryBefore == entryAfter;
    }
    LayoutEntry const& old = before.entries[entryBefore];
    LayoutEntry const& now = after.entries[entryAfter];
    return partner[entryAfter] == entryBefore && HasSameId(old, now) && HasSameContent(old, now);
}

void LayoutDifference::FindUse(Image const& imageAfter)
{
    use.all = after.last - after.first + 1;
    if (use.all == 0)
    {
        return;
    }
    uint32 const last = std::min(after.last, ADDRESSES - 1);
    uint32 address = after.first;
    while (address <= last)
    {
        uint32 const begin = address;
        bool const isFree = imageAfter[begin] == NOWHERE;
        while (address <= last && (imageAfter[address] == NOWHERE) == isFree)
        {
            ++address;
        }
        if (!isFree)
        {
            use.used += address - begin;
            continue;
        }
        if (!use.firstFree.has_value())
        {
            use.firstFree = begin;
        }
        if (address <= last)
        {
            use.gaps.push_back({begin, address - begin});
        }
    }
}

} // namespace ZuControl::Protocol
