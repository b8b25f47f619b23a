#pragma once

#include "Host/Sensor/ShownValue.h"
#include "wApi/wTypes.h"

#include <atomic>

namespace ZuHost
{

/// Seconds since the device was powered up or restarted, reckoned whenever somebody reads it, so that a record with it needs
/// no update.
class UpTimeValue final : public ShownValue
{
public:
    UpTimeValue(); ///< powered up now
    ~UpTimeValue() override;

    /// The time begins anew. Any thread.
    void Restart() noexcept;

    uint64 Seconds() const noexcept;

    void WriteValue(Zu::Properties::IValueWriter& writer) const override;

private:
    static void BuildSchema(Zu::Properties::Node& node, Zu::Properties::Structure& schema);

    std::atomic<uint64> sinceUsec; // a number for show: it publishes nothing
};

} // namespace ZuHost
