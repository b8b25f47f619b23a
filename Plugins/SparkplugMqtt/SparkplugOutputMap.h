#pragma once

#include "ZuControl/Control/IPreviewedActions.h"
#include "ZuControl/ControlProtocol/ProtocolOutputActionTarget.h"
#include "ZuControl/ControlProtocol/TextIdStandardProtocolOutputMap.h"
#include "wApi/wTypes.h"

#include <memory>
#include <string>

namespace SparkplugMqtt
{

/// The output map of the service. A new job clears the map of each protocol; this one then has the measurements of the
/// profile under short names, so that the first host sees results without configuration.
class SparkplugOutputMap final : public ZuControl::ControlProtocol::TextIdStandardProtocolOutputMap
{
public:
    static constexpr uint16 MOST_OUTPUTS = 512;

    SparkplugOutputMap(); ///< starts as the map of a new job
    ~SparkplugOutputMap() override;

    /// Restores the map of a new job: meanZ, points, width, zMax and zMin, each the measurement of that name.
    void Clear() override;

    /// Empties the map.
    void RemoveAll();
};

/// The actions by which clients change the output map. They are those of every map, except for "removeAll": it leaves
/// the map empty, whereas `Clear` restores the map of a new job. Texts are limited to `PluginCommon::MOST_TEXT_BYTES`.
class SparkplugOutputActions final : public ZuControl::ControlProtocol::ProtocolOutputActionTarget,
                                     public ZuControl::IPreviewedActions
{
public:
    /// `changedMap` outlives the target.
    explicit SparkplugOutputActions(SparkplugOutputMap& changedMap);
    ~SparkplugOutputActions() override;
    SparkplugOutputActions(SparkplugOutputActions const&) = delete;
    SparkplugOutputActions& operator=(SparkplugOutputActions const&) = delete;

    std::shared_ptr<Zu::Params::Group> InvokeAction(std::string const& actionId,
                                                    Zu::Params::Group const& params) override;
    void CheckArguments(Zu::Params::Group const& params) const override;

private:
    SparkplugOutputMap& map;
};

} // namespace SparkplugMqtt
