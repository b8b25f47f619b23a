#pragma once

#include "ZuControl/ControlProtocol/ProtocolRegisterBlockInfo.h"
#include "ZuControl/Export.h"

namespace ZuControl::ControlProtocol
{

/// The type of blocks with the decision of a measurement: 1 register of one byte.
struct ZUCONTROL_API DefaultMeasurementDecisionRegisterBlockInfo : public ProtocolRegisterBlockInfo
{
public:
    DefaultMeasurementDecisionRegisterBlockInfo();
    ~DefaultMeasurementDecisionRegisterBlockInfo() override;
};

} // namespace ZuControl::ControlProtocol
