#pragma once

#include "ZuControl/Export.h"

#include <memory>

namespace ZuControl
{

namespace ControlProtocol
{
class IProtocol;
struct ControlProtocolEnviron;
} // namespace ControlProtocol

/// Makes protocols of one type. Plug-ins implement it and keep their factories alive for as long as they are loaded.
class ZUCONTROL_API IControlFactory
{
public:
    /// A new protocol, not started. `environ` outlives it. An empty pointer or an exception ends the construction of the
    /// whole module. Called on the host's thread.
    virtual std::shared_ptr<ControlProtocol::IProtocol>
    Create(ControlProtocol::ControlProtocolEnviron const& environ) = 0;

protected:
    IControlFactory() noexcept;
    ~IControlFactory(); // not virtual: the first slot is the creating operation
};

} // namespace ZuControl
