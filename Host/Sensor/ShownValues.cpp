#include "Host/Sensor/ShownValues.h"

#include "ZuApi/Exception.h"
#include "ZuApi/IValueIo.h"
#include "ZuApi/NodeType.h"
#include "ZuApi/Structure.h"
#include "wApi/wTime.h"

#include <utility>

namespace ZuHost
{

ShownValue::~ShownValue() = default;

void ShownValue::CopyValues(Zu::Properties::Node const& /*other*/)
{
    ZU_THROW(Zu::Status::NOT_SUPPORTED);
}

void ShownValue::ReadValue(Zu::Properties::IValueReader& /*reader*/)
{
    ZU_THROW(Zu::Status::NOT_SUPPORTED);
}

void ShownValue::ValidateValue(Zu::Properties::IValueReader& /*reader*/)
{
    ZU_THROW(Zu::Status::NOT_SUPPORTED);
}

ShownValue::ShownValue(SchemaBuilder builder) noexcept : ValueBase(builder)
{
}

NumberListValue::NumberListValue(std::vector<uint64> allNumbers)
    : ShownValue(&NumberListValue::BuildSchema), numbers(std::move(allNumbers))
{
}

NumberListValue::~NumberListValue() = default;

void NumberListValue::WriteValue(Zu::Properties::IValueWriter& writer) const
{
    writer.BeginArray();
    for (uint64 const number : numbers)
    {
        writer.NextElement();
        writer.WriteUint64(number);
    }
    writer.EndArray();
}

void NumberListValue::BuildSchema(Zu::Properties::Node& /*node*/, Zu::Properties::Structure& schema)
{
    using Zu::Properties::Internal::NodeType;
    schema.Register("type", NodeType::Shared(NodeType::Kind::ARRAY));
}

namespace
{

constexpr uint64 USEC_PER_SECOND = 1'000'000;

}

UpTimeValue::UpTimeValue() : ShownValue(&UpTimeValue::BuildSchema), sinceUsec(wTime_NowUsec())
{
}

UpTimeValue::~UpTimeValue() = default;

void UpTimeValue::Restart() noexcept
{
    sinceUsec.store(wTime_NowUsec(), std::memory_order_relaxed);
}

uint64 UpTimeValue::Seconds() const noexcept
{
    uint64 const since = sinceUsec.load(std::memory_order_relaxed);
    uint64 const now = wTime_NowUsec();
    return now > since ? (now - since) / USEC_PER_SECOND : 0;
}

void UpTimeValue::WriteValue(Zu::Properties::IValueWriter& writer) const
{
    writer.WriteUint64(Seconds());
}

void UpTimeValue::BuildSchema(Zu::Properties::Node& /*node*/, Zu::Properties::Structure& schema)
{
    using Zu::Properties::Internal::NodeType;
    schema.Register("type", NodeType::Shared(NodeType::Kind::INTEGER));
}

ScannerInfoResult::ScannerInfoResult()
{
    Register("laserEnabled", "Laser enabled", laserEnabled);
    Register("currentEncoderValue", "Encoder", currentEncoderValue);
    Register("currentSyncTime", "Synchronisation time", currentSyncTime);
}

ScannerInfoResult::~ScannerInfoResult() = default;

} // namespace ZuHost
