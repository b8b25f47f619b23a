#pragma once

#include "ZuControl/Control/ControlPlugin.h"

#include <memory>

namespace ModbusTcp
{

/// Offers one protocol type, on all kinds of systems.
class ModbusTcpPlugin final : public ZuControl::ControlPlugin
{
public:
    ModbusTcpPlugin();
    ~ModbusTcpPlugin() override;

    static std::shared_ptr<ModbusTcpPlugin> Make();
};

} // namespace ModbusTcp
