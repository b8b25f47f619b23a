#include "ZuControl/ControlProtocol/TextIdStandardOutputs.h"

namespace ZuControl::ControlProtocol
{

TextIdStandardOutputs::TextIdStandardOutputs()
{
    Register("map", "OutputMap", map);
}

TextIdStandardOutputs::~TextIdStandardOutputs() = default;

} // namespace ZuControl::ControlProtocol
