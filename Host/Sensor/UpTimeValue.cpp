#include "Host/Sensor/UpTimeValue.h"

#include "ZuApi/IValueIo.h"
#include "ZuApi/NodeType.h"
#include "ZuApi/Structure.h"
#include "wApi/wTime.h"

namespace ZuHost
{

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

} // namespace ZuHost
