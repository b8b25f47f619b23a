#include "ZuScan/IScanner.h"

namespace ZuScan
{

IScanner::~IScanner() = default;

} // namespace ZuScan
