#pragma once

#include "ZuApi/Params/Group.h"
#include "ZuApi/Params/Value.h"
#include "ZuApi/ValueBase.h"
#include "wApi/wTypes.h"

#include <atomic>
#include <vector>

namespace ZuHost
{

/// A read-only value. It is never written, so any thread may read it at any time.
class ShownValue : public Zu::Properties::Internal::ValueBase
{
public:
    ~ShownValue() override;

    // Both throw `Zu::Status::NOT_SUPPORTED`.
    void CopyValues(Zu::Properties::Node const& other) override;
    void ReadValue(Zu::Properties::IValueReader& reader) override;
    void ValidateValue(Zu::Properties::IValueReader& reader) override;

protected:
    explicit ShownValue(SchemaBuilder builder) noexcept;
};

/// A constant list of numbers.
class NumberListValue final : public ShownValue
{
public:
    explicit NumberListValue(std::vector<uint64> allNumbers);
    ~NumberListValue() override;

    void WriteValue(Zu::Properties::IValueWriter& writer) const override;

private:
    static void BuildSchema(Zu::Properties::Node& node, Zu::Properties::Structure& schema);

    std::vector<uint64> const numbers;
};

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

/// The result of the action "scannerInfo".
class ScannerInfoResult final : public Zu::Params::Group
{
public:
    ScannerInfoResult();
    ~ScannerInfoResult() override;

    Zu::Params::Value<bool> laserEnabled;
    Zu::Params::Value<uint64> currentEncoderValue; ///< ticks; never negative, because the conveyor only moves forward
    Zu::Params::Value<uint64> currentSyncTime;     ///< in 1/1024 of a millisecond
};

} // namespace ZuHost
