#include "ZuRest/IStreamReceiver.h"

namespace ZuRest
{

IStreamReceiver::~IStreamReceiver() = default;

} // namespace ZuRest
