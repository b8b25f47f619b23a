#pragma once

#include "ZuControl/Control/ControlPlugin.h"

#include <memory>

namespace ModbusTcp
{

/// What this library offers: one protocol type, on every kind of system.
class ModbusTcpPlugin final : public ZuControl::ControlPlugin
{
public:
    ModbusTcpPlugin();
    ~ModbusTcpPlugin() override;

    static std::shared_ptr<ModbusTcpPlugin> Make();
};

} // namespace ModbusTcp
