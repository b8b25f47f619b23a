#include "ZuScan/ICommandTarget.h"

namespace ZuScan
{

ICommandTarget::~ICommandTarget() = default;

} // namespace ZuScan
