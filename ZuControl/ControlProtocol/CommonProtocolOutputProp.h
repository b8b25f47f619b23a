#pragma once

#include "ZuApi/Params/Array.h"
#include "ZuApi/Params/Group.h"
#include "ZuControl/Export.h"
#include "ZuPipe/PipeData.h"

extern template class Zu::Properties::Array<ZuPipe::PipeDataFormatProps>;
extern template class Zu::Params::Array<ZuPipe::PipeDataFormatProps>;

namespace ZuControl::ControlProtocol
{

/// The first members of the records of all output maps.
struct ZUCONTROL_API CommonProtocolOutputProp : public Zu::Params::Group
{
    CommonProtocolOutputProp();
    ~CommonProtocolOutputProp() override;

    Zu::Params::Array<ZuPipe::PipeDataFormatProps> acceptedDataFormats; ///< shown to clients
};

} // namespace ZuControl::ControlProtocol
