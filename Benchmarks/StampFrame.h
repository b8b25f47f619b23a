#pragma once

#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultMeasurementRegisterBlocks.h"
#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultStampRegisterBlock.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlockInfo.h"
#include "ZuCore/ResultItem.h"
#include "wApi/wObject.h"
#include "wApi/wTypes.h"

#include <array>

namespace ZuBench
{

/// A stamp and a measurement as in the pipeline, with the blocks that encode them into registers of a layout.
class StampFrame final
{
public:
    StampFrame(uint8 bytesPerRegister, bool isBigEndian);
    ~StampFrame();

    StampFrame(StampFrame const&) = delete;
    StampFrame& operator=(StampFrame const&) = delete;

    void EncodeStamp();
    void EncodeMeasurement();

private:
    using Info = ZuControl::ControlProtocol::ProtocolRegisterBlockInfo;
    using Item = wHandle<ZuCore::ResultItemObject>;

    Item const stamp;
    Item const measurement;
    Info stampInfo;
    Info measurementInfo;
    ZuControl::ControlProtocol::DefaultStampRegisterBlock stampBlock;
    ZuControl::ControlProtocol::DefaultMeasurementValueAndDecisionRegisterBlock measurementBlock;
    std::array<uint8, 128> registers{};
};

} // namespace ZuBench
