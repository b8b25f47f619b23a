#pragma once

#include "ZuControl/ControlProtocol/ProtocolRegisterBlock.h"
#include "ZuControl/Export.h"

#include <memory>
#include <type_traits>

namespace ZuControl::ControlProtocol
{

struct ProtocolRegisterBlock;
struct ProtocolRegisterBlockInfo;
struct RegisterBlockParams;

/// Makes the blocks of one type. The block type shares the factory. ProtocolRegisterBlockFactory serves most types.
class ZUCONTROL_API IProtocolRegisterBlockFactory
{
public:
    IProtocolRegisterBlockFactory() noexcept;
    virtual ~IProtocolRegisterBlockFactory(); // first of the slots that plug-ins call through: never move one

    /// A new block, which the assembly shares. The block may refer to `info`, which outlives it; `params` is valid for
    /// the call.
    ///
    /// Called on the thread of the client's or the protocol's change with the assembly's lock held, for enabled and
    /// disabled protocols: must not block, and must not call the assembly. A `Zu::Exception` is logged for the user,
    /// and the assembly tries the next block; another exception ends the change, and blocks that are added by then
    /// stay. Null makes `ProtocolRegisterBlockInfo::ConstructBlock` throw `Zu::Status::WRONG_STATE`.
    virtual std::shared_ptr<ProtocolRegisterBlock> Construct(RegisterBlockParams const& params,
                                                             ProtocolRegisterBlockInfo& info) = 0;
};

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
