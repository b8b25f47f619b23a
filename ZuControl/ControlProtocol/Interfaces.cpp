// Constructors and destructors of the folder's interfaces. They stand here and not in the headers so that this library
// exports them and the virtual tables: an interface without a virtual destructor has no other function that would.

#include "ZuControl/ControlProtocol/IProtocol.h"
#include "ZuControl/ControlProtocol/IProtocolOutput.h"
#include "ZuControl/ControlProtocol/IProtocolRegisterAssembly.h"
#include "ZuControl/ControlProtocol/IProtocolRegisterAssemblyGroup.h"
#include "ZuControl/ControlProtocol/IProtocolRegisterBlockFactory.h"

namespace ZuControl::ControlProtocol
{

IProtocol::IProtocol() noexcept = default;
IProtocol::~IProtocol() = default;

IProtocolOutput::IProtocolOutput() noexcept = default;
IProtocolOutput::~IProtocolOutput() = default;

IProtocolRegisterAssembly::IProtocolRegisterAssembly() noexcept = default;
IProtocolRegisterAssembly::~IProtocolRegisterAssembly() = default;

IProtocolRegisterAssemblyGroup::IProtocolRegisterAssemblyGroup() noexcept = default;
IProtocolRegisterAssemblyGroup::~IProtocolRegisterAssemblyGroup() = default;

IProtocolRegisterBlockFactory::IProtocolRegisterBlockFactory() noexcept = default;
IProtocolRegisterBlockFactory::~IProtocolRegisterBlockFactory() = default;

} // namespace ZuControl::ControlProtocol
