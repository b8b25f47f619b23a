#pragma once

#include "ZuControl/ControlProtocol/ProtocolRegisterBlockInfo.h"
#include "ZuControl/ControlProtocol/ProtocolScanOutputRegisterBlock.h"
#include "ZuControl/Export.h"

namespace ZuControl::ControlProtocol
{

/// A block with the decision of a measurement as the message has it, also with an invalid value; 2 without a message.
///
/// The base is virtual: a block with value and decision shares it. A cast down from ProtocolRegisterBlock must be a
/// dynamic_cast.
struct ZUCONTROL_API DefaultMeasurementDecisionRegisterBlock : public virtual ProtocolScanOutputRegisterBlock
{
public:
    DefaultMeasurementDecisionRegisterBlock(RegisterBlockParams const& params, ProtocolRegisterBlockInfo& usedInfo);
    ~DefaultMeasurementDecisionRegisterBlock() override;

    void SerializeMeasurementMsg(uint8* buffer, size_t offset, DefaultScanOutputInputData const* data) override;
    void SerializeNullMsg(uint8* buffer, size_t offset) override;

    /// `decision`, with the invalid bit set when it is not valid. For plug-ins.
    uint8 GetDecision(uint8 decision, bool isValid);
    /// `resultItem` is a ZuCore::ResultItem. Throws `Zu::Status::NOT_SUPPORTED`, no text, when its message is no
    /// measurement.
    uint8 GetDecisionByte(void*& resultItem);
    void SerializeInvalidMeasurementDecision(uint8* buffer, size_t offset);

    size_t decisionOffset = 0; ///< bytes from the block's start
    uint8 invalidDecisionBit = 1;

private:
    void SerializeDecision(uint8* buffer, size_t offset, uint8 decision);
};

/// The type of blocks with the decision of a measurement: 1 register of one byte.
struct ZUCONTROL_API DefaultMeasurementDecisionRegisterBlockInfo : public ProtocolRegisterBlockInfo
{
public:
    DefaultMeasurementDecisionRegisterBlockInfo();
    ~DefaultMeasurementDecisionRegisterBlockInfo() override;
};

} // namespace ZuControl::ControlProtocol
