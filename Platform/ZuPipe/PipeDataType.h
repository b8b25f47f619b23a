#pragma once

#include "ZuApi/Params/Value.h"
#include "wApi/wExport.h"
#include "wApi/wTypes.h"

namespace ZuPipe
{

/// What kind of data a result of the pipeline is. The numbers are those of the results' types.
/// It is exported because a template over a hidden type is hidden too.
enum class ZUPLATFORM_API PipeDataType : int32
{
    NONE = 0,
    STAMP = 11,
    MEASUREMENT = 19
};

} // namespace ZuPipe

extern template class Zu::Properties::Value<ZuPipe::PipeDataType>;
extern template class Zu::Params::Value<ZuPipe::PipeDataType>;
