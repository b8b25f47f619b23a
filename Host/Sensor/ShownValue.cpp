#include "Host/Sensor/ShownValue.h"

#include "ZuApi/Exception.h"

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

} // namespace ZuHost
