#include "ZuCommon/IPersistHandler.h"

namespace ZuCommon
{

IPersistHandler::~IPersistHandler() = default;

} // namespace ZuCommon
