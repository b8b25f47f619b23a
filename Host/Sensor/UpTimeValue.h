#pragma once

#include "Host/Sensor/ShownValue.h"
#include "wApi/wTypes.h"

#include <atomic>

namespace ZuHost
{

/// Seconds since the device was powered up or restarted. Computed at each read, so the record needs no update.
class UpTimeValue final : public ShownValue
{
public:
    UpTimeValue(); ///< starts at 0 now
    ~UpTimeValue() override;

    /// Restarts the time. Thread-safe.
    void Restart() noexcept;

    uint64 Seconds() const noexcept;

    void WriteValue(Zu::Properties::IValueWriter& writer) const override;

private:
    static void BuildSchema(Zu::Properties::Node& node, Zu::Properties::Structure& schema);

    std::atomic<uint64> sinceUsec; // for display only; it publishes no other data
};

} // namespace ZuHost
