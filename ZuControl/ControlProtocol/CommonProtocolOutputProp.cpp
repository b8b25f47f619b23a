#include "ZuControl/ControlProtocol/CommonProtocolOutputProp.h"

template class Zu::Properties::Array<ZuPipe::PipeDataFormatProps>;
template class Zu::Params::Array<ZuPipe::PipeDataFormatProps>;

namespace ZuControl::ControlProtocol
{

CommonProtocolOutputProp::CommonProtocolOutputProp() : Group("")
{
    Register("acceptedDataFormats", "Accepted Data Formats", acceptedDataFormats);
}

CommonProtocolOutputProp::~CommonProtocolOutputProp() = default;

} // namespace ZuControl::ControlProtocol
