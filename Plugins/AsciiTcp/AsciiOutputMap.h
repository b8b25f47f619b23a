#pragma once

#include "ZuControl/Control/IPreviewedActions.h"
#include "ZuControl/ControlProtocol/ProtocolOutputActionTarget.h"
#include "ZuControl/ControlProtocol/TextIdStandardProtocolOutputMap.h"
#include "wApi/wTypes.h"

#include <cstddef>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace AsciiTcp
{

/// The output map of the service. A new job clears the map of each protocol; this one then has the measurements of the
/// profile under short names, so that the first client can read results without configuration.
class AsciiOutputMap final : public ZuControl::ControlProtocol::TextIdStandardProtocolOutputMap
{
public:
    static constexpr uint16 MOST_OUTPUTS = 1024;

    AsciiOutputMap(); ///< starts as the map of a new job
    ~AsciiOutputMap() override;

    /// Restores the map of a new job: meanZ, points, width, zMax and zMin, each the measurement of that name.
    void Clear() override;

    /// Empties the map.
    void RemoveAll();
};

/// The actions by which clients change the output map. They are those of every map, except for "removeAll": it leaves
/// the map empty, whereas `Clear` restores the map of a new job. Texts are limited to `PluginCommon::MOST_TEXT_BYTES`.
class AsciiOutputActions final : public ZuControl::ControlProtocol::ProtocolOutputActionTarget,
                                 public ZuControl::IPreviewedActions
{
public:
    /// `changedMap` outlives the target.
    explicit AsciiOutputActions(AsciiOutputMap& changedMap);
    ~AsciiOutputActions() override;

    AsciiOutputActions(AsciiOutputActions const&) = delete;
    AsciiOutputActions& operator=(AsciiOutputActions const&) = delete;

    std::shared_ptr<Zu::Params::Group> InvokeAction(std::string const& actionId,
                                                    Zu::Params::Group const& params) override;
    void CheckArguments(Zu::Params::Group const& params) const override;

private:
    AsciiOutputMap& map;
};

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
