// Constructors and destructors of the folder's interfaces, and the base of the records of output maps. They stand here and not in the headers so that this library
// exports them and the virtual tables: an interface without a virtual destructor has no other function that would.

#include "ZuControl/ControlProtocol/IProtocol.h"
#include "ZuControl/ControlProtocol/IProtocolOutput.h"
#include "ZuControl/ControlProtocol/IProtocolRegisterAssembly.h"
#include "ZuControl/ControlProtocol/ProtocolOutputBase.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlockFactory.h"

template class Zu::Properties::Array<ZuPipe::PipeDataFormatProps>;
template class Zu::Params::Array<ZuPipe::PipeDataFormatProps>;

namespace ZuControl::ControlProtocol
{

CommonProtocolOutputProp::CommonProtocolOutputProp() : Group("")
{
    Register("acceptedDataFormats", "Accepted Data Formats", acceptedDataFormats);
}

CommonProtocolOutputProp::~CommonProtocolOutputProp() = default;

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
