#include "ZuControl/Protocol/StandardOutput.h"

namespace ZuControl::Protocol
{

StandardOutput::StandardOutput() : Structure(true)
{
    Register("source", source);
    Register("outputId", outputId);
}

StandardOutput::~StandardOutput() = default;

} // namespace ZuControl::Protocol
