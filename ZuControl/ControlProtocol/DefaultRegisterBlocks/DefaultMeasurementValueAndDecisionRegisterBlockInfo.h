#pragma once

#include "ZuControl/ControlProtocol/ProtocolRegisterBlockInfo.h"
#include "ZuControl/Export.h"

namespace ZuControl::ControlProtocol
{

/// The type of blocks with value and decision of a measurement: 5 registers of one byte.
struct ZUCONTROL_API DefaultMeasurementValueAndDecisionRegisterBlockInfo : public ProtocolRegisterBlockInfo
{
public:
    DefaultMeasurementValueAndDecisionRegisterBlockInfo();
    ~DefaultMeasurementValueAndDecisionRegisterBlockInfo() override;
};

} // namespace ZuControl::ControlProtocol
