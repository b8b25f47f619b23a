#include "ZuStdScanners/ZucSensor/SerialOutputWriteParams.h"

namespace ZuStdScanners::ZucSensor
{

SerialOutputWriteParams::SerialOutputWriteParams()
{
    Register("size", "Size", size);
    Register("buffer", "Buffer", buffer);
}

SerialOutputWriteParams::~SerialOutputWriteParams() = default;

} // namespace ZuStdScanners::ZucSensor
