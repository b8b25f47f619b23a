#pragma once

#include "ZuApi/Params/Value.h"
#include "wApi/wTypes.h"

namespace ZuPipe
{

/// What kind of data a result of the pipeline is. The numbers are those of the results' types.
enum class PipeDataType : int32
{
    NONE = 0,
    STAMP = 11,
    MEASUREMENT = 19
};

} // namespace ZuPipe

extern template class Zu::Properties::Value<ZuPipe::PipeDataType>;
extern template class Zu::Params::Value<ZuPipe::PipeDataType>;
