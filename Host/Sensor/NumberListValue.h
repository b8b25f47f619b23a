#pragma once

#include "Host/Sensor/ShownValue.h"
#include "wApi/wTypes.h"

#include <vector>

namespace ZuHost
{

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

} // namespace ZuHost
