#pragma once

#include "ZuControl/ControlProtocol/ProtocolRegisterBlockInfo.h"
#include "ZuControl/ControlProtocol/ProtocolScanOutputRegisterBlock.h"
#include "ZuControl/Export.h"

namespace ZuControl::ControlProtocol
{

/// A block with the value of a measurement, times 1000. A value that is missing or does not fit is 0x80000000.
///
/// The base is virtual: a block with value and decision shares it. A cast down from ProtocolRegisterBlock must be a
/// dynamic_cast.
struct ZUCONTROL_API DefaultMeasurementValueRegisterBlock : public virtual ProtocolScanOutputRegisterBlock
{
public:
    static constexpr double VALUE_SCALE = 1000.0;

    DefaultMeasurementValueRegisterBlock(RegisterBlockParams const& params, ProtocolRegisterBlockInfo& usedInfo);
    ~DefaultMeasurementValueRegisterBlock() override;

    void SerializeMeasurementMsg(uint8* buffer, size_t offset, DefaultScanOutputInputData const* data) override;
    void SerializeNullMsg(uint8* buffer, size_t offset) override;

    /// `resultItem` is a ZuCore::ResultItem. Throws `Zu::Status::NOT_SUPPORTED`, no text, when its message is no
    /// measurement.
    double GetMeasurementValue(void*& resultItem);
    void SerializeInvalidMeasurementValue(uint8* buffer, size_t offset);

    size_t valueOffset = 0; ///< bytes from the block's start
};

/// The type of blocks with the value of a measurement: 4 registers of one byte.
struct ZUCONTROL_API DefaultMeasurementValueRegisterBlockInfo : public ProtocolRegisterBlockInfo
{
public:
    DefaultMeasurementValueRegisterBlockInfo();
    ~DefaultMeasurementValueRegisterBlockInfo() override;
};

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
