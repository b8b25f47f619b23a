#include "ZuControl/Control/IControlResourceAdaptor.h"

namespace ZuControl
{

IControlResourceAdaptor::~IControlResourceAdaptor() = default;

} // namespace ZuControl
