#include "Plugins/ModbusTcp/Blocks/SourceListBlock.h"

#include "ZuApi/Exception.h"
#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultMeasurementRegisterBlocks.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlockInfo.h"
#include "ZuControl/ControlProtocol/RegisterBlockParams.h"
#include "ZuVision/ZvMessages.h"

#include <array>
#include <utility>

namespace ModbusTcp
{

using namespace ZuControl::ControlProtocol;

namespace
{

constexpr char SEPARATOR = ',';
constexpr std::size_t MOST_BYTES = 256; // of the registers of a derived block

std::string_view Trimmed(std::string_view text)
{
    std::size_t const first = text.find_first_not_of(' ');
    std::size_t const last = text.find_last_not_of(' ');
    return first == std::string_view::npos ? std::string_view{} : text.substr(first, last - first + 1);
}

std::string const& Checked(std::string const& list)
{
    if (SourceListBlock::Split(list).size() > SourceListBlock::MOST_SOURCES)
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "A list of data sources has at most %1$u places.",
                 static_cast<unsigned>(SourceListBlock::MOST_SOURCES));
    }
    return list;
}

} // namespace

SourceListBlock::SourceListBlock(RegisterBlockParams const& params, ProtocolRegisterBlockInfo& usedInfo)
    : ProtocolScanOutputRegisterBlock(params, usedInfo), sources(Checked(params.dataSource.Get()))
{
    scannerId.EnableUsed(true);
    scannerId.used.Set(false);
}

SourceListBlock::~SourceListBlock() = default;

void SourceListBlock::SetDataSource(std::string const& newDataSource)
{
    ProtocolScanOutputRegisterBlock::SetDataSource(Checked(newDataSource));
}

std::vector<std::string_view> SourceListBlock::Split(std::string_view list)
{
    std::vector<std::string_view> names;
    for (std::size_t end = list.find(SEPARATOR); end != std::string_view::npos; end = list.find(SEPARATOR))
    {
        names.push_back(Trimmed(list.substr(0, end)));
        list.remove_prefix(end + 1);
    }
    names.push_back(Trimmed(list));
    return names;
}

SourceListBlock::Reading SourceListBlock::Read(ZuCore::ResultItem item)
{
    std::array<uint8, MOST_BYTES> unused; // the operations for messages write none of it
    DefaultScanOutputInputData const data{item, 0};
    latest = {};
    ProtocolScanOutputRegisterBlock::Serialize(unused.data(), info.SerializedOutputSize(), &data, sizeof data);
    return latest;
}

uint64 SourceListBlock::Follow(std::string const& newSources)
{
    if (newSources == sources)
    {
        return 0;
    }
    sources = newSources;
    return Clear();
}

void SourceListBlock::SerializeMeasurementMsg(uint8* /*buffer*/, size_t /*offset*/,
                                              DefaultScanOutputInputData const* data)
{
    void const* const message = MessageOf(data->resultItem);
    if (!wObject_Is(message, ZuVision::ZvMeasurementMsg_Class))
    {
        ZU_THROW(Zu::Status::NOT_SUPPORTED);
    }
    int32 value = 0;
    int32 isOutOfRange = 0;
    int32 isInvalid = 0;
    Convert64fTo32s(ZuVision::ZvMeasurementMsg_Value(message), DefaultMeasurementValueRegisterBlock::VALUE_SCALE, value,
                    isOutOfRange, isInvalid);
    if (isOutOfRange == 0 && isInvalid == 0)
    {
        latest.measurement = {value, ZuVision::ZvMeasurementMsg_Decision(message)};
    }
}

void SourceListBlock::SerializeStampMsg(uint8* /*buffer*/, size_t /*offset*/, DefaultScanOutputInputData const* data)
{
    wStamp const* const stamp = ZuVision::ZvMsg_StampAt(MessageOf(data->resultItem), 0);
    if (stamp == nullptr)
    {
        ZU_THROW(Zu::Status::NOT_SUPPORTED);
    }
    latest.stamp = *stamp;
}

void SourceListBlock::SerializeNullMsg(uint8* /*buffer*/, size_t /*offset*/)
{
}

void SourceListBlock::CheckSizes(void const* destination, std::size_t destinationSize, void const* source,
                                 std::size_t sourceSize, std::size_t recordSize) const
{
    if (source == nullptr || sourceSize != recordSize || destination == nullptr ||
        destinationSize != info.SerializedOutputSize())
    {
        ZU_THROW(Zu::Status::WRONG_BUFFER_SIZE, "Insufficient buffer size available for data serialization.");
    }
}

} // namespace ModbusTcp
