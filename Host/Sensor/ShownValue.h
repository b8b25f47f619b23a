#pragma once

#include "ZuApi/ValueBase.h"

namespace ZuHost
{

/// A value that is only ever shown: it takes nothing in, so that any thread may read it at any time.
class ShownValue : public Zu::Properties::Internal::ValueBase
{
public:
    ~ShownValue() override;

    // -996
    void CopyValues(Zu::Properties::Node const& other) override;
    void ReadValue(Zu::Properties::IValueReader& reader) override;
    void ValidateValue(Zu::Properties::IValueReader& reader) override;

protected:
    explicit ShownValue(SchemaBuilder builder) noexcept;
};

} // namespace ZuHost
