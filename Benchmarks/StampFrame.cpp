#include "StampFrame.h"

#include "ZuApi/Exception.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlockFactory.h"
#include "ZuControl/ControlProtocol/RegisterBlockParams.h"
#include "ZuVision/ZvMessages.h"
#include "wBeacon/wMsgInfo.h"

namespace ZuBench
{

using namespace ZuControl::ControlProtocol;

namespace
{

wHandle<ZuCore::ResultItemObject> MakeItem(void* msg, uint16 type)
{
    wHandle<void> const owned(msg);
    wMsgInfo* msgInfo = nullptr;
    ZU_CHECK(wMsgInfo_Construct(&msgInfo, 0, 0, msg, nullptr));
    wHandle<wMsgInfo> const ownedInfo(msgInfo);
    ZuCore::ResultInfo info = nullptr;
    ZU_CHECK(ZuCore::ResultInfo_Construct(&info, "source", type, nullptr));
    wHandle<ZuCore::ResultInfoObject> const ownedResultInfo(info);
    ZuCore::ResultItem item = nullptr;
    ZU_CHECK(ZuCore::ResultItem_Construct(&item, msgInfo, info, nullptr));
    return wHandle<ZuCore::ResultItemObject>(item);
}

void* MakeStamp()
{
    ZuVision::ZvStampMsg* msg = nullptr;
    ZU_CHECK(ZuVision::ZvStampMsg_Construct(&msg, wStamp{0x33, 1, 2, -3, 4}, nullptr));
    return msg;
}

void* MakeMeasurement()
{
    ZuVision::ZvMeasurementMsg* msg = nullptr;
    ZU_CHECK(ZuVision::ZvMeasurementMsg_Construct(&msg, 12.345, 1, nullptr));
    return msg;
}

template <typename Block>
RegisterBlockInfoParams TypeOf(uint16 registers, uint8 bytesPerRegister, bool isBigEndian)
{
    RegisterBlockInfoParams params;
    params.type = "Result";
    params.registerCount = registers;
    params.bytesPerRegister = bytesPerRegister;
    params.isProtocolBigEndian = isBigEndian;
    params.maxInstanceCount = 1;
    params.hasDataSource = true;
    params.factory = std::make_shared<ProtocolRegisterBlockFactory<Block>>();
    return params;
}

} // namespace

StampFrame::StampFrame(uint8 bytesPerRegister, bool isBigEndian)
    : stamp(MakeItem(MakeStamp(), ZuCore::RESULT_TYPE_STAMP)),
      measurement(MakeItem(MakeMeasurement(), ZuCore::RESULT_TYPE_MEASUREMENT)),
      stampInfo(TypeOf<DefaultStampRegisterBlock>(36, bytesPerRegister, isBigEndian)),
      measurementInfo(TypeOf<DefaultMeasurementValueAndDecisionRegisterBlock>(6, bytesPerRegister, isBigEndian)),
      stampBlock(RegisterBlockParams(), stampInfo),
      measurementBlock(RegisterBlockParams(), measurementInfo)
{
}

StampFrame::~StampFrame() = default;

void StampFrame::EncodeStamp()
{
    ProtocolScanOutputRegisterBlock::DefaultScanOutputInputData const data{stamp.get(), 0};
    stampBlock.Serialize(registers.data(), stampInfo.SerializedOutputSize(), &data, sizeof data);
}

void StampFrame::EncodeMeasurement()
{
    ProtocolScanOutputRegisterBlock::DefaultScanOutputInputData const data{measurement.get(), 0};
    measurementBlock.Serialize(registers.data(), measurementInfo.SerializedOutputSize(), &data, sizeof data);
}

} // namespace ZuBench
