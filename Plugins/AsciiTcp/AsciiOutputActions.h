#pragma once

#include "ZuControl/ControlProtocol/ProtocolOutputActionTarget.h"

namespace AsciiTcp
{

class AsciiOutputMap;

/// The actions by which clients change the output map. They are those of every map, except for "removeAll": it leaves
/// the map empty, whereas `Clear` restores the map of a new job.
class AsciiOutputActions final : public ZuControl::ControlProtocol::ProtocolOutputActionTarget
{
public:
    /// `changedMap` outlives the target.
    explicit AsciiOutputActions(AsciiOutputMap& changedMap);
    ~AsciiOutputActions() override;

    AsciiOutputActions(AsciiOutputActions const&) = delete;
    AsciiOutputActions& operator=(AsciiOutputActions const&) = delete;

    std::shared_ptr<Zu::Params::Group> InvokeAction(std::string const& actionId,
                                                    Zu::Params::Group const& params) override;

private:
    AsciiOutputMap& map;
};

} // namespace AsciiTcp
