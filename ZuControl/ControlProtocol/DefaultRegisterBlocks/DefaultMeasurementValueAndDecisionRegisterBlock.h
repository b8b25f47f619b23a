#pragma once

#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultMeasurementDecisionRegisterBlock.h"
#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultMeasurementValueRegisterBlock.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlockInfo.h"
#include "ZuControl/Export.h"

namespace ZuControl::ControlProtocol
{

/// A block with value and decision of a measurement. Unlike in the block with the decision alone, an invalid value
/// makes the decision invalid.
struct ZUCONTROL_API DefaultMeasurementValueAndDecisionRegisterBlock : public DefaultMeasurementValueRegisterBlock,
                                                                       public DefaultMeasurementDecisionRegisterBlock
{
public:
    DefaultMeasurementValueAndDecisionRegisterBlock(RegisterBlockParams const& params,
                                                    ProtocolRegisterBlockInfo& usedInfo);
    ~DefaultMeasurementValueAndDecisionRegisterBlock() override;

    void SerializeMeasurementMsg(uint8* buffer, size_t offset, DefaultScanOutputInputData const* data) override;
    void SerializeNullMsg(uint8* buffer, size_t offset) override;

private:
    void SerializeInvalidMeasurement(uint8* buffer, size_t offset);
    void CheckBothFit() const;
};

/// The type of blocks with value and decision of a measurement: 5 registers of one byte.
struct ZUCONTROL_API DefaultMeasurementValueAndDecisionRegisterBlockInfo : public ProtocolRegisterBlockInfo
{
public:
    DefaultMeasurementValueAndDecisionRegisterBlockInfo();
    ~DefaultMeasurementValueAndDecisionRegisterBlockInfo() override;
};

} // namespace ZuControl::ControlProtocol
