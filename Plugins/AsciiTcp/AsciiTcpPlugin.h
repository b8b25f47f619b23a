#pragma once

#include "ZuControl/Control/ControlPlugin.h"

#include <memory>

namespace AsciiTcp
{

/// Offers one protocol type, on all kinds of systems.
class AsciiTcpPlugin final : public ZuControl::ControlPlugin
{
public:
    AsciiTcpPlugin();
    ~AsciiTcpPlugin() override;

    static std::shared_ptr<AsciiTcpPlugin> Make();
};

} // namespace AsciiTcp
