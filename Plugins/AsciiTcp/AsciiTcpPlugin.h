#pragma once

#include "ZuControl/Control/ControlPlugin.h"

#include <memory>

namespace AsciiTcp
{

/// What this library offers: one protocol type, on every kind of system.
class AsciiTcpPlugin final : public ZuControl::ControlPlugin
{
public:
    AsciiTcpPlugin();
    ~AsciiTcpPlugin() override;

    static std::shared_ptr<AsciiTcpPlugin> Make();
};

} // namespace AsciiTcp
