#pragma once

#include "ZuControl/Control/IControlFactory.h"

namespace AsciiTcp
{

class AsciiTcpFactory final : public ZuControl::IControlFactory
{
public:
    std::shared_ptr<ZuControl::ControlProtocol::IProtocol>
    Create(ZuControl::ControlProtocol::ControlProtocolEnviron const& environ) override;
};

} // namespace AsciiTcp
