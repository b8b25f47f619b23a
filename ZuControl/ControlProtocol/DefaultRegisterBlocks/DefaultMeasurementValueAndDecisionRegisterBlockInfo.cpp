#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultMeasurementValueAndDecisionRegisterBlockInfo.h"

#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultMeasurementValueAndDecisionRegisterBlock.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlockFactory.h"

namespace ZuControl::ControlProtocol
{

DefaultMeasurementValueAndDecisionRegisterBlockInfo::DefaultMeasurementValueAndDecisionRegisterBlockInfo()
    : ProtocolRegisterBlockInfo(
          {.type = "Measurement",
           .displayName = "Measurement and Decision",
           .category = BlockCategoryMeasurement,
           .deserializedInputSize = 0,
           .registerCount = 5,
           .bytesPerRegister = 1,
           .minInstanceCount = 0,
           .maxInstanceCount = 65534,
           .hasDataSource = true,
           .isProtocolBigEndian = true,
           .factory =
               std::make_shared<ProtocolRegisterBlockFactory<DefaultMeasurementValueAndDecisionRegisterBlock>>()})
{
}

DefaultMeasurementValueAndDecisionRegisterBlockInfo::~DefaultMeasurementValueAndDecisionRegisterBlockInfo() = default;

} // namespace ZuControl::ControlProtocol
