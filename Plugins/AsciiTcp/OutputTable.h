#pragma once

#include "wApi/wTypes.h"

#include <cstddef>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace ZuControl::ControlProtocol
{
class TextIdStandardProtocolOutputMap;
}

namespace AsciiTcp
{

/// An immutable copy of the output map: names and data sources. With it neither clients nor results wait for the map's
/// lock.
class OutputTable final
{
public:
    static constexpr std::size_t NOWHERE = ~std::size_t{0};

    struct Output
    {
        std::string name;
        std::string written; ///< the name as lines show it
        std::string source;
        uint64 dataSource = 0; ///< the number of the source in results
    };

    /// Holds the map's lock while it copies the list.
    static std::shared_ptr<OutputTable const> Take(ZuControl::ControlProtocol::TextIdStandardProtocolOutputMap& map);

    /// Sorted by the bytes of the names.
    std::span<Output const> Outputs() const
    {
        return outputs;
    }

    /// The index of the output, or NOWHERE.
    std::size_t FindName(std::string_view name) const;
    std::size_t FindDataSource(uint64 dataSource) const;

private:
    std::vector<Output> outputs;
    std::vector<std::pair<uint64, std::size_t>> places; // outputs' indices, sorted by the number of the source
};

} // namespace AsciiTcp
