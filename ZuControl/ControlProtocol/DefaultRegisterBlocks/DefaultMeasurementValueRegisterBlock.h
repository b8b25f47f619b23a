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

} // namespace ZuControl::ControlProtocol
