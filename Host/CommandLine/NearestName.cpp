#include "Host/CommandLine/NearestName.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace ZuHost
{

namespace
{

/// The Levenshtein distance (V. I. Levenshtein, "Binary codes capable of correcting deletions, insertions and reversals",
/// 1966), a row of the table at a time.
std::size_t Distance(std::string_view left, std::string_view right)
{
    std::vector<std::size_t> row(right.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < left.size(); ++i)
    {
        std::size_t diagonal = std::exchange(row[0], i + 1);
        for (std::size_t j = 0; j < right.size(); ++j)
        {
            std::size_t const replaced = diagonal + (left[i] == right[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({replaced, row[j] + 1, row[j + 1] + 1});
        }
    }
    return row.back();
}

} // namespace

std::string NearestName(std::string_view text, std::vector<std::string> const& names)
{
    std::string const* nearest = nullptr;
    std::size_t least = text.size() / 2 + 1;
    for (std::string const& name : names)
    {
        if (std::size_t const distance = Distance(text, name); distance < least)
        {
            least = distance;
            nearest = &name;
        }
    }
    return nearest == nullptr ? "" : *nearest;
}

} // namespace ZuHost
