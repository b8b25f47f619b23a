#pragma once

#include "ZuControl/ControlProtocol/RegisterBlockCategory.h"
#include "wApi/wTypes.h"

#include <memory>
#include <string>

namespace ZuControl::ControlProtocol
{

class IProtocolRegisterBlockFactory;

/// The description from which a block type is constructed.
struct RegisterBlockInfoParams
{
    std::string type;        ///< the key by which blocks of the type are named
    std::string displayName; ///< for a person; also the name of a new block without a name of its own
    RegisterBlockCategory category = BlockCategoryUnknown;
    uint16 deserializedInputSize = 0; ///< minimum bytes of a source for `Deserialize`; 0 for types that only send
    uint16 registerCount = 0;         ///< registers of one block
    uint8 bytesPerRegister = 1;       ///< 1 or 2; another size is refused when a block writes its first value
    uint16 minInstanceCount = 0;      ///< fewest blocks that must stay in the assembly
    uint16 maxInstanceCount = 0;      ///< most blocks that may be added
    bool hasDataSource = false;       ///< blocks carry scan output and need a data source
    bool isProtocolBigEndian = true;
    std::shared_ptr<IProtocolRegisterBlockFactory> factory;
};

} // namespace ZuControl::ControlProtocol
