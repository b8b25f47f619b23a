#pragma once

#include "ZuControl/ControlProtocol/IProtocolRegisterBlockFactory.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlock.h"

#include <memory>
#include <type_traits>

namespace ZuControl::ControlProtocol
{

/// Makes blocks of class `T`: ProtocolRegisterBlock or a class derived from it, also through a virtual base.
template <typename T>
class ProtocolRegisterBlockFactory final : public IProtocolRegisterBlockFactory
{
    static_assert(std::is_base_of_v<ProtocolRegisterBlock, T>);

public:
    std::shared_ptr<ProtocolRegisterBlock> Construct(RegisterBlockParams const& params,
                                                     ProtocolRegisterBlockInfo& info) override
    {
        return std::make_shared<T>(params, info);
    }
};

} // namespace ZuControl::ControlProtocol
