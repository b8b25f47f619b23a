#include "ZuControl/ControlProtocol/ProtocolRegisterBlock.h"

#include "ZuApi/Exception.h"
#include "ZuApi/Logging.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlockInfo.h"
#include "ZuControl/ControlProtocol/RegisterBlockParams.h"
#include "wApi/wString.h"

#include <cmath>
#include <limits>

namespace ZuControl::ControlProtocol
{

namespace
{

/// The value of a measurement that is missing.
constexpr double MISSING_VALUE = std::numeric_limits<double>::lowest();
constexpr int32 INVALID_RESULT = std::numeric_limits<int32>::min();
constexpr double TWO_TO_THE_63 = 9223372036854775808.0;
constexpr char const* JOB_FILE_ENDING = ".zpjob";

/// The smallest number when signed, all ones when not.
template <typename T>
constexpr T InvalidPattern(bool isSigned)
{
    constexpr T ALL_ONES = std::numeric_limits<T>::max();
    return isSigned ? static_cast<T>(ALL_ONES ^ (ALL_ONES >> 1)) : ALL_ONES;
}

} // namespace

ProtocolRegisterBlock::ProtocolRegisterBlock(RegisterBlockParams const& params, ProtocolRegisterBlockInfo& usedInfo)
    : Group(""),
      info(usedInfo),
      type(usedInfo.Type()),
      displayName(params.displayName.Get()),
      scannerId(params.scannerId.Get()),
      outputId(params.outputId.Get())
{
    if (info.IsGlobalAddressSpaceUsed() && outputId.Get() == RegisterBlockParams::NO_OUTPUT_ID)
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "An output id must be specified.");
    }
    Register("type", "Type", type);
    Register("displayName", "Display Name", displayName);
    Register("scannerId", "Scanner Id", scannerId);
    Register("outputId", "Output Id", outputId).EnableMinimum(true).SetMinimum(0);
    type.EnableReadOnly().readOnly.Set(true);
    // In an observer and not in SetOutputId: a plug-in may also set the id through the record.
    outputId.AddObserver([&usedInfo](Zu::Properties::Node&) { usedInfo.NotePlacementChange(); });
}

ProtocolRegisterBlock::~ProtocolRegisterBlock()
{
    for (char const* const key : {"type", "displayName", "scannerId", "outputId"})
    {
        Deregister(key);
    }
}

void ProtocolRegisterBlock::Serialize(void* /*destination*/, size_t /*destinationSize*/, void const* /*source*/,
                                      size_t /*sourceSize*/)
{
    ZU_THROW(Zu::Status::NOT_SUPPORTED);
}

void ProtocolRegisterBlock::Deserialize(void* /*destination*/, size_t /*destinationSize*/, void const* /*source*/,
                                        size_t /*sourceSize*/)
{
    ZU_THROW(Zu::Status::NOT_SUPPORTED);
}

void ProtocolRegisterBlock::SetDataSource(std::string const& /*newDataSource*/)
{
    ZU_THROW(Zu::Status::NOT_SUPPORTED, "Register block type %1$s does not support a data source", Type().c_str());
}

std::string const& ProtocolRegisterBlock::DataSource() const
{
    ZU_THROW(Zu::Status::NOT_SUPPORTED, "Register block type %1$s does not have a data source", Type().c_str());
}

std::string const& ProtocolRegisterBlock::Type() const
{
    return type.Get();
}

std::string const& ProtocolRegisterBlock::DisplayName() const
{
    return displayName.Get();
}

void ProtocolRegisterBlock::SetDisplayName(std::string const& newDisplayName)
{
    displayName.Set(newDisplayName);
}

std::string const& ProtocolRegisterBlock::ScannerId() const
{
    return scannerId.Get();
}

void ProtocolRegisterBlock::SetScannerId(std::string const& newScannerId)
{
    scannerId.Set(newScannerId);
}

uint16 ProtocolRegisterBlock::OutputId() const
{
    return outputId.Get();
}

void ProtocolRegisterBlock::SetOutputId(uint16 newOutputId)
{
    outputId.Set(newOutputId);
}

uint16 ProtocolRegisterBlock::RegisterCount() const
{
    return info.RegisterCount();
}

uint8 ProtocolRegisterBlock::BytesPerRegister() const
{
    return info.BytesPerRegister();
}

uint16 ProtocolRegisterBlock::EndAddress() const
{
    if (!info.IsGlobalAddressSpaceUsed())
    {
        return OutputId();
    }
    return static_cast<uint16>(OutputId() + RegisterCount() - 1);
}

bool ProtocolRegisterBlock::HasDataSource() const
{
    return info.HasDataSource();
}

bool ProtocolRegisterBlock::AtMaxInstance() const
{
    return info.AtMaxInstance();
}

bool ProtocolRegisterBlock::AtMinInstance() const
{
    return info.AtMinInstance();
}

void ProtocolRegisterBlock::IncrementInstanceCount()
{
    info.IncrementInstanceCount();
}

void ProtocolRegisterBlock::DecrementInstanceCount()
{
    info.DecrementInstanceCount();
}

void ProtocolRegisterBlock::SerializeInvalidValue(uint8* buffer, size_t offset, size_t numOfBytes, bool isSigned)
{
    CheckBytesPerRegister("ZuControl::ControlProtocol::ProtocolRegisterBlock::SerializeInvalidValue");
    RegisterEncoder const encoder(BytesPerRegister(), IsProtocolBigEndian());
    switch (numOfBytes)
    {
    case 1:
        encoder.WriteExact(buffer + offset, InvalidPattern<uint8>(isSigned));
        break;
    case 2:
        encoder.WriteExact(buffer + offset, InvalidPattern<uint16>(isSigned));
        break;
    case 4:
        encoder.WriteExact(buffer + offset, InvalidPattern<uint32>(isSigned));
        break;
    case 8:
        encoder.WriteExact(buffer + offset, InvalidPattern<uint64>(isSigned));
        break;
    default:
        // The text names the register size and not the refused width: readers of the log rely on it.
        ZU_LOG_WARNING("BytesPerRegister (%u) specified is not valid", unsigned{BytesPerRegister()});
        break;
    }
}

void ProtocolRegisterBlock::Deserialize16(uint16& value, uint8 const* buffer, size_t offset)
{
    if (IsProtocolBigEndian())
    {
        Deserialize16_BE(value, buffer, offset);
    }
    else
    {
        Deserialize16_LE(value, buffer, offset);
    }
}

void ProtocolRegisterBlock::Deserialize16_BE(uint16& value, uint8 const* buffer, size_t offset)
{
    value = static_cast<uint16>((buffer[offset] << 8) | buffer[offset + 1]);
}

void ProtocolRegisterBlock::Deserialize16_LE(uint16& value, uint8 const* buffer, size_t offset)
{
    value = static_cast<uint16>((buffer[offset + 1] << 8) | buffer[offset]);
}

void ProtocolRegisterBlock::Convert64fTo32s(double value, double scale, int32& result, int32& isOutOfRange,
                                            int32& isInvalid)
{
    result = INVALID_RESULT;
    isInvalid = 0;
    if (value == MISSING_VALUE) // tested before the scaling, which would turn it into an infinity
    {
        isOutOfRange = 0;
        isInvalid = 1;
        return;
    }
    isOutOfRange = 1;
    isInvalid = 1;
    double const scaled = value * scale;
    if (std::isnan(scaled) || !CanConvert64fTo64s(scaled))
    {
        return;
    }
    // One half and truncation, not std::round: 0.49999999999999994 becomes 1.
    int64 const rounded = static_cast<int64>(scaled > 0.0 ? scaled + 0.5 : scaled - 0.5);
    if (rounded < std::numeric_limits<int32>::min() || rounded > std::numeric_limits<int32>::max())
    {
        return;
    }
    result = static_cast<int32>(rounded);
    isOutOfRange = 0;
    isInvalid = 0;
}

void ProtocolRegisterBlock::FormatFullJobFileName(char* fileName, size_t capacity)
{
    if (fileName == nullptr || fileName[0] == '\0')
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT);
    }
    // The first match decides: a name that has the ending twice gets a third one.
    char const* const found = wStrFindFirst(fileName, JOB_FILE_ENDING);
    if (found != nullptr && wStrLength(found) == wStrLength(JOB_FILE_ENDING))
    {
        return;
    }
    ZU_CHECK(wStrCat(fileName, capacity, JOB_FILE_ENDING));
}

RegisterEncoder ProtocolRegisterBlock::ValueEncoder() const
{
    CheckBytesPerRegister(SERIALIZE_VALUE_LABEL);
    return {BytesPerRegister(), IsProtocolBigEndian()};
}

size_t ProtocolRegisterBlock::EndOfValue(size_t offset, size_t valueSize) const
{
    size_t const end = offset + WidthOf(valueSize);
    return end < offset ? std::numeric_limits<size_t>::max() : end;
}

bool ProtocolRegisterBlock::FieldsFit(size_t endOfFields) const
{
    return !RegisterEncoder::IsUsable(BytesPerRegister()) || endOfFields <= info.SerializedOutputSize();
}

void ProtocolRegisterBlock::CheckBytesPerRegister(char const* label) const
{
    if (!RegisterEncoder::IsUsable(BytesPerRegister()))
    {
        throw Zu::Exception(__LINE__, __FILE__, Zu::Status::BAD_ARGUMENT, label,
                            "Invalid bytes per register found (%1$u)", unsigned{BytesPerRegister()});
    }
}

size_t ProtocolRegisterBlock::WidthOf(size_t valueSize) const
{
    return RegisterEncoder(BytesPerRegister(), true).WidthOf(valueSize);
}

void ProtocolRegisterBlock::WriteWidened(uint8* where, uint64 value, size_t numOfBytes, char const* label) const
{
    RegisterEncoder const encoder(BytesPerRegister(), IsProtocolBigEndian());
    switch (numOfBytes)
    {
    case 1:
        encoder.WriteExact(where, static_cast<uint8>(value));
        break;
    case 2:
        encoder.WriteExact(where, static_cast<uint16>(value));
        break;
    case 4:
        encoder.WriteExact(where, static_cast<uint32>(value));
        break;
    case 8:
        encoder.WriteExact(where, value);
        break;
    default:
        ZU_LOG_LINE(Zu::Logging::FLAGS_WARNING, label, "numOfBytes (%u) specified is not valid",
                    static_cast<unsigned>(numOfBytes));
        break;
    }
}

bool ProtocolRegisterBlock::CanConvert64fTo64s(double value)
{
    return !(value >= TWO_TO_THE_63 || value < -TWO_TO_THE_63);
}

bool ProtocolRegisterBlock::IsProtocolBigEndian() const
{
    return info.IsProtocolBigEndian();
}

} // namespace ZuControl::ControlProtocol
