#include "ZuPipe/PipeData.h"

template class Zu::Properties::Value<ZuPipe::PipeDataType>;
template class Zu::Params::Value<ZuPipe::PipeDataType>;

namespace ZuPipe
{

PipeDataFormatProps::PipeDataFormatProps()
{
    Register("type", "Type", type);
    Register("arrayed", "Arrayed", arrayed);
}

PipeDataFormatProps::~PipeDataFormatProps() = default;

} // namespace ZuPipe
