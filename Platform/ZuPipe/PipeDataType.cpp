#include "ZuPipe/PipeDataType.h"

template class Zu::Properties::Value<ZuPipe::PipeDataType>;
template class Zu::Params::Value<ZuPipe::PipeDataType>;
