#include "ZuControl/ControlProtocol/ProtocolScanOutputRegisterBlock.h"

#include "ZuApi/Exception.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlockInfo.h"
#include "ZuControl/ControlProtocol/RegisterBlockParams.h"
#include "ZuVision/ZvMessages.h"
#include "wBeacon/wMsgInfo.h"

#include <cstring>

namespace ZuControl::ControlProtocol
{

ProtocolScanOutputRegisterBlock::ProtocolScanOutputRegisterBlock(RegisterBlockParams const& params,
                                                                 ProtocolRegisterBlockInfo& usedInfo)
    : ProtocolRegisterBlock(params, usedInfo),
      dataSource(usedInfo.HasDataSource() ? params.dataSource.Get() : std::string())
{
    if (!usedInfo.HasDataSource())
    {
        ZU_THROW(Zu::Status::ID_CONFLICT, "Register block type %1$s must support scan output data sources",
                 params.type.Get().c_str());
    }
    Register("dataSource", "Scan Output Data Source", dataSource);
}

ProtocolScanOutputRegisterBlock::~ProtocolScanOutputRegisterBlock()
{
    Deregister("dataSource");
}

void ProtocolScanOutputRegisterBlock::Serialize(void* destination, size_t destinationSize, void const* source,
                                                size_t sourceSize)
{
    if (source == nullptr || sourceSize != sizeof(DefaultScanOutputInputData))
    {
        ZU_THROW(Zu::Status::WRONG_BUFFER_SIZE, "Insufficient source buffer size available for data serialization.");
    }
    if (destination == nullptr || destinationSize != info.SerializedOutputSize())
    {
        ZU_THROW(Zu::Status::WRONG_BUFFER_SIZE,
                 "Insufficient destination buffer size available for data serialization output.");
    }
    SerializeData(static_cast<uint8*>(destination), 0, static_cast<DefaultScanOutputInputData const*>(source));
}

void ProtocolScanOutputRegisterBlock::SetDataSource(std::string const& newDataSource)
{
    dataSource.Set(newDataSource);
}

std::string const& ProtocolScanOutputRegisterBlock::DataSource() const
{
    return dataSource.Get();
}

void ProtocolScanOutputRegisterBlock::SerializeMeasurementMsg(uint8* /*buffer*/, size_t /*offset*/,
                                                              DefaultScanOutputInputData const* /*data*/)
{
    ZU_THROW(Zu::Status::NOT_SUPPORTED);
}

void ProtocolScanOutputRegisterBlock::SerializeStampMsg(uint8* /*buffer*/, size_t /*offset*/,
                                                        DefaultScanOutputInputData const* /*data*/)
{
    ZU_THROW(Zu::Status::NOT_SUPPORTED);
}

void ProtocolScanOutputRegisterBlock::SerializeNullMsg(uint8* /*buffer*/, size_t /*offset*/)
{
    ZU_THROW(Zu::Status::NOT_SUPPORTED);
}

void* ProtocolScanOutputRegisterBlock::MessageOf(ZuCore::ResultItem item)
{
    wMsgInfo const* const msgInfo = ZuCore::ResultItem_MsgInfo(item);
    return msgInfo != nullptr ? wMsgInfo_Msg(msgInfo) : nullptr;
}

void ProtocolScanOutputRegisterBlock::CheckFit(size_t endOfFields) const
{
    if (!FieldsFit(endOfFields))
    {
        ZU_THROW(Zu::Status::WRONG_BUFFER_SIZE,
                 "Insufficient destination buffer size available for data serialization output.");
    }
}

void ProtocolScanOutputRegisterBlock::SerializeScanData(uint8* buffer, DefaultScanOutputInputData const* data)
{
    SerializeData(buffer, 0, data);
}

void ProtocolScanOutputRegisterBlock::SerializeData(uint8* buffer, size_t offset,
                                                    DefaultScanOutputInputData const* data)
{
    DefaultScanOutputInputData used;
    std::memcpy(&used, data, sizeof used);
    if (!wObject_Is(MessageOf(used.resultItem), ZuVision::ZvArrayMsg_Class))
    {
        SerializeMessage(buffer, offset, used);
        return;
    }
    wHandle<ZuCore::ResultItemObject> const element = FirstElementOf(used.resultItem); // released on every path
    used.resultItem = element.get();
    SerializeMessage(buffer, offset, used);
}

void ProtocolScanOutputRegisterBlock::SerializeMessage(uint8* buffer, size_t offset,
                                                       DefaultScanOutputInputData const& data)
{
    if (IsResultItemNullMsg(data.resultItem))
    {
        SerializeNullMsg(buffer, offset);
        return;
    }
    uint16 const resultType = ZuCore::ResultInfo_Type(ZuCore::ResultItem_ResultInfo(data.resultItem));
    switch (resultType)
    {
    case ZuCore::RESULT_TYPE_STAMP:
        SerializeStampMsg(buffer, offset, &data);
        break;
    case ZuCore::RESULT_TYPE_MEASUREMENT:
        SerializeMeasurementMsg(buffer, offset, &data);
        break;
    default:
        ZU_THROW(Zu::Status::NOT_SUPPORTED, "Unsupported message type %1$u", unsigned{resultType});
    }
}

wHandle<ZuCore::ResultItemObject> ProtocolScanOutputRegisterBlock::FirstElementOf(ZuCore::ResultItem item)
{
    wMsgInfo const* const arrayInfo = ZuCore::ResultItem_MsgInfo(item);
    void const* const array = wMsgInfo_Msg(arrayInfo);
    if (ZuVision::ZvArrayMsg_Count(array) == 0)
    {
        ZU_THROW(Zu::Status::WRONG_BUFFER_SIZE);
    }
    wMsgInfo* elementInfo = nullptr;
    ZU_CHECK(wMsgInfo_Construct(&elementInfo, wMsgInfo_First(arrayInfo), wMsgInfo_Second(arrayInfo),
                                ZuVision::ZvArrayMsg_At(array, 0), nullptr));
    wHandle<wMsgInfo> const heldInfo(elementInfo);
    ZuCore::ResultItem element = nullptr;
    ZU_CHECK(ZuCore::ResultItem_Construct(&element, elementInfo, ZuCore::ResultItem_ResultInfo(item), nullptr));
    return wHandle<ZuCore::ResultItemObject>(element);
}

bool ProtocolScanOutputRegisterBlock::IsMsgSetNullMsg(void* msg) const
{
    return wObject_Is(msg, ZuVision::ZvNullMsg_Class);
}

bool ProtocolScanOutputRegisterBlock::IsResultItemNullMsg(void* item) const
{
    return IsMsgSetNullMsg(MessageOf(static_cast<ZuCore::ResultItem>(item)));
}

} // namespace ZuControl::ControlProtocol
