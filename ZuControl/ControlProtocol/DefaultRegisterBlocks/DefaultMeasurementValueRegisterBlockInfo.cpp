#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultMeasurementValueRegisterBlockInfo.h"

#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultMeasurementValueRegisterBlock.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlockFactory.h"

namespace ZuControl::ControlProtocol
{

DefaultMeasurementValueRegisterBlockInfo::DefaultMeasurementValueRegisterBlockInfo()
    : ProtocolRegisterBlockInfo(
          {.type = "MeasurementValue", // its display name is the key of the type with the decision
           .displayName = "Measurement",
           .category = BlockCategoryMeasurement,
           .deserializedInputSize = 0,
           .registerCount = 4,
           .bytesPerRegister = 1,
           .minInstanceCount = 0,
           .maxInstanceCount = 65534,
           .hasDataSource = true,
           .isProtocolBigEndian = true,
           .factory = std::make_shared<ProtocolRegisterBlockFactory<DefaultMeasurementValueRegisterBlock>>()})
{
}

DefaultMeasurementValueRegisterBlockInfo::~DefaultMeasurementValueRegisterBlockInfo() = default;

} // namespace ZuControl::ControlProtocol
