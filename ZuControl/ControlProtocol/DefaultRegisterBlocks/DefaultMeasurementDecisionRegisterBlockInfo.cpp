#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultMeasurementDecisionRegisterBlockInfo.h"

#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultMeasurementDecisionRegisterBlock.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlockFactory.h"

namespace ZuControl::ControlProtocol
{

DefaultMeasurementDecisionRegisterBlockInfo::DefaultMeasurementDecisionRegisterBlockInfo()
    : ProtocolRegisterBlockInfo(
          {.type = "Decision",
           .displayName = "Decision",
           .category = BlockCategoryMeasurement,
           .deserializedInputSize = 0,
           .registerCount = 1,
           .bytesPerRegister = 1,
           .minInstanceCount = 0,
           .maxInstanceCount = 65534,
           .hasDataSource = true,
           .isProtocolBigEndian = true,
           .factory = std::make_shared<ProtocolRegisterBlockFactory<DefaultMeasurementDecisionRegisterBlock>>()})
{
}

DefaultMeasurementDecisionRegisterBlockInfo::~DefaultMeasurementDecisionRegisterBlockInfo() = default;

} // namespace ZuControl::ControlProtocol
