#pragma once

#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultMeasurementRegisterBlocks.h"
#include "ZuControl/ControlProtocol/RegisterField.h"
#include "wApi/wTypes.h"

#include <cstddef>
#include <vector>

namespace ModbusTcp
{

/// Registers: 0 and 1 the value of a measurement as a floating point number of 32 bits, in the unit of the measurement.
/// A value that is missing, is no number or does not fit is NaN, 0x7FC00000.
struct MeasurementRealBlock : public ZuControl::ControlProtocol::DefaultMeasurementValueRegisterBlock,
                              public ZuControl::ControlProtocol::IDescribedBlock
{
public:
    static constexpr char const* TYPE = "MeasurementReal";
    static constexpr uint16 REGISTERS = 2;

    MeasurementRealBlock(ZuControl::ControlProtocol::RegisterBlockParams const& params,
                         ZuControl::ControlProtocol::ProtocolRegisterBlockInfo& usedInfo);
    ~MeasurementRealBlock() override;

    void SerializeMeasurementMsg(uint8* buffer, size_t offset, DefaultScanOutputInputData const* data) override;
    void SerializeNullMsg(uint8* buffer, size_t offset) override;

    std::vector<ZuControl::ControlProtocol::RegisterField> Fields() const override;

    /// The mark of a missing value; it hides the mark of the base.
    void SerializeInvalidMeasurementValue(uint8* buffer, size_t offset);

private:
    void Write(uint8* buffer, size_t offset, float value);
};

} // namespace ModbusTcp
