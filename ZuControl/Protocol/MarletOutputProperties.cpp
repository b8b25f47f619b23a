#include "ZuControl/Protocol/MarletOutputProperties.h"

namespace ZuControl::Protocol
{

MarletOutputProperties::MarletOutputProperties()
{
    Register("enabled", "Enabled", enabled);
    Register("rate", "Rate", rate);
    Register("format", "Format", format);
    Register("dataMin", "Data Min", dataMin);
    Register("dataMax", "Data Max", dataMax);
    Register("delay", "Delay", delay);
}

MarletOutputProperties::~MarletOutputProperties() = default;

} // namespace ZuControl::Protocol
