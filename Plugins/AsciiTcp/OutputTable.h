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

/// Which name stands for which data source at one moment: a flat view of the output map that never changes, so that neither
/// a client nor a result waits for the map's lock.
class OutputTable final
{
public:
    static constexpr std::size_t NOWHERE = ~std::size_t{0};

    struct Output
    {
        std::string name;
        std::string written; ///< the name as it stands on a line
        std::string source;
        uint64 dataSource = 0; ///< the number of the source, as results carry it
    };

    /// Takes the map's lock for as long as it reads the list.
    static std::shared_ptr<OutputTable const> Take(ZuControl::ControlProtocol::TextIdStandardProtocolOutputMap& map);

    /// In the order of the names' bytes.
    std::span<Output const> Outputs() const
    {
        return outputs;
    }

    /// The index of the output, or NOWHERE.
    std::size_t FindName(std::string_view name) const;
    std::size_t FindDataSource(uint64 dataSource) const;

private:
    std::vector<Output> outputs;
    std::vector<std::pair<uint64, std::size_t>> places; // of the data sources, by their numbers
};

} // namespace AsciiTcp
