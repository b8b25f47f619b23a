#include "ZuPipe/PipeDataFormatProps.h"

namespace ZuPipe
{

PipeDataFormatProps::PipeDataFormatProps()
{
    Register("type", "Type", type);
    Register("arrayed", "Arrayed", arrayed);
}

PipeDataFormatProps::~PipeDataFormatProps() = default;

} // namespace ZuPipe
