#pragma once

#include "ZuApi/ValueBase.h"

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

} // namespace ZuHost
