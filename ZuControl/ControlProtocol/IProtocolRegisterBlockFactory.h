#pragma once

#include "ZuControl/Export.h"

#include <memory>

namespace ZuControl::ControlProtocol
{

struct ProtocolRegisterBlock;
struct ProtocolRegisterBlockInfo;
struct RegisterBlockParams;

/// Makes the blocks of one type.
class ZUCONTROL_API IProtocolRegisterBlockFactory
{
public:
    IProtocolRegisterBlockFactory() noexcept;
    virtual ~IProtocolRegisterBlockFactory(); // first of the slots that plug-ins call through: never move one

    /// A new block; it refers to `info`, which outlives it. Throws what the block's constructor throws.
    virtual std::shared_ptr<ProtocolRegisterBlock> Construct(RegisterBlockParams const& params,
                                                             ProtocolRegisterBlockInfo& info) = 0;
};

} // namespace ZuControl::ControlProtocol
